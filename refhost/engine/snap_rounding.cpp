#include "refhost/engine/snap_rounding.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "refhost/engine/box_tree.h"
#include "refhost/engine/group_by.h"

namespace refhost {
namespace {

__extension__ using Int128 = __int128;

constexpr std::size_t kMostCrossings = std::size_t{1} << 25;  // about four gigabytes in the end; nothing drawn comes near

class Snapper {
 public:
    explicit Snapper(std::span<const GridSegment> segments);

    Nodes Snap();

 private:
    void Meet(std::size_t i, std::size_t j);
    void CutAtStart(std::size_t cut, std::size_t start);
    void CutAtCrossings();
    void SortCuts();
    void MarkLoopNodes();

    std::span<const GridSegment> segments_;
    BoxTree tree_;
    std::vector<GridPoint> crossings_;  // rounded
    Nodes nodes_;
};

bool PassesNear(const GridSegment& s, const GridBox& pixels);
bool PassesPixel(const GridSegment& s, std::int64_t cross, GridPoint pixel);
GridPoint RoundedCrossing(const GridSegment& s, std::int64_t numerator, std::int64_t denominator);
std::int32_t RoundedStep(std::int64_t extent, std::int64_t numerator, std::int64_t denominator);
bool IsEarlierOnZCurve(GridPoint a, GridPoint b);

}  // namespace

Nodes FindNodes(std::span<const GridSegment> segments) { return Snapper(segments).Snap(); }

namespace {

Snapper::Snapper(std::span<const GridSegment> segments)
    : segments_(segments),
      tree_(segments.size(), [&](std::size_t i) { return BoxOf(segments[i].from, segments[i].to); }),
      nodes_{{}, std::vector<char>(segments.size(), false)} {}

Nodes Snapper::Snap() {
    tree_.ForEachPair([&](std::size_t i, std::size_t j) { Meet(i, j); });
    CutAtCrossings();
    crossings_ = {};
    SortCuts();
    MarkLoopNodes();
    return std::move(nodes_);
}

// Every segment end is the start of another segment, so testing starts against segments tests all of them.
void Snapper::Meet(std::size_t i, std::size_t j) {
    const GridSegment& a = segments_[i];
    const GridSegment& b = segments_[j];
    const GridVector a_span = a.to - a.from;
    const GridVector b_span = b.to - b.from;
    const bool only_touch = j == i + 1 && a.to == b.from && Dot(a_span, b_span) >= 0;
    if (only_touch) return;
    const GridVector apart = b.from - a.from;
    const std::int64_t parallel = Cross(a_span, b_span);
    const std::int64_t b_from_beside_a = Cross(a_span, apart);
    const std::int64_t a_from_beside_b = -Cross(b_span, apart);
    if (a.from == b.from) nodes_.is_at_start[i] = nodes_.is_at_start[j] = true;
    if (PassesPixel(a, b_from_beside_a, b.from)) CutAtStart(i, j);
    if (PassesPixel(b, a_from_beside_b, a.from)) CutAtStart(j, i);
    const auto straddles = [](std::int64_t one, std::int64_t other) { return (one < 0 && other > 0) || (one > 0 && other < 0); };
    if (straddles(b_from_beside_a, b_from_beside_a + parallel) && straddles(a_from_beside_b, a_from_beside_b - parallel)) {
        if (crossings_.size() + nodes_.cuts.size() > kMostCrossings) throw std::bad_alloc();
        crossings_.push_back(RoundedCrossing(b, -b_from_beside_a, parallel));
    }
}

void Snapper::CutAtStart(std::size_t cut, std::size_t start) {
    nodes_.cuts.push_back({static_cast<std::uint32_t>(cut), segments_[start].from});
    nodes_.is_at_start[start] = true;
}

// Pixels in the order of a curve that fills the plane lie close together in every run, so they make a good hierarchy as they
// come. Going down it together with that of the segments, a long segment sees the pixels along its way only.
void Snapper::CutAtCrossings() {
    std::sort(crossings_.begin(), crossings_.end(), IsEarlierOnZCurve);
    crossings_.erase(std::unique(crossings_.begin(), crossings_.end()), crossings_.end());
    const BoxTree pixels(crossings_.size(), [&](std::size_t j) { return BoxOf(crossings_[j], crossings_[j]); });
    nodes_.cuts.reserve(nodes_.cuts.size() + 2 * crossings_.size());  // few pixels have more than two segments
    const auto passes_near = [&](std::size_t i, const GridBox& box) { return PassesNear(segments_[i], box); };
    tree_.ForEachPairWith(pixels, passes_near, [&](std::size_t i, std::size_t j) {
        const GridSegment& s = segments_[i];
        const GridPoint p = crossings_[j];
        if (p == s.from) nodes_.is_at_start[i] = true;
        if (PassesPixel(s, Cross(s.to - s.from, p - s.from), p)) nodes_.cuts.push_back({static_cast<std::uint32_t>(i), p});
    });
}

// By segment, then along it; each cut once. No two pixels on a segment are level: half-open squares centred a unit or more apart
// across it are not both passed.
void Snapper::SortCuts() {
    std::vector<Cut>& cuts = nodes_.cuts;
    GroupBy(
        segments_.size(), [](const Cut& cut) { return cut.segment; }, cuts);
    for (auto begin = cuts.begin(), end = begin; begin != cuts.end(); begin = end) {
        const GridSegment& s = segments_[begin->segment];
        end = std::find_if(begin, cuts.end(), [&](const Cut& cut) { return cut.segment != begin->segment; });
        std::sort(begin, end, [&](const Cut& a, const Cut& b) { return Dot(s.to - s.from, a.at - b.at) < 0; });
    }
    const auto same = [](const Cut& a, const Cut& b) { return a.segment == b.segment && a.at == b.at; };
    cuts.erase(std::unique(cuts.begin(), cuts.end(), same), cuts.end());
}

// A loop starts at a node, so that no stretch runs across its seam, and has one in its leftmost point, where windings are
// anchored. So have sharp turns: the segments of one that turns straight back may cover each other, as edges that have to be
// merged.
void Snapper::MarkLoopNodes() {
    std::size_t leftmost = 0;
    for (std::size_t i = 0; i < segments_.size(); ++i) {
        const bool starts_loop = i == 0 || segments_[i].from != segments_[i - 1].to;
        if (starts_loop) {
            nodes_.is_at_start[i] = nodes_.is_at_start[leftmost] = true;
        } else if (Dot(segments_[i].to - segments_[i].from, segments_[i - 1].to - segments_[i - 1].from) < 0) {
            nodes_.is_at_start[i] = true;
        }
        if (starts_loop || IsLeftOf(segments_[i].from, segments_[leftmost].from)) leftmost = i;
    }
    nodes_.is_at_start[leftmost] = true;
}

// As below, for any of several pixels: the line of the segment has corners of their box on both sides, or passes within half a
// unit in the sum of both axes.
bool PassesNear(const GridSegment& s, const GridBox& pixels) {
    const GridVector span = s.to - s.from;
    const GridPoint lowest = {span.y < 0 ? pixels.left : pixels.right, span.x < 0 ? pixels.bottom : pixels.top};
    const GridPoint highest = {span.y < 0 ? pixels.right : pixels.left, span.x < 0 ? pixels.top : pixels.bottom};
    const std::int64_t reach = std::abs(span.x) + std::abs(span.y);
    return 2 * Cross(span, lowest - s.from) <= reach && 2 * Cross(span, highest - s.from) >= -reach;
}

// Separating axes of a segment and a unit square: the two sides of the square and the segment's normal. The square is half-open,
// [-1/2, 1/2) both ways; only its lower left corner belongs to it, and only a falling line can touch it there alone. `cross` is
// that of the segment's span with the way from its start to the pixel.
bool PassesPixel(const GridSegment& s, std::int64_t cross, GridPoint pixel) {
    const std::int64_t dx = std::int64_t{s.to.x} - std::int64_t{s.from.x};
    const std::int64_t dy = std::int64_t{s.to.y} - std::int64_t{s.from.y};
    const std::int64_t reach = std::abs(dx) + std::abs(dy);
    if (2 * std::abs(cross) > reach) return false;
    if (!BoxOf(s.from, s.to).Overlaps(BoxOf(pixel, pixel)) || pixel == s.from || pixel == s.to) return false;
    if (2 * std::abs(cross) < reach) return true;
    return (dx > 0) != (dy > 0) && dx != 0 && dy != 0 && (cross > 0) == (dx > 0);
}

GridPoint RoundedCrossing(const GridSegment& s, std::int64_t numerator, std::int64_t denominator) {
    if (denominator < 0) numerator = -numerator, denominator = -denominator;
    const GridVector span = s.to - s.from;
    return {s.from.x + RoundedStep(span.x, numerator, denominator), s.from.y + RoundedStep(span.y, numerator, denominator)};
}

// floor(extent * numerator / denominator + 1/2), exact. Doubles decide unless the value comes close to a half.
std::int32_t RoundedStep(std::int64_t extent, std::int64_t numerator, std::int64_t denominator) {
    constexpr double kDoubtful = 1e-5;  // extent stays below 2^30, so the double's own error is below 1e-6
    const double value = static_cast<double>(extent) * (static_cast<double>(numerator) / static_cast<double>(denominator)) + 0.5;
    const double rounded = std::floor(value);
    if (value - rounded > kDoubtful && value - rounded < 1 - kDoubtful) return static_cast<std::int32_t>(rounded);
    const Int128 top = 2 * static_cast<Int128>(extent) * numerator + denominator;
    const Int128 bottom = 2 * static_cast<Int128>(denominator);
    const Int128 quotient = top / bottom;
    return static_cast<std::int32_t>(top % bottom < 0 ? quotient - 1 : quotient);
}

// The order of interleaved coordinates: that one decides in which the highest bit differs (Chan, "Closest-point problems
// simplified on the RAM", SODA 2002).
bool IsEarlierOnZCurve(GridPoint a, GridPoint b) {
    const auto differing = [](std::int32_t one, std::int32_t other) { return static_cast<std::uint32_t>(one ^ other); };
    const std::uint32_t x = differing(a.x, b.x);
    const std::uint32_t y = differing(a.y, b.y);
    const bool y_decides = x < y && x < (x ^ y);
    return y_decides ? a.y < b.y : a.x < b.x;
}

}  // namespace
}  // namespace refhost
