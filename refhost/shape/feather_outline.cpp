#include "refhost/shape/feather_outline.h"

#include <algorithm>
#include <cmath>

#include "refhost/shape/shape_state.h"

namespace refhost {
namespace {

constexpr double kMostTurn = 0.25;     // radians one strip may turn
constexpr double kShortHandle = 2e-3;  // pixels; the direction of a shorter control leg is noise of single-precision input
constexpr double kShortPart = 1e-3;    // pixels; what still turns in so short a part is a corner
constexpr int kMostHalvings = 20;

/// A part of a curve without knots inside that turns little.
struct Part {
    Cubic curve;
    Point start_tangent, end_tangent;
    double start_length, end_length;  // arc length from the start of the outline
    std::size_t knots_passed;
};

/// Follows an outline from its start and cuts it into parts.
class OutlineTracer {
 public:
    OutlineTracer(std::span<const FeatherKnot> knots, double reach) : knots_(knots), reach_(reach) {}

    void Follow(const Cubic& segment);
    void FinishKnots();

    std::vector<Part> parts;
    std::vector<double> knot_lengths;  // arc length at each knot passed
    double length = 0;

 private:
    void Cut(const Cubic& curve, int halvings);
    bool IsFineEnough(double turn, double control_length) const;

    std::span<const FeatherKnot> knots_;
    double reach_;
    double segments_done_ = 0;
};

Point PointOf(WEX_Item item) { return {static_cast<double>(item.x), static_cast<double>(item.y)}; }
Cubic WithoutTinyHandles(Cubic curve);
double LargestDistance(std::span<const FeatherKnot> knots, double expansion);
double ControlTurn(const Cubic& curve);
void AppendStrips(const Part& part, const FeatherRadius& radius, double expansion, std::vector<OutlineStrip>& strips);
Station StationAt(Point at, Point tangent, double radius, double expansion);

}  // namespace

ShapeSegments SegmentsOf(const DY_Shape& shape) {
    const std::vector<WEX_Item>& items = shape.state->points.items;
    ShapeSegments segments = {{}, !shape.IsOpen()};
    if (items.size() < 4) return segments;
    std::size_t i = 0;
    for (; i + 3 < items.size(); i += 3) {
        segments.curves.push_back({PointOf(items[i]), PointOf(items[i + 1]), PointOf(items[i + 2]), PointOf(items[i + 3])});
    }
    if (segments.is_closed && i + 3 == items.size()) {
        segments.curves.push_back({PointOf(items[i]), PointOf(items[i + 1]), PointOf(items[i + 2]), PointOf(items[0])});
    } else if (segments.is_closed) {
        segments.curves.push_back(LineAsCubic(PointOf(items[i]), PointOf(items[0])));
    }
    return segments;
}

std::vector<OutlineStrip> FeatherStrips(const ShapeSegments& segments, std::span<const FeatherKnot> knots, double expansion) {
    OutlineTracer tracer(knots, LargestDistance(knots, expansion));
    for (const Cubic& segment : segments.curves) tracer.Follow(WithoutTinyHandles(segment));
    tracer.FinishKnots();
    if (!segments.is_closed) tracer.Follow(LineAsCubic(segments.curves.back().p3, segments.curves.front().p0));
    const FeatherRadius radius(knots, std::move(tracer.knot_lengths), tracer.length);
    std::vector<OutlineStrip> strips;
    strips.reserve(tracer.parts.size());
    for (const Part& part : tracer.parts) AppendStrips(part, radius, expansion, strips);
    return strips;
}

namespace {

Cubic WithoutTinyHandles(Cubic c) {
    if (Distance(c.p0, c.p1) < kShortHandle) c.p1 = c.p0;
    if (Distance(c.p2, c.p3) < kShortHandle) c.p2 = c.p3;
    return c;
}

double LargestDistance(std::span<const FeatherKnot> knots, double expansion) {
    double largest = std::abs(expansion);
    for (const FeatherKnot& knot : knots) largest = std::max(largest, std::abs(expansion + knot.radius));
    return largest;
}

void OutlineTracer::Follow(const Cubic& segment) {
    double done = 0;
    while (knot_lengths.size() < knots_.size() && knots_[knot_lengths.size()].position < segments_done_ + 1) {
        const double t = knots_[knot_lengths.size()].position - segments_done_;
        if (t > done) Cut(SubCurve(segment, done, t), 0);
        done = std::max(done, t);
        knot_lengths.push_back(length);
    }
    Cut(done == 0 ? segment : SubCurve(segment, done, 1), 0);
    ++segments_done_;
}

void OutlineTracer::FinishKnots() { knot_lengths.resize(knots_.size(), length); }

// The control polygon turns at least as much as the curve, and halving brings the two together.
void OutlineTracer::Cut(const Cubic& curve, int halvings) {
    const double turn = ControlTurn(curve);
    const double control_length = ControlLength(curve);
    const double chord = Distance(curve.p0, curve.p3);
    const bool is_corner = control_length < kShortPart || halvings == kMostHalvings;
    if (!is_corner && !IsFineEnough(turn, control_length)) {
        Cut(SubCurve(curve, 0, 0.5), halvings + 1);
        Cut(SubCurve(curve, 0.5, 1), halvings + 1);
        return;
    }
    const double part_length = 0.5 * (chord + control_length);
    if (chord > 0) {
        const Point along = Unit(curve.p3 - curve.p0);
        const bool is_even = turn <= kMostTurn;
        parts.push_back({curve, is_even ? StartTangent(curve) : along, is_even ? EndTangent(curve) : along, length,
                         length + part_length, knot_lengths.size()});
    }
    length += part_length;
}

// A contour at distance d is an arc of length + d * turn; where d changes as fast as the outline runs, it bends three times as
// much. Its chord is an eighth of length times turn away.
bool OutlineTracer::IsFineEnough(double turn, double control_length) const {
    return turn <= kMostTurn && turn * (3 * control_length + reach_ * turn) <= 8 * kContourTolerance;
}

double ControlTurn(const Cubic& c) {
    double turn = 0;
    Point last = StartTangent(c);
    for (const Point leg : {c.p1 - c.p0, c.p2 - c.p1, c.p3 - c.p2}) {
        if (leg.x == 0 && leg.y == 0) continue;
        turn += std::abs(TurningAngle(last, leg));
        last = leg;
    }
    return turn;
}

// The radius bends where it passes through 0, as only one side of it counts at a time.
void AppendStrips(const Part& part, const FeatherRadius& radius, double expansion, std::vector<OutlineStrip>& strips) {
    const double start_radius = radius.At(part.start_length, part.knots_passed);
    const double end_radius = radius.At(part.end_length, part.knots_passed);
    const Station start = StationAt(part.curve.p0, part.start_tangent, start_radius, expansion);
    const Station end = StationAt(part.curve.p3, part.end_tangent, end_radius, expansion);
    if (start_radius * end_radius >= 0) return strips.push_back({start, end});
    const double t = start_radius / (start_radius - end_radius);
    const Point tangent = Unit(Lerp(part.start_tangent, part.end_tangent, t));
    const Station middle = StationAt(Evaluate(part.curve, t), tangent, 0, expansion);
    strips.push_back({start, middle});
    strips.push_back({middle, end});
}

Station StationAt(Point at, Point tangent, double radius, double expansion) {
    return {at, RightNormal(tangent), {expansion + std::min(radius, 0.0), expansion + std::max(radius, 0.0)}};
}

}  // namespace
}  // namespace refhost
