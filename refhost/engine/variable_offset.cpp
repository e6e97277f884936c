#include "refhost/engine/variable_offset.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>

#include "refhost/engine/arrangement.h"
#include "refhost/engine/coincidence.h"
#include "refhost/engine/flat_chain.h"

namespace refhost {
namespace {

constexpr double kFar = std::numeric_limits<double>::infinity();
constexpr double kSmallGap = 0.01;     // pixels; contours that end this close to each other need no join
constexpr double kReversalSine = 0.1;  // a turn this close to 180 degrees has no reliable sign
constexpr double kMostSectorSteps = 1024;
constexpr double kSamePoint = 0.005;  // pixels; a ring leaves out points this close to the one before

/// Loops of strips that enclose what they fill on the left-hand side, so that the normals point outwards.
struct ResolvedOutline {
    std::vector<OutlineStrip> strips;
    std::vector<std::size_t> loop_ends;  // one past the last strip of each loop, increasing
};

/// The chords of strips, or parts of them, as a closed chain.
struct StripChain {
    std::vector<GridSegment> segments;
    std::vector<std::uint32_t> strips;  // per segment
};

ResolvedOutline WithoutOverlap(std::span<const OutlineStrip> loop, double touch);
StripChain ChainOf(std::span<const OutlineStrip> loop);
GridSegment ChordOf(std::span<const OutlineStrip> loop, std::size_t strip);
StripChain WithTouchingSidesAligned(const StripChain& chain, double touch);
double ShareAt(const GridSegment& segment, GridPoint p);
OutlineStrip PartOf(const OutlineStrip& strip, const GridSegment& chord, GridPoint from, GridPoint to, bool reversed);
double Reach(const Station& station);
Point Turned(Point p, double angle);

}  // namespace

VariableOffset::VariableOffset(std::span<const OutlineStrip> loop, double touch) {
    const ResolvedOutline outline = WithoutOverlap(loop, touch);
    std::size_t begin = 0;
    for (const std::size_t end : outline.loop_ends) {
        AppendLoop(std::span(outline.strips).subspan(begin, end - begin));
        begin = end;
    }
}

VariableOffset::Ring VariableOffset::RingAt(double fraction) const {
    Ring ring = {{}, false};
    std::vector<Point>& points = ring.chains.points;
    points.reserve(spokes_.size());
    std::size_t i = 0;
    for (const std::size_t end : loop_ends_) {
        Point last = {kFar, kFar};
        for (; i < end; ++i) {
            const Spoke& spoke = spokes_[i];
            const double distance = spoke.distance.At(fraction);
            ring.winds_backwards |= distance < 0;
            const Point p = spoke.base + std::clamp(distance, spoke.least, spoke.most) * spoke.normal;
            if (std::abs(p.x - last.x) + std::abs(p.y - last.y) > kSamePoint) points.push_back(last = p);
        }
        ring.chains.loop_ends.push_back(points.size());
    }
    return ring;
}

void VariableOffset::AppendLoop(std::span<const OutlineStrip> loop) {
    const Station* before = &loop.back().end;
    for (const OutlineStrip& strip : loop) {
        AppendCorner(*before, strip.start);
        AppendStrip(strip);
        before = &strip.end;
    }
    loop_ends_.push_back(spokes_.size());
}

// Contours pass a corner in a sector on its convex side; on the other side they touch the corner itself, as the strips overlap
// there. Where the outline turns almost straight back, rounding decides the sign of the turn: then both sides get a sector, which
// is never wrong, as it lies in the disc round the corner.
void VariableOffset::AppendCorner(const Station& before, const Station& after) {
    const double turn = TurningAngle(before.normal, after.normal);
    if (std::abs(turn) * std::max(Reach(before), Reach(after)) < kSmallGap) return;
    const bool is_reversal = Dot(before.normal, after.normal) < 0 && std::abs(Cross(before.normal, after.normal)) < kReversalSine;
    AppendSector(before, after, turn);
    if (is_reversal) AppendSector(before, after, turn - std::copysign(2 * std::numbers::pi, turn));
}

// A positive angle opens outwards. Contours on the other side of the outline have all their points of it at the corner.
void VariableOffset::AppendSector(const Station& before, const Station& after, double angle) {
    const bool opens_outwards = angle > 0;
    const double reach = opens_outwards ? std::max(before.distance.outer, after.distance.outer)
                                        : -std::min(before.distance.inner, after.distance.inner);
    const double steps = std::ceil(std::abs(angle) * std::sqrt(std::max(reach, 0.0) / (8 * kContourTolerance)));
    const int count = static_cast<int>(std::min(steps, kMostSectorSteps));
    for (int i = 0; i <= count; ++i) {
        const double t = count == 0 ? 0 : static_cast<double>(i) / count;
        Append({before.at, Turned(before.normal, t * angle), Lerp(before.distance, after.distance, t), opens_outwards ? 0 : -kFar,
                opens_outwards ? kFar : 0});
    }
}

void VariableOffset::AppendStrip(const OutlineStrip& strip) {
    const auto& [start, end] = strip;
    Spoke first = {start.at, start.normal, start.distance, -kFar, kFar};
    Spoke second = {end.at, end.normal, end.distance, -kFar, kFar};
    // start.at + a * start.normal = end.at + b * end.normal
    const double turn = Cross(start.normal, end.normal);
    const double a = Cross(end.at - start.at, end.normal) / turn;
    const double b = Cross(end.at - start.at, start.normal) / turn;
    if (a > 0 && b > 0) first.most = a, second.most = b;
    if (a < 0 && b < 0) first.least = a, second.least = b;
    Append(first);
    Append(second);
}

// Neighbouring strips mostly share a normal, and one spoke does for both unless it meets a fold.
void VariableOffset::Append(const Spoke& spoke) {
    const bool starts_loop = spokes_.size() == (loop_ends_.empty() ? 0 : loop_ends_.back());
    if (!starts_loop && spoke.IsFree() && spokes_.back().IsFree()) {
        const Spoke& last = spokes_.back();
        const auto differ = [&](double fraction) {
            return Distance(spoke.base + spoke.distance.At(fraction) * spoke.normal,
                            last.base + last.distance.At(fraction) * last.normal);
        };
        if (differ(0) < kSamePoint && differ(1) < kSamePoint) return;
    }
    spokes_.push_back(spoke);
}

namespace {

ResolvedOutline WithoutOverlap(std::span<const OutlineStrip> loop, double touch) {
    const StripChain whole = ChainOf(loop);
    const StripChain chain = WithTouchingSidesAligned(whole, touch);
    const Boundary boundary = FindBoundary(chain.segments, WindingRule::kNonZero);
    ResolvedOutline outline = {{}, boundary.loop_ends};
    std::size_t begin = 0;
    for (const std::size_t end : boundary.loop_ends) {
        for (std::size_t i = begin; i < end; ++i) {
            const BoundaryEdge& edge = boundary.edges[i];
            const GridPoint to = boundary.edges[i + 1 < end ? i + 1 : begin].from;
            const std::uint32_t strip = chain.strips[edge.segment];
            outline.strips.push_back(PartOf(loop[strip], ChordOf(loop, strip), edge.from, to, edge.reversed));
        }
        begin = end;
    }
    return outline;
}

StripChain ChainOf(std::span<const OutlineStrip> loop) {
    StripChain chain;
    for (std::uint32_t i = 0; i < loop.size(); ++i) {
        const GridSegment chord = ChordOf(loop, i);
        if (chord.from == chord.to) continue;
        chain.segments.push_back(chord);
        chain.strips.push_back(i);
    }
    return chain;
}

// To where the next one starts: the two places may differ in the last bit, and chains must close.
GridSegment ChordOf(std::span<const OutlineStrip> loop, std::size_t strip) {
    return {ToGrid(loop[strip].start.at), ToGrid(loop[(strip + 1) % loop.size()].start.at)};
}

StripChain WithTouchingSidesAligned(const StripChain& chain, double touch) {
    std::vector<std::uint32_t> all(chain.segments.size());
    std::iota(all.begin(), all.end(), 0U);
    const std::vector<Touch> touches = FindTouches(chain.segments, all, touch * kGridUnitsPerPixel,
                                                   [&](std::uint32_t i, GridPoint p) { return ShareAt(chain.segments[i], p); });
    StripChain aligned;
    auto next = touches.begin();
    for (std::uint32_t i = 0; i < all.size(); ++i) {
        GridPoint from = chain.segments[i].from;
        const auto append_to = [&](GridPoint to) {
            if (from == to) return;
            aligned.segments.push_back({from, to});
            aligned.strips.push_back(chain.strips[i]);
            from = to;
        };
        for (; next != touches.end() && next->segment == i; ++next) append_to(next->at);
        append_to(chain.segments[i].to);
    }
    return aligned;
}

double ShareAt(const GridSegment& segment, GridPoint p) {
    const Point origin = FromGrid(segment.from);
    const Point chord = FromGrid(segment.to) - origin;
    return std::clamp(Dot(FromGrid(p) - origin, chord) / Dot(chord, chord), 0.0, 1.0);
}

OutlineStrip PartOf(const OutlineStrip& strip, const GridSegment& chord, GridPoint from, GridPoint to, bool reversed) {
    const auto station_at = [&](GridPoint p) -> Station {
        const double t = ShareAt(chord, p);
        const Point normal = Unit(Lerp(strip.start.normal, strip.end.normal, t));
        return {FromGrid(p), reversed ? -normal : normal, Lerp(strip.start.distance, strip.end.distance, t)};
    };
    return {station_at(from), station_at(to)};
}

double Reach(const Station& station) { return std::max(-station.distance.inner, station.distance.outer); }

Point Turned(Point p, double angle) {
    const double cosine = std::cos(angle);
    const double sine = std::sin(angle);
    return {p.x * cosine - p.y * sine, p.x * sine + p.y * cosine};
}

}  // namespace
}  // namespace refhost
