#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/owner.h"
#include "fit/corner_test.h"
#include "fit/curve_fitter.h"
#include "fit/curve_remover.h"
#include "fit/fidelity_check.h"
#include "fit/path.h"
#include "fit/ranking.h"
#include "fit/segment.h"
#include "fit/tangent_estimator.h"

/// A boundary edge made ready for fitting. Borrows all of it.
struct FitInput {
    const CFSegment& raw;      // points of the pixel lattice, one step apart
    const CFSegment& derived;  // the same points moved onto the pixels' centre lines
    const CFRanking& ranking;  // corner score of every point
};

/// Turns prepared boundary edges into paths, one after another, in two passes: the first, with corners wherever curves
/// meet, finds out where curves may meet; the second looks for true corners only there, fits with smooth joins between them
/// and then merges what it can.
class KVPathGenerator {
 public:
    /// `tolerance`: in pixels; `corner_angle`: turn in degrees beyond which curves meet in a corner; `half_width`: points
    /// looked at on either side to find a direction.
    /// @throws int  kBrokenInvariant when `half_width` is below 1
    KVPathGenerator(float tolerance, float corner_angle, std::int32_t half_width);

    /// Puts the path of the edge into `output` in place of what it held.
    /// @throws int  kBrokenInvariant when the three inputs differ in length
    void FitEdge(const FitInput& edge, ts::auto_ptr<RPPath>& output);

 private:
    CFPoolVector<std::int32_t> FirstJunctions(const FitInput& edge);
    void FitSecond(const FitInput& edge, std::span<const std::int32_t> junctions, CFSplineResult& result);

    ts::auto_ptr<CF1CurveFitter> fitter_;
    ts::auto_ptr<CFCornerTest> corner_test_;
    ts::auto_ptr<CFTangentEstimator> estimator_;
    ts::auto_ptr<CFFidelityCheck> check_;
    ts::auto_ptr<CFCurveRemover> remover_;
    std::vector<CFSpanFit> known_;  // spans between corners that the first pass fitted: many are the same in the second
    CFLinTest first_corner_test_;
};
