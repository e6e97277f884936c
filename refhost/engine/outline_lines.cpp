#include "refhost/engine/outline_lines.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>

namespace refhost {
namespace {

constexpr double kFar = 1 << 18;  // pixels above or below the area beyond which a line is cut before it is rounded

/// A point of the flattened outline.
struct Vertex {
    Point at;
    OutlineVertex rounded{};  // when it is near
    bool is_near = false;     // between the area's sides and at most `kFar` above or below it
};

class LineBuilder {
 public:
    LineBuilder(const FillArea& area, double tolerance, OutlineLines& outline);
    void AddOutline(std::span<const PIVPointType> operators, std::span<const Point> points);

 private:
    Vertex VertexAt(Point point) const;
    bool IsNear(Point point) const;
    OutlineVertex Rounded(Point point) const;
    void AddCurve(const Cubic& cubic, Vertex from);
    bool IsCurveNear() const;
    void AddNearCurve(OutlineVertex from);
    void AddLine(const Vertex& from, const Vertex& to);
    void AddClipped(Point from, Point to);
    void AddBetweenSides(Point from, Point to);
    Point CutIfFar(Point end, Point other) const;
    void AddNear(const OutlineVertex& from, const OutlineVertex& to);
    void StartChain(const OutlineVertex& from, std::int32_t winding);
    void EndChain();

