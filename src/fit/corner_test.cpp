#include "fit/corner_test.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "base/errors.h"
#include "base/narrow.h"
#include "fit/lanes.h"
#include "fit/quad_fit.h"

namespace {

constexpr float kPi = 3.1415927F;
constexpr float kStraightOn = -1.0F;  // the cosine between the ways back and forward on a straight run
constexpr float kNoLength = 1e-6F;    // pixels
constexpr float kSameCosine = 1e-6F;  // rounding leaves symmetric corners about 1e-7 apart

/// The comparison of all cosines: whether one exceeds another that is not the same.
bool Exceeds(float cosine, float other) { return cosine - other > kSameCosine; }

/// The sum of the unit vectors to `point` from the points of the window at `first`, `first` + `step`, ..., `count` of them. An
/// open window ends the sum at its ends; a closed one goes on round its chain.
CFPoint DirectionSum(const CFWindow& window, CFPoint point, std::int32_t first, std::int32_t step, std::int32_t count);

/// The cosine between the mean directions from point `i` to its neighbours on both sides.
float LinearCosine(const CFWindow& window, std::int32_t i, std::int32_t half_width);

/// The cosine between the ways back and forward on the quadratics on both sides of point `i`; no value without such curves.
std::optional<float> QuadraticCosine(const CFWindow& window, std::int32_t i, std::int32_t half_width);

void RequireAnchors(const CFAnchorSet& anchors) {
    if (anchors.anchors.get() == nullptr) throw kFailedCheck;
}

/// Calls `test` for every point of the window with neighbours on both sides.
template <class Test>
void ForEachInnerPoint(const CFWindow& window, const Test& test) {
    if (window.Count() <= 2) return;
    for (std::int32_t i = window.IsClosed() ? 0 : 1; i <= window.Count() - 2; ++i) test(i);
}

/// Replaces runs of neighbouring anchors by their strongest one. Where runs touch across the start of a closed window the
/// last anchor goes.
void SuppressNeighbours(const CFWindow& window, CFAnchorSet& anchors);

/// Makes the ends of an open window anchors. A closed one must have one anchor at least.
void AddEndAnchors(const CFWindow& window, CFAnchorSet& anchors);

void Finish(const CFWindow& window, CFAnchorSet& anchors) {
    SuppressNeighbours(window, anchors);
    AddEndAnchors(window, anchors);
}

}  // namespace

CFCornerTest::CFCornerTest(float angle, std::int32_t half_width)
    : threshold_(NarrowToFloat(std::cos(static_cast<double>((180.0F - angle) * kPi / 180.0F)))), half_width_(half_width) {
    if (half_width < 1) throw kBrokenInvariant;
}

void CFCornerTest::AddIfCorner(std::int32_t i, std::optional<float> cosine, CFAnchorSet& anchors) const {
    if (cosine && Exceeds(*cosine, threshold_)) anchors.Append({kAnchorCorner, i, *cosine});
}

void CFLinTest::TestCandidates(const CFWindow& window, std::span<const std::int32_t> candidates, CFAnchorSet& anchors) const {
    RequireAnchors(anchors);
    for (const std::int32_t i : candidates) {
        if (i < 0 || i >= window.Count()) throw kBrokenInvariant;
        AddIfCorner(i, LinearCosine(window, i, HalfWidth()), anchors);
    }
    Finish(window, anchors);
}

void CFLinTest::TestAll(const CFWindow& window, CFAnchorSet& anchors) const {
    RequireAnchors(anchors);
    ForEachInnerPoint(window, [&](std::int32_t i) { AddIfCorner(i, LinearCosine(window, i, HalfWidth()), anchors); });
    Finish(window, anchors);
}

void CFQuadTest::TestCandidates(const CFWindow& window, std::span<const std::int32_t> candidates, CFAnchorSet& anchors) const {
    RequireAnchors(anchors);
    if (window.Count() > 2) {
        for (const std::int32_t i : candidates) {
            // The windows tested cover whole chains from point 0, so that the number in the window is that in the chain.
            if (window.LocalIndex(i) != i) throw kBrokenInvariant;
            AddIfCorner(i, QuadraticCosine(window, i, HalfWidth()), anchors);
        }
    }
    Finish(window, anchors);
}

void CFQuadTest::TestAll(const CFWindow& window, CFAnchorSet& anchors) const {
    RequireAnchors(anchors);
    ForEachInnerPoint(window, [&](std::int32_t i) { AddIfCorner(i, QuadraticCosine(window, i, HalfWidth()), anchors); });
    Finish(window, anchors);
}

