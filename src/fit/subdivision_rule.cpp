#include "fit/subdivision_rule.h"

#include <algorithm>
#include <cstddef>

#include "base/errors.h"
#include "fit/curve_view.h"

namespace {

/// The highest of `count` values, at least 0. Eight running maxima, so that they can be taken side by side.
float Highest(const float* values, std::int32_t count);
/// The number of the first value equal to `value`; `count` when there is none.
std::int32_t FirstEqual(const float* values, std::int32_t count, float value);

}  // namespace

void CFMidpointRule::SplitRule(std::int32_t, ts::auto_ptr<CFSubdivRule>& first, ts::auto_ptr<CFSubdivRule>& second) const {
    first = ts::make_auto<CFMidpointRule>();
    second = ts::make_auto<CFMidpointRule>();
}

std::int32_t CFMidpointRule::SplitIndex(const CF1CurveView& view, const CFTangentEstimator&, bool) const {
    const CFWindow& window = view.Window();
    const std::int32_t span = window.IsClosed() ? window.Count() - 1 : window.Count();
    const std::int32_t k = RoundLoop(window.StartIndex() + span / 2, window.SegmentCount());
    if (!window.Bound().Contains(k)) throw kBrokenInvariant;
    return k;
}

void CFCRRule::SplitRule(std::int32_t, ts::auto_ptr<CFSubdivRule>& first, ts::auto_ptr<CFSubdivRule>& second) const {
    first = ts::make_auto<CFCRRule>(*ranking_);
    second = ts::make_auto<CFCRRule>(*ranking_);
}

std::int32_t CFCRRule::SplitIndex(const CF1CurveView& view, const CFTangentEstimator& estimator, bool smooth) const {
    const CFWindow& window = view.Window();
    const std::int32_t n = window.SegmentCount(), inner = window.Count() - 2;
    if (ranking_->Count() != n || inner < 1) throw kBrokenInvariant;

    // The inner points are one or two runs of the ranking: up to the chain's last point, and on from its first.
    const std::int32_t from = RoundLoop(window.StartIndex() + 1, n);
    const std::int32_t before_wrap = std::min(inner, n - from), after_wrap = inner - before_wrap;
    const float* const values = ranking_->values.data();
    const float highest = std::max(Highest(values + from, before_wrap), Highest(values, after_wrap));
    if (highest <= 0.0F) return midpoint_.SplitIndex(view, estimator, smooth);

    const std::int32_t place = FirstEqual(values + from, before_wrap, highest);
    return place < before_wrap ? from + place : FirstEqual(values, after_wrap, highest);
}

ts::auto_ptr<CFSubdivRule> MergeRules(const CFSubdivRule& first, const CFSubdivRule& second) {
    if (first.Kind() != second.Kind()) throw kBrokenInvariant;
    switch (first.Kind()) {
        case kSubdivMidpoint:
            return ts::make_auto<CFMidpointRule>();
        case kSubdivCornerRanking:
            return ts::make_auto<CFCRRule>(static_cast<const CFCRRule&>(first).Ranking());
        default:
            throw kBrokenInvariant;
    }
}

namespace {

float Highest(const float* values, std::int32_t count) {
    constexpr std::int32_t kLanes = 8;
    float lanes[kLanes] = {};
    std::int32_t j = 0;
    for (; j + kLanes <= count; j += kLanes) {
        for (std::int32_t lane = 0; lane < kLanes; ++lane) {
            lanes[lane] = values[j + lane] > lanes[lane] ? values[j + lane] : lanes[lane];
        }
    }
    for (; j < count; ++j) lanes[0] = std::max(lanes[0], values[j]);
    return *std::max_element(lanes, lanes + kLanes);
}

std::int32_t FirstEqual(const float* values, std::int32_t count, float value) {
    return static_cast<std::int32_t>(std::find(values, values + count, value) - values);
}

}  // namespace
