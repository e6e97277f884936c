#include "fit/curve_view.h"

#include <array>
#include <cstddef>
#include <span>
#include <utility>

#include "base/errors.h"

namespace {

// A pass with the first factor shrinks the chain, the next with the second lets it swell again, so that detail is lost but
// size is kept (Taubin 1995, "Curve and surface smoothing without shrinkage").
constexpr float kShrink = 0.47464985F;
constexpr float kSwell = -0.48618832F;
constexpr std::int32_t kSmoothingSweeps = 5;

CFTVals ParametersOf(const CFWindow& window) { return {window.X(), window.Y(), window.Count(), window.Kind()}; }

void Smooth(std::span<CFPoint> points);

}  // namespace

CF1CurveView::CF1CurveView(ts::auto_ptr<CFWindow> window, CFTVals parameters, CF1CurveViewConstraints constraints,
                           ts::auto_ptr<CFSubdivRule> rule)
    : CFView(kView1Curve),
      window_(std::move(window)),
      parameters_(std::move(parameters)),
      constraints_(constraints),
      rule_(std::move(rule)) {
    if (!window_ || !rule_) throw kFailedCheck;
    if (parameters_.Count() != window_->Count()) throw kBrokenInvariant;
}

CF1CurveView::CF1CurveView(ts::auto_ptr<CFWindow> window, CFTangentConstraint start_tangent, CFTangentConstraint end_tangent,
                           ts::auto_ptr<CFSubdivRule> rule)
    : CFView(kView1Curve),
      window_(std::move(window)),
      parameters_(ParametersOf(*window_)),
      constraints_{CFPointConstraint(window_->Point(0)), CFPointConstraint(window_->Point(window_->Count() - 1)), start_tangent,
                   end_tangent},
      rule_(std::move(rule)) {}

CF1CurveView::CF1CurveView(const CF1CurveView& first, const CF1CurveView& second)
    : CF1CurveView(MergeWindows(first.Window(), second.Window()), CFTVals::Merge(first.Parameters(), second.Parameters()),
                   {first.Constraints().start, second.Constraints().end, first.Constraints().start_tangent,
                    second.Constraints().end_tangent},
                   MergeRules(first.Rule(), second.Rule())) {}

void CF1CurveView::Split(std::int32_t k, CFTangentConstraint tangent, ts::auto_ptr<CF1CurveView>& first,
                         ts::auto_ptr<CF1CurveView>& second) const {
    ts::auto_ptr<CFWindow> first_window, second_window;
    window_->Split(k, first_window, second_window);
    ts::auto_ptr<CFSubdivRule> first_rule, second_rule;
    rule_->SplitRule(k, first_rule, second_rule);
    auto [first_parameters, second_parameters] = parameters_.Split(window_->LocalIndex(k));

    const CFPointConstraint cut(second_window->Point(0));
    first = ts::make_auto<CF1CurveView>(std::move(first_window), std::move(first_parameters),
                                        CF1CurveViewConstraints{constraints_.start, cut, constraints_.start_tangent, tangent},
                                        std::move(first_rule));
    second = ts::make_auto<CF1CurveView>(std::move(second_window), std::move(second_parameters),
                                         CF1CurveViewConstraints{cut, constraints_.end, tangent, constraints_.end_tangent},
                                         std::move(second_rule));
}

CFSegment SubstituteChain(const CFWindow& window) {
    const std::int32_t count = window.Count();
    const std::int32_t pieces = count == 2 ? 3 : count == 3 ? 2 : 1;  // that every step of the span is divided into
    CFSegment chain((count - 1) * pieces + 1, kSpacingUnitSteps, kChainOpen);
    std::array<CFPoint, CF1CurveViewProxy::kEnoughPoints - 1> storage;
    const std::span points = std::span(storage).first(static_cast<std::size_t>(chain.Count()));
    std::size_t filled = 0;
    for (std::int32_t step = 0; step + 1 < count; ++step) {
        const CFPoint from = window.Point(step), way = window.Point(step + 1) - from;
        points[filled++] = from;
        for (std::int32_t part = 1; part < pieces; ++part) {
            points[filled++] = from + way * (static_cast<float>(part) / static_cast<float>(pieces));
        }
    }
    points[filled] = window.Point(count - 1);
    Smooth(points);
    for (std::int32_t j = 0; j < chain.Count(); ++j) chain.SetPoint(j, points[static_cast<std::size_t>(j)]);
    return chain;
}

CF1CurveViewProxy::CF1CurveViewProxy(const CF1CurveView& view, const CFSegment& substitute)
    : CF1CurveView(ts::make_auto<CFWindow>(substitute, WholeBound(substitute)),
                   CFTVals(substitute.X(), substitute.Y(), substitute.Count(), kSpacingUnitSteps), view.Constraints(),
                   ts::make_auto<CFMidpointRule>()) {}

namespace {

void Smooth(std::span<CFPoint> points) {
    for (std::int32_t sweep = 0; sweep < kSmoothingSweeps; ++sweep) {
        const float factor = sweep % 2 == 0 ? kShrink : kSwell;
        for (std::size_t j = 1; j + 1 < points.size(); ++j) {
            const CFPoint middle = (points[j - 1] + points[j + 1]) * 0.5F;
            points[j] = points[j] - (points[j] - middle) * factor;
        }
    }
}

}  // namespace
