#pragma once

#include "fit/curve_fitter.h"
#include "fit/spline_result.h"

/// Makes do with fewer curves.
class CFCurveRemover {
 public:
    virtual ~CFCurveRemover() = default;
    /// `skip_corners`: curves that meet at a corner stay apart.
    /// @throws int  kBrokenInvariant when there are no curves
    virtual void Remove(CFSplineResult& result, bool skip_corners) = 0;
};

/// Puts one curve in place of two neighbours wherever one is near enough to their points.
class CFMergeRemover : public CFCurveRemover {
 public:
    /// Borrows the fitter.
    explicit CFMergeRemover(CF1CurveFitter& fitter) : fitter_(&fitter) {}
    /// One pass over the junctions, not the first; a merged curve is tried against its next neighbour in turn.
    void Remove(CFSplineResult& result, bool skip_corners) override;

 private:
    CF1CurveFitter* fitter_;
};
