#include "refhost/engine/outline_lines.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <utility>

namespace refhost {
namespace {

constexpr double kFar = 1 << 18;  // pixels above or below the area beyond which a line is cut before it is rounded

class LineBuilder {
 public:
    LineBuilder(const FillArea& area, double tolerance, std::vector<OutlineLine>& lines);
    void AddOutline(std::span<const PIVPointType> operators, std::span<const Point> points);

 private:
    void AddCurve(const Cubic& cubic);
    void AddLine(Point from, Point to);
    void AddBetweenSides(Point from, Point to);
    Point CutIfFar(Point end, Point other) const;
    void AddRounded(std::int32_t from_x, std::int32_t from_y, std::int32_t to_x, std::int32_t to_y);

    VisibleBox box_;
    std::int64_t left_, top_;  // of the area, sub-units
    std::int32_t height_;      // of the area, sub-units
    double tolerance_;
    std::vector<OutlineLine>& lines_;
    std::vector<Point> curve_;
};

/// `value` pixels in sub-units, to nearest. Adding 1.5 * 2^52 leaves the rounded value in the low bits of the double; so
/// rounding is the same at every distance from the area's corner, up to 2^41 pixels.
std::int64_t RoundToSub(double value) {
    constexpr double kShift = 6755399441055744.0;
    return std::bit_cast<std::int64_t>(value * kSubOne + kShift) - std::bit_cast<std::int64_t>(kShift);
}

double CrossingOf(double at, double from, double to, double from_value, double to_value) {
    return from_value + (at - from) / (to - from) * (to_value - from_value);
}

LineBuilder::LineBuilder(const FillArea& area, double tolerance, std::vector<OutlineLine>& lines)
    : box_{static_cast<double>(area.left), static_cast<double>(area.top), static_cast<double>(area.right),
           static_cast<double>(area.bottom)},
      left_(area.left * kSubOne),
      top_(area.top * kSubOne),
      height_(area.Rows() * kSubOne),
      tolerance_(tolerance),
      lines_(lines) {}

void LineBuilder::AddOutline(std::span<const PIVPointType> operators, std::span<const Point> points) {
    Point first{};
    Point current{};
    for (std::size_t i = 0; i < operators.size(); ++i) {
        switch (operators[i]) {
            case kPIVMove:
                AddLine(current, first);
                first = points[i];
                break;
            case kPIVLine:
                AddLine(current, points[i]);
                break;
            case kPIVCurve:
                AddCurve({current, points[i], points[i + 1], points[i + 2]});
                i += 2;
                break;
            case kPIVClose:
                AddLine(current, first);
                break;
        }
        current = operators[i] == kPIVClose ? first : points[i];
    }
    AddLine(current, first);
}

void LineBuilder::AddCurve(const Cubic& cubic) {
    curve_.clear();
    AppendFlattened(cubic, tolerance_, box_, curve_);
    Point from = cubic.p0;
    for (const Point to : curve_) {
        AddLine(from, to);
        from = to;
    }
}

void LineBuilder::AddLine(Point from, Point to) {
    const auto [low, high] = std::minmax(from.x, to.x);
    if (std::max(from.y, to.y) <= box_.top || std::min(from.y, to.y) >= box_.bottom) return;
    if (low >= box_.left && high <= box_.right) return AddBetweenSides(from, to);
    if (low >= box_.right) return;
    if (high <= box_.left) return AddBetweenSides({box_.left, from.y}, {box_.left, to.y});
    const double side = low < box_.left ? box_.left : box_.right;
    const Point cut = {side, CrossingOf(side, from.x, to.x, from.y, to.y)};
    AddLine(from, cut);
    AddLine(cut, to);
}

void LineBuilder::AddBetweenSides(Point from, Point to) {
    const Point a = CutIfFar(from, to);
    const Point b = CutIfFar(to, from);
    AddRounded(static_cast<std::int32_t>(RoundToSub(a.x) - left_), static_cast<std::int32_t>(RoundToSub(a.y) - top_),
               static_cast<std::int32_t>(RoundToSub(b.x) - left_), static_cast<std::int32_t>(RoundToSub(b.y) - top_));
}

Point LineBuilder::CutIfFar(Point end, Point other) const {
    if (end.y >= box_.top - kFar && end.y <= box_.bottom + kFar) return end;
    const double y = end.y < box_.top ? box_.top : box_.bottom;
    return {std::clamp(CrossingOf(y, end.y, other.y, end.x, other.x), box_.left, box_.right), y};
}

void LineBuilder::AddRounded(std::int32_t from_x, std::int32_t from_y, std::int32_t to_x, std::int32_t to_y) {
    const bool down = from_y < to_y;
    if (!down) {
        std::swap(from_x, to_x);
        std::swap(from_y, to_y);
    }
    if (from_y == to_y || to_y <= 0 || from_y >= height_) return;
    constexpr double kSlopeOne = std::int64_t{1} << kSlopeBits;
    const double slope = kSlopeOne * (static_cast<double>(to_x) - from_x) / (static_cast<double>(to_y) - from_y);
    lines_.push_back({static_cast<std::int64_t>(slope), from_x, from_y, to_x, to_y, down ? 1 : -1, 0});
}

}  // namespace

void AppendOutlineLines(std::span<const PIVPointType> operators, std::span<const Point> points, double tolerance,
                        const FillArea& area, std::vector<OutlineLine>& lines) {
    LineBuilder(area, tolerance, lines).AddOutline(operators, points);
}

}  // namespace refhost
