#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "base/owner.h"
#include "fit/anchor_set.h"
#include "fit/bezier.h"
#include "fit/curve_equations.h"
#include "fit/curve_view.h"
#include "fit/fidelity_check.h"
#include "fit/pool.h"
#include "fit/tangent_estimator.h"

/// A fitted curve and the view it was fitted to.
class CFResult : public CFPooled {
 public:
    CFResult(const CFBezier3& curve, ts::auto_ptr<CF1CurveView> view) : curve_(curve), view_(std::move(view)) {}

    const CFBezier3& Curve() const { return curve_; }
    const CF1CurveView& View() const { return *view_; }
    bool IsLoop() const { return view_->Window().IsClosed(); }
    /// The chain's points at its ends, and whether these are corners.
    std::int32_t StartIndex() const { return view_->Window().StartIndex(); }
    std::int32_t EndIndex() const { return view_->Window().EndIndex(); }
    bool StartsAtCorner() const { return !view_->Constraints().start_tangent.active; }
    bool EndsAtCorner() const { return !view_->Constraints().end_tangent.active; }

 private:
    CFBezier3 curve_;
    ts::auto_ptr<CF1CurveView> view_;
};

/// What takes fitted curves, in the order of their chain.
class CFCurveSink {
 public:
    virtual ~CFCurveSink() = default;
    virtual void Add(ts::auto_ptr<CFResult> result) = 0;

 protected:
    CFCurveSink() = default;
    CFCurveSink(const CFCurveSink&) = default;
    CFCurveSink& operator=(const CFCurveSink&) = default;
};

/// The fit of a whole span from one anchor to the next.
struct CFSpanFit {
    std::int32_t start, end;  // points of the chain
    bool smooth;              // the ends follow tangents
    bool passed;              // the fidelity check
    CFBezier3 curve;
    CFTVals parameters;
};

/// Fits cubics to a chain: one from anchor to anchor where it stays near enough, otherwise more, cut where the view's rule
/// says. Borrows the estimator and the check. Its working storage is used again, so one fitter serves one thread.
class CF1CurveFitter {
 public:
    struct Attempt {
        ts::auto_ptr<CFResult> result;
        bool passed;  // the fidelity check
    };

    /// `tolerance`: in pixels, as the check was made for.
    /// @throws int  kBrokenInvariant without an estimator or a check
    CF1CurveFitter(float tolerance, const CFTangentEstimator* estimator, const CFFidelityCheck* check);

    /// Adds the curves of the anchors' chain to `result`, in the order of the chain. The chain and its ranking must outlive
    /// them. `known`: whole spans of the same chain that an earlier call fitted, empty at first. Those it holds are not
    /// fitted again, others are added to it.
    /// @throws int  kBrokenInvariant without anchors, or when one of several is not a corner
    void Fit(const CFAnchorSet& anchors, CFCurveSink& result, std::vector<CFSpanFit>& known);
    void Fit(const CFAnchorSet& anchors, CFCurveSink& result) {
        std::vector<CFSpanFit> none;
        Fit(anchors, result, none);
    }
    /// Fits one curve to the whole view, near enough or not.
    Attempt FitOnce(ts::auto_ptr<CF1CurveView> view);

    /// Whether curves join without a corner where a span is cut. They do at first.
    void SetSmoothSplits(bool smooth) { smooth_splits_ = smooth; }
    float Tolerance() const { return tolerance_; }

 private:
    void FitSpan(ts::auto_ptr<CF1CurveView> view, std::vector<CFSpanFit>& known, CFCurveSink& result);
    void FitView(ts::auto_ptr<CF1CurveView> view, std::int32_t depth, CFCurveSink& result);
    void AddOrSplit(Attempt attempt, std::int32_t depth, CFCurveSink& result);
    CFBezier3 FitCurve(const CF1CurveView& view);
    void SplitView(const CF1CurveView& view, ts::auto_ptr<CF1CurveView>& first, ts::auto_ptr<CF1CurveView>& second) const;
    CFTangentConstraint TangentAt(const CFWindow& window, std::int32_t k, bool smooth) const;
    ts::auto_ptr<CF1CurveView> SpanView(const CFAnchorSet& anchors, std::int32_t start, std::int32_t end) const;
    ts::auto_ptr<CF1CurveView> LoopView(const CFAnchorSet& anchors, const CFAnchor& seam) const;

    float tolerance_;
    const CFTangentEstimator* estimator_;
    const CFFidelityCheck* check_;
    bool smooth_splits_ = true;
    CFCurveEquations equations_;
};