    VisibleBox box_;           // the area
    VisibleBox near_;          // where points are rounded as they are
    std::int64_t left_, top_;  // of the area, sub-units
    std::int32_t height_;      // of the area, sub-units
    double tolerance_;
    OutlineLines& outline_;
    std::vector<Point> curve_;
    std::vector<OutlineVertex> rounded_;  // of the curve
    // Of the chain being made:
    std::int32_t winding_ = 0;  // 0 before the first
    std::int32_t first_ = 0;    // vertex, in outline order
};

/// `value` pixels in sub-units, to nearest. Adding 1.5 * 2^52 leaves the rounded value in the low bits of the double; so
/// rounding is the same at every distance from the area's corner, up to 2^41 pixels.
std::int64_t RoundToSub(double value) {
    constexpr double kShift = 6755399441055744.0;
    return std::bit_cast<std::int64_t>(value * kSubOne + kShift) - std::bit_cast<std::int64_t>(kShift);
}

/// The other coordinate where a line's one coordinate is `at`. Reckoned from the nearer end, which keeps what is left of it when
/// the other end is very far away.
double CrossingOf(double at, double from, double to, double from_other, double to_other) {
    const double slope = (to_other - from_other) / (to - from);
    return std::abs(at - from) <= std::abs(at - to) ? from_other + (at - from) * slope : to_other + (at - to) * slope;
}

LineBuilder::LineBuilder(const FillArea& area, double tolerance, OutlineLines& outline)
    : box_{static_cast<double>(area.left), static_cast<double>(area.top), static_cast<double>(area.right),
           static_cast<double>(area.bottom)},
      near_{box_.left, box_.top - kFar, box_.right, box_.bottom + kFar},
      left_(area.left * kSubOne),
      top_(area.top * kSubOne),
      height_(area.Rows() * kSubOne),
      tolerance_(tolerance),
      outline_(outline) {}

void LineBuilder::AddOutline(std::span<const PIVPointType> operators, std::span<const Point> points) {
    Vertex first{};
    Vertex current{};
    for (std::size_t i = 0; i < operators.size(); ++i) {
        const Vertex before = current;
        if (operators[i] == kPIVCurve) {
            AddCurve({before.at, points[i], points[i + 1], points[i + 2]}, before);
            i += 2;
            current = VertexAt(points[i]);
        } else if (operators[i] == kPIVLine) {
            current = VertexAt(points[i]);
            AddLine(before, current);
        } else {
            AddLine(before, first);
            if (operators[i] == kPIVMove) first = VertexAt(points[i]);
            current = first;
        }
    }
    AddLine(current, first);
    EndChain();
}

Vertex LineBuilder::VertexAt(Point p) const { return IsNear(p) ? Vertex{p, Rounded(p), true} : Vertex{p}; }

bool LineBuilder::IsNear(Point p) const {
    return p.x >= near_.left && p.x <= near_.right && p.y >= near_.top && p.y <= near_.bottom;
}

OutlineVertex LineBuilder::Rounded(Point p) const {
    return {static_cast<std::int32_t>(RoundToSub(p.x) - left_), static_cast<std::int32_t>(RoundToSub(p.y) - top_)};
}

void LineBuilder::AddCurve(const Cubic& cubic, Vertex from) {
    curve_.clear();
    AppendFlattened(cubic, tolerance_, box_, curve_);
    if (from.is_near && IsCurveNear()) return AddNearCurve(from.rounded);
    for (const Point point : curve_) {
        const Vertex to = VertexAt(point);
        AddLine(from, to);
        from = to;
    }
}

bool LineBuilder::IsCurveNear() const {
    Point low = curve_.front();
    Point high = low;
    for (const Point p : curve_) {
        low = {std::min(low.x, p.x), std::min(low.y, p.y)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y)};
    }
    return IsNear(low) && IsNear(high);
}

/// Nearly every curve: rounding its points all at once saves 4 to 7 % of a traced outline's fill (FillPainter/1080/traced4000).
void LineBuilder::AddNearCurve(OutlineVertex from) {
    rounded_.resize(curve_.size());
    std::transform(curve_.begin(), curve_.end(), rounded_.begin(), [&](Point p) { return Rounded(p); });
    for (const OutlineVertex to : rounded_) {
        AddNear(from, to);
        from = to;
    }
}

void LineBuilder::AddLine(const Vertex& from, const Vertex& to) {
    if (from.is_near && to.is_near)
        AddNear(from.rounded, to.rounded);
    else
        AddClipped(from.at, to.at);
}

void LineBuilder::AddClipped(Point from, Point to) {
    if (std::max(from.y, to.y) <= box_.top || std::min(from.y, to.y) >= box_.bottom) return;
    const auto [low, high] = std::minmax(from.x, to.x);
    if (low >= box_.left && high <= box_.right) return AddBetweenSides(from, to);
    if (low >= box_.right) return;
    if (high <= box_.left) return AddBetweenSides({box_.left, from.y}, {box_.left, to.y});
    const double side = low < box_.left ? box_.left : box_.right;
    const Point cut = {side, CrossingOf(side, from.x, to.x, from.y, to.y)};
    AddClipped(from, cut);
    AddClipped(cut, to);
}

void LineBuilder::AddBetweenSides(Point from, Point to) {
    AddNear(VertexAt(CutIfFar(from, to)).rounded, VertexAt(CutIfFar(to, from)).rounded);
}

Point LineBuilder::CutIfFar(Point end, Point other) const {
    if (end.y >= near_.top && end.y <= near_.bottom) return end;
    const double y = end.y < box_.top ? box_.top : box_.bottom;
    return {std::clamp(CrossingOf(y, end.y, other.y, end.x, other.x), box_.left, box_.right), y};
}

void LineBuilder::AddNear(const OutlineVertex& from, const OutlineVertex& to) {
    if (from.y == to.y || std::max(from.y, to.y) <= 0 || std::min(from.y, to.y) >= height_) return;
    const std::int32_t winding = from.y < to.y ? 1 : -1;
    if (winding != winding_ || from.y != outline_.vertices.back().y)
        StartChain(from, winding);
    else if (from.x != outline_.vertices.back().x)
        outline_.vertices.push_back(from);
    outline_.vertices.push_back({to.x, to.y});
}

/// A line that does not go on from the last vertex starts a chain; where parts of the outline were left out, the height tells.
void LineBuilder::StartChain(const OutlineVertex& from, std::int32_t winding) {
    EndChain();
    winding_ = winding;
    first_ = static_cast<std::int32_t>(outline_.vertices.size());
    outline_.vertices.push_back(from);
}

void LineBuilder::EndChain() {
    const auto last = static_cast<std::int32_t>(outline_.vertices.size()) - 1;
    if (winding_ > 0) outline_.chains.push_back({first_, last, winding_, 0});
    if (winding_ < 0) outline_.chains.push_back({last, first_, winding_, 0});
}

}  // namespace

void OutlineLines::Clear() {
    vertices.clear();
    chains.clear();
}

void AppendOutlineLines(std::span<const PIVPointType> operators, std::span<const Point> points, double tolerance,
                        const FillArea& area, OutlineLines& outline) {
    LineBuilder(area, tolerance, outline).AddOutline(operators, points);
}

}  // namespace refhost
