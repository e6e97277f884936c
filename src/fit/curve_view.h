#pragma once

#include <cstdint>

#include "base/owner.h"
#include "fit/constraints.h"
#include "fit/curve_points.h"
#include "fit/pool.h"
#include "fit/subdivision_rule.h"
#include "fit/t_vals.h"
#include "fit/view.h"
#include "fit/window.h"

/// A span of a chain that one cubic is fitted to: its points, their parameters, the conditions at its ends and the way it
/// is cut when one cubic is not enough. Borrows the chain.
class CF1CurveView : public CFView, public CFPooled {
 public:
    /// @throws int  kFailedCheck without a window or a rule; kBrokenInvariant unless there is one parameter for each point
    CF1CurveView(ts::auto_ptr<CFWindow> window, CFTVals parameters, CF1CurveViewConstraints constraints,
                 ts::auto_ptr<CFSubdivRule> rule);
    /// Over the window with its own parameters, through its first and its last point.
    CF1CurveView(ts::auto_ptr<CFWindow> window, CFTangentConstraint start_tangent, CFTangentConstraint end_tangent,
                 ts::auto_ptr<CFSubdivRule> rule);
    /// Over two neighbouring views.
    /// @throws int  kBrokenInvariant when the first does not end where the second starts, or their rules differ in kind
    CF1CurveView(const CF1CurveView& first, const CF1CurveView& second);

    const CFWindow& Window() const { return *window_; }
    const CFTVals& Parameters() const { return parameters_; }
    CFTVals& Parameters() { return parameters_; }
    CFCurvePoints Points() const { return {window_->Count(), window_->X(), window_->Y(), parameters_.Data()}; }
    const CF1CurveViewConstraints& Constraints() const { return constraints_; }
    const CFSubdivRule& Rule() const { return *rule_; }

    /// Cuts the view at the chain's point `k` into two that share it and the `tangent` there.
    /// @throws int  kBrokenInvariant unless `k` lies inside the view
    void Split(std::int32_t k, CFTangentConstraint tangent, ts::auto_ptr<CF1CurveView>& first,
               ts::auto_ptr<CF1CurveView>& second) const;

 private:
    ts::auto_ptr<CFWindow> window_;
    CFTVals parameters_;
    CF1CurveViewConstraints constraints_;
    ts::auto_ptr<CFSubdivRule> rule_;
};