namespace {

float LengthOf(CFPoint vector) { return std::sqrt(vector.x * vector.x + vector.y * vector.y); }
float Dot(CFPoint a, CFPoint b) { return a.x * b.x + a.y * b.y; }

/// Adds the unit vectors of vectors from (x, y) to one by one; what has no length adds nothing.
void AddDirections(Lanes x, Lanes y, CFPoint& sum) {
    const Lanes length = SquareRoot(x * x + y * y), zero = {};
    const LaneFlags has_length = length > kNoLength;
    const Lanes unit_x = Select(has_length, x / length, zero), unit_y = Select(has_length, y / length, zero);
    for (std::int32_t lane = 0; lane < kLanes; ++lane) sum = sum + CFPoint{unit_x[lane], unit_y[lane]};
}

CFPoint DirectionSum(const CFWindow& window, CFPoint point, std::int32_t first, std::int32_t step, std::int32_t count) {
    const std::int32_t chain_count = window.SegmentCount();
    CFPoint sum;
    std::int32_t j = window.IsClosed() ? RoundLoop(first, chain_count) : first;
    if (!window.IsClosed()) count = std::min(count, step > 0 ? window.Count() - j : j + 1);
    while (count > 0) {
        Lanes x = {}, y = {};
        for (std::int32_t lane = 0; lane < kLanes && count > 0; ++lane, --count, j += step) {
            if (window.IsClosed()) j = j < 0 ? j + chain_count : j >= chain_count ? j - chain_count : j;
            x[lane] = point.x - window.X()[j];
            y[lane] = point.y - window.Y()[j];
        }
        AddDirections(x, y, sum);
    }
    return sum;
}

float LinearCosine(const CFWindow& window, std::int32_t i, std::int32_t half_width) {
    const CFPoint point = window.Point(i);
    const CFPoint back = DirectionSum(window, point, i - 1, -1, half_width);
    const CFPoint forward = DirectionSum(window, point, i + 1, 1, half_width);
    const float lengths = LengthOf(back) * LengthOf(forward);
    return lengths <= kNoLength ? kStraightOn : Dot(back, forward) / lengths;
}

/// The direction of `vector`; no value when neither component is worth one.
std::optional<CFPoint> DirectionOf(CFPoint vector) {
    if (!(std::abs(vector.x) > kNoLength || std::abs(vector.y) > kNoLength)) return std::nullopt;
    const float length = LengthOf(vector);
    return CFPoint{vector.x / length, vector.y / length};
}

std::optional<float> QuadraticCosine(const CFWindow& window, std::int32_t i, std::int32_t half_width) {
    const std::optional<CFQuadPair> curves = FitQuadratics(CF2QuadView(window, i, half_width));
    if (!curves) return std::nullopt;
    const auto back = DirectionOf((curves->left.Control(1) - curves->left.Control(2)) * 2.0F);  // end derivatives
    const auto forward = DirectionOf((curves->right.Control(1) - curves->right.Control(0)) * 2.0F);
    if (!back || !forward) return std::nullopt;
    return Dot(*back, *forward);
}

void SuppressNeighbours(const CFWindow& window, CFAnchorSet& anchors) {
    if (anchors.anchors->size() < 2) return;
    const CFAnchorSet found = std::move(anchors);
    anchors = CFAnchorSet(*found.segment, *found.ranking);
    const CFAnchorList& corners = *found.anchors;
    for (auto run = corners.begin(); run != corners.end();) {
        const CFAnchor* strongest = *run;
        std::int32_t last = strongest->index;
        const auto second = std::next(run);
        for (++run; run != corners.end() && (*run)->index == last + 1; ++run) {
            // Of the first two the second is preferred, later on the one that came before.
            const bool stronger =
                run == second ? !Exceeds(strongest->value, (*run)->value) : Exceeds((*run)->value, strongest->value);
            if (stronger) strongest = *run;
            last = (*run)->index;
        }
        anchors.Append({kAnchorCorner, strongest->index, 0.0F});
    }
    const bool ends_touch = corners.front()->index == 0 && corners.back()->index == window.SegmentCount() - 1;
    if (window.IsClosed() && ends_touch) {
        delete anchors.anchors->back();
        anchors.anchors->pop_back();
    }
}

void Prepend(CFAnchorSet& anchors, CFAnchor anchor) {
    anchors.Append(anchor);
    anchors.anchors->splice(anchors.anchors->begin(), *anchors.anchors, std::prev(anchors.anchors->end()));
}

void AddEndAnchors(const CFWindow& window, CFAnchorSet& anchors) {
    const CFAnchorList& list = *anchors.anchors;
    if (window.IsClosed()) {
        if (list.empty()) anchors.Append({kAnchorSmooth, 0, 0.0F});
        return;
    }
    const std::int32_t last = window.SegmentCount() - 1;
    if (list.empty() || list.front()->index != 0) Prepend(anchors, {kAnchorCorner, 0, 0.0F});
    if (list.back()->index != last) anchors.Append({kAnchorCorner, last, 0.0F});
}

}  // namespace
