#include "tool/path_builder.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace vrltool {
namespace {

// A cubic with handles of length 4/3 tan(angle / 4) leaves the circle by about 4e-6 of the radius over an eighth of a
// turn; over a quarter it would be 3e-4, a visible quarter pixel on a radius of a thousand.
constexpr double kArcPiece = std::numbers::pi / 4;

// A subpath that ends this close to its start, as a share of its coordinates, has returned to it: single precision can
// hardly tell the two points apart, and relative commands add up rounded numbers.
constexpr double kSamePlace = 1e-6;

bool IsDot(const Outline& outline) {
    const Vertex& only = outline.vertices.front();
    return outline.vertices.size() == 1 && only.in == only.anchor && only.out == only.anchor;
}

double LargestCoordinate(const Outline& outline) {
    double largest = 0;
    for (const Vertex& v : outline.vertices) largest = std::max({largest, std::abs(v.anchor.x), std::abs(v.anchor.y)});
    return largest;
}

bool ReturnsToStart(const Outline& outline) {
    const Point& first = outline.vertices.front().anchor;
    const Point& last = outline.vertices.back().anchor;
    return outline.vertices.size() > 1 &&
           std::hypot(first.x - last.x, first.y - last.y) <= kSamePlace * LargestCoordinate(outline);
}

/// An explicit last segment back to the start becomes the closing segment: its arriving handle moves to the first vertex.
void MergeLastVertexIntoFirst(Outline& outline) {
    Vertex& first = outline.vertices.front();
    const Vertex& last = outline.vertices.back();
    first.in = last.in == last.anchor ? first.anchor : last.in;
    outline.vertices.pop_back();
}

/// Where on an ellipse an arc runs. The ellipse is the image of the unit circle; angles are those in that circle.
/// Points are found from the arc's start, not from the centre: on a large radius that would cost all their digits.
struct ArcCourse {
    Point from;
    double rx, ry, cosine, sine;
    double start, sweep;  // radians, sweep signed

    Point Mapped(double u, double v) const { return {cosine * rx * u - sine * ry * v, sine * rx * u + cosine * ry * v}; }
    /// The point `angle` further on; a chord of the unit circle is 2 sin(angle / 2) long and points along the tangent
    /// half way.
    Point PointAfter(double angle) const {
        const double chord = 2 * std::sin(angle / 2);
        const Point way = TangentAfter(angle / 2);
        return {from.x + way.x * chord, from.y + way.y * chord};
    }
    Point TangentAfter(double angle) const { return Mapped(-std::sin(start + angle), std::cos(start + angle)); }
};

/// In the space where the ellipse is the unit circle the end points are a chord, (u, v) and (-u, -v) about its middle.
/// The centre lies on the perpendicular bisector, `height` away along the unit vector (v, -u) / |(u, v)|.
ArcCourse CourseOf(const ArcShape& shape, bool large, bool sweep, const Point& from, const Point& to) {
    ArcCourse arc = {from, std::abs(shape.rx), std::abs(shape.ry), std::cos(shape.rotation), std::sin(shape.rotation), 0, 0};
    const Point half = {(from.x - to.x) / 2, (from.y - to.y) / 2};
    const double u = (arc.cosine * half.x + arc.sine * half.y) / arc.rx;
    const double v = (arc.cosine * half.y - arc.sine * half.x) / arc.ry;
    const double half_chord = std::hypot(u, v);
    const double enlarge = std::max(1.0, half_chord);
    arc.rx *= enlarge;
    arc.ry *= enlarge;

    const double reach = half_chord / enlarge;
    const double height = std::sqrt(std::max(0.0, (1 - reach) * (1 + reach)));
    const double towards = large == sweep ? -height : height;
    arc.start = std::atan2(v / enlarge + u / half_chord * towards, u / enlarge - v / half_chord * towards);
    const double short_way = 2 * std::atan2(reach, height);
    arc.sweep = (large ? 2 * std::numbers::pi - short_way : short_way) * (sweep ? 1 : -1);
    return arc;
}

}  // namespace

void PathBuilder::MoveTo(const Point& start) {
    Deliver();
    current_ = start;
}

void PathBuilder::CurveTo(const Point& control1, const Point& control2, const Point& end) {
    if (subpath_.vertices.empty()) subpath_.vertices.push_back({current_, current_, current_});
    subpath_.vertices.back().out = control1;
    subpath_.vertices.push_back({control2, end, end});
    current_ = end;
}

void PathBuilder::QuadraticTo(const Point& control, const Point& end) {
    const auto towards_control = [&](const Point& p) {
        return Point{p.x + (control.x - p.x) * 2 / 3, p.y + (control.y - p.y) * 2 / 3};
    };
    CurveTo(towards_control(current_), towards_control(end), end);
}

void PathBuilder::ArcTo(const ArcShape& shape, bool large, bool sweep, const Point& end) {
    if (end == current_) return;
    if (shape.rx == 0 || shape.ry == 0) return LineTo(end);
    const ArcCourse arc = CourseOf(shape, large, sweep, current_, end);
    if (!std::isfinite(arc.start)) return LineTo(end);  // a radius beyond all measure: the chord is 0 next to it

    constexpr double kRounding = 1e-9;  // a quarter turn that came out a trace longer is still two pieces
    const int pieces = std::max(1, static_cast<int>(std::ceil(std::abs(arc.sweep) / kArcPiece - kRounding)));
    const double step = arc.sweep / pieces;
    const double handle = 4.0 / 3.0 * std::tan(step / 4);
    for (int i = 1; i <= pieces; ++i) {
        const Point leaving = arc.TangentAfter(step * (i - 1));
        const Point arriving = arc.TangentAfter(step * i);
        const Point next = i == pieces ? end : arc.PointAfter(step * i);
        CurveTo({current_.x + handle * leaving.x, current_.y + handle * leaving.y},
                {next.x - handle * arriving.x, next.y - handle * arriving.y}, next);
    }
}

void PathBuilder::Close() {
    if (subpath_.vertices.empty()) return;
    current_ = subpath_.vertices.front().anchor;
    if (ReturnsToStart(subpath_)) MergeLastVertexIntoFirst(subpath_);
    subpath_.closed = true;
    outlines_.push_back(std::move(subpath_));
    subpath_ = {};
    if (IsDot(outlines_.back())) outlines_.pop_back();
}

std::vector<Outline> PathBuilder::Take() {
    Deliver();
    return std::exchange(outlines_, {});
}

void PathBuilder::Deliver() {
    if (subpath_.vertices.empty()) return;
    subpath_.closed = false;
    outlines_.push_back(std::move(subpath_));
    subpath_ = {};
}

}  // namespace vrltool
