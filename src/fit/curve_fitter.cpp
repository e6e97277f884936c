#include "fit/curve_fitter.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/errors.h"
#include "fit/curve_refinement.h"
#include "fit/curve_view_proxy.h"

namespace {

constexpr std::int32_t kDepthLimit = 32;       // levels of cutting; a span of the last level keeps its curve
constexpr std::int32_t kRefinementRounds = 1;  // of the parameters; a curve is fitted before each

}  // namespace

CF1CurveFitter::CF1CurveFitter(float tolerance, const CFTangentEstimator* estimator, const CFFidelityCheck* check)
    : tolerance_(tolerance), estimator_(estimator), check_(check) {
    if (estimator == nullptr || check == nullptr) throw kBrokenInvariant;
}

void CF1CurveFitter::Fit(const CFAnchorSet& anchors, CFCurveSink& result, std::vector<CFSpanFit>& known) {
    const CFAnchorList& list = *anchors.anchors;
    if (list.empty()) throw kBrokenInvariant;
    if (list.size() == 1) return FitSpan(LoopView(anchors, *list.front()), known, result);

    const bool corners_only = std::all_of(list.begin(), list.end(), [](const CFAnchor* a) { return a->type == kAnchorCorner; });
    if (!corners_only) throw kBrokenInvariant;
    for (auto end = std::next(list.begin()); end != list.end(); ++end) {
        FitSpan(SpanView(anchors, (*std::prev(end))->index, (*end)->index), known, result);
    }
    if (anchors.segment->IsClosed()) FitSpan(SpanView(anchors, list.back()->index, list.front()->index), known, result);
}

CF1CurveFitter::Attempt CF1CurveFitter::FitOnce(ts::auto_ptr<CF1CurveView> view) {
    if (view->Window().Count() < 2) throw kBrokenInvariant;
    CFBezier3 curve = FitCurve(*view);
    for (std::int32_t round = 1; round <= kRefinementRounds; ++round) {
        RefineParameters(curve, view->Window(), view->Parameters());
        if (round < kRefinementRounds) curve = FitCurve(*view);
    }
    const bool passed = check_->Check(view->Window(), view->Parameters(), curve);
    return {ts::make_auto<CFResult>(curve, std::move(view)), passed};
}

/// `known` is in the order of the chain, so it is searched by halving; a span out of order is not kept.
void CF1CurveFitter::FitSpan(ts::auto_ptr<CF1CurveView> view, std::vector<CFSpanFit>& known, CFCurveSink& result) {
    const std::int32_t start = view->Window().StartIndex(), end = view->Window().EndIndex();
    const bool smooth = view->Constraints().start_tangent.active;
    const auto found = std::lower_bound(known.begin(), known.end(), start,
                                        [](const CFSpanFit& fit, std::int32_t index) { return fit.start < index; });
    if (found != known.end() && found->start == start && found->end == end && found->smooth == smooth) {
        view->Parameters() = found->parameters;
        return AddOrSplit({ts::make_auto<CFResult>(found->curve, std::move(view)), found->passed}, 0, result);
    }
    Attempt attempt = FitOnce(std::move(view));
    const CFResult& fitted = *attempt.result;
    if (found == known.end()) known.push_back({start, end, smooth, attempt.passed, fitted.Curve(), fitted.View().Parameters()});
    AddOrSplit(std::move(attempt), 0, result);
}

void CF1CurveFitter::FitView(ts::auto_ptr<CF1CurveView> view, std::int32_t depth, CFCurveSink& result) {
    AddOrSplit(FitOnce(std::move(view)), depth, result);
}

void CF1CurveFitter::AddOrSplit(Attempt attempt, std::int32_t depth, CFCurveSink& result) {
    const bool is_step = attempt.result->View().Window().Count() == 2;
    if (attempt.passed || is_step || depth == kDepthLimit - 1) return result.Add(std::move(attempt.result));

    ts::auto_ptr<CF1CurveView> first, second;
    SplitView(attempt.result->View(), first, second);
    attempt.result.reset();
    FitView(std::move(first), depth + 1, result);
    FitView(std::move(second), depth + 1, result);
}

CFBezier3 CF1CurveFitter::FitCurve(const CF1CurveView& view) {
    if (view.Window().Count() >= CF1CurveViewProxy::kEnoughPoints) return equations_.Fit(view.Points(), view.Constraints());
    return equations_.Fit(CF1CurveViewProxy(view.Window()).Points(), view.Constraints());
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
