#include "fit/curve_view.h"

#include <utility>

#include "base/errors.h"

namespace {

CFTVals ParametersOf(const CFWindow& window) { return {window.X(), window.Y(), window.Count(), window.Kind()}; }

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
