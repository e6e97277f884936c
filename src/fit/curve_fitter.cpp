#include "fit/curve_fitter.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/errors.h"
#include "fit/curve_refinement.h"
#include "fit/spline_result.h"

namespace {

constexpr std::int32_t kDepthLimit = 32;       // levels of cutting; a span of the last level keeps its curve
constexpr std::int32_t kRefinementRounds = 1;  // of the parameters; a curve is fitted before each

}  // namespace

CF1CurveFitter::CF1CurveFitter(float tolerance, const CFTangentEstimator* estimator, const CFFidelityCheck* check)
    : tolerance_(tolerance), estimator_(estimator), check_(check) {
    if (estimator == nullptr || check == nullptr) throw kBrokenInvariant;
}

void CF1CurveFitter::Fit(const CFAnchorSet& anchors, CFSplineResult& result) {
    const std::list<CFAnchor*>& list = *anchors.anchors;
    if (list.empty()) throw kBrokenInvariant;
    if (list.size() == 1) return FitView(LoopView(anchors, *list.front()), 0, result);

    const bool corners_only = std::all_of(list.begin(), list.end(), [](const CFAnchor* a) { return a->type == kAnchorCorner; });
    if (!corners_only) throw kBrokenInvariant;
    for (auto end = std::next(list.begin()); end != list.end(); ++end) {
        FitView(SpanView(anchors, (*std::prev(end))->index, (*end)->index), 0, result);
    }
    if (anchors.segment->IsClosed()) FitView(SpanView(anchors, list.back()->index, list.front()->index), 0, result);
}

CF1CurveFitter::Attempt CF1CurveFitter::FitOnce(ts::auto_ptr<CF1CurveView> view) {
    CFBezier3 curve = FitCurve(*view);
    for (std::int32_t round = 1; round <= kRefinementRounds; ++round) {
        RefineParameters(curve, view->Window(), view->Parameters());
        if (round < kRefinementRounds) curve = FitCurve(*view);
    }
    const bool passed = check_->Check(view->Window(), view->Parameters(), curve);
    return {ts::make_auto<CFResult>(curve, std::move(view)), passed};
}

void CF1CurveFitter::FitView(ts::auto_ptr<CF1CurveView> view, std::int32_t depth, CFSplineResult& result) {
    const std::int32_t count = view->Window().Count();
    if (count < 2) throw kBrokenInvariant;
    Attempt attempt = FitOnce(std::move(view));
    if (attempt.passed || count == 2 || depth == kDepthLimit - 1) return result.Add(std::move(attempt.result));

    ts::auto_ptr<CF1CurveView> first, second;
    SplitView(attempt.result->View(), first, second);
    attempt.result.reset();
    FitView(std::move(first), depth + 1, result);
    FitView(std::move(second), depth + 1, result);
}

CFBezier3 CF1CurveFitter::FitCurve(const CF1CurveView& view) {
    if (view.Window().Count() >= CF1CurveViewProxy::kEnoughPoints) return equations_.Fit(view);
    const CFSegment substitute = SubstituteChain(view.Window());
    return equations_.Fit(CF1CurveViewProxy(view, substitute));
}

void CF1CurveFitter::SplitView(const CF1CurveView& view, ts::auto_ptr<CF1CurveView>& first,
                               ts::auto_ptr<CF1CurveView>& second) const {
    const std::int32_t k = view.Rule().SplitIndex(view, *estimator_, smooth_splits_);
    view.Split(k, TangentAt(view.Window(), view.Window().LocalIndex(k), smooth_splits_), first, second);
}

/// A tangent that nothing follows is not worked out.
CFTangentConstraint CF1CurveFitter::TangentAt(const CFWindow& window, std::int32_t k, bool smooth) const {
    return {smooth, smooth ? estimator_->Estimate(window, k) : CFPoint{}};
}

ts::auto_ptr<CF1CurveView> CF1CurveFitter::SpanView(const CFAnchorSet& anchors, std::int32_t start, std::int32_t end) const {
    const CFSegment& chain = *anchors.segment;
    auto window = ts::make_auto<CFWindow>(chain, ts::make_auto<CFOpenBound>(chain, start, end));
    const CFTangentConstraint corner(false, {});
    return ts::make_auto<CF1CurveView>(std::move(window), corner, corner, ts::make_auto<CFCRRule>(*anchors.ranking));
}

ts::auto_ptr<CF1CurveView> CF1CurveFitter::LoopView(const CFAnchorSet& anchors, const CFAnchor& seam) const {
    const CFSegment& chain = *anchors.segment;
    auto window = ts::make_auto<CFWindow>(chain, ts::make_auto<CFClosedBound>(chain, seam.index));
    const CFWindow whole(chain, WholeBound(chain));
    const CFTangentConstraint tangent = TangentAt(whole, seam.index, seam.type == kAnchorSmooth);
    return ts::make_auto<CF1CurveView>(std::move(window), tangent, tangent, ts::make_auto<CFCRRule>(*anchors.ranking));
}
