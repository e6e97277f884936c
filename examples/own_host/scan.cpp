#include "scan.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr int kChords = 24;  // a curve
constexpr int kLines = 16;   // a pixel row; along a line coverage is exact

using Point = M_Vector2T<double>;

struct Edge {
    Point from, to;
};

struct Crossing {
    double x;
    int direction;  // 1 downwards, -1 upwards
};

Point OnCurve(Point p0, Point p1, Point p2, Point p3, double t) {
    const double s = 1 - t;
    const auto blend = [&](double a, double b, double c, double d) {
        return s * s * s * a + 3 * s * s * t * b + 3 * s * t * t * c + t * t * t * d;
    };
    return {blend(p0.x, p1.x, p2.x, p3.x), blend(p0.y, p1.y, p2.y, p3.y)};
}

// A subpath that nobody closed is filled as if it were.
std::vector<Edge> EdgesOf(std::span<const M_Vector2T<float>> points, const PIVPointType* operators) {
    std::vector<Edge> edges;
    Point start = {0, 0}, last = {0, 0};
    const auto line_to = [&](Point to) { edges.push_back({std::exchange(last, to), to}); };
    const auto at = [&](std::size_t i) { return Point{points[i].x, points[i].y}; };
    for (std::size_t i = 0; i < points.size(); ++i) {
        switch (operators[i]) {
            case kPIVMove:
                line_to(start);
                start = last = at(i);
                break;
            case kPIVCurve: {
                const Point from = last;
                for (int k = 1; k <= kChords; ++k) line_to(OnCurve(from, at(i), at(i + 1), at(i + 2), 1.0 * k / kChords));
                i += 2;
                break;
            }
            default:  // a line, or the line that closes
                line_to(at(i));
        }
    }
    line_to(start);
    return edges;
}

std::vector<Crossing> CrossingsAt(double y, const std::vector<Edge>& edges) {
    std::vector<Crossing> crossings;
    for (const auto& [a, b] : edges) {
        if ((a.y <= y) == (b.y <= y)) continue;
        crossings.push_back({a.x + (y - a.y) / (b.y - a.y) * (b.x - a.x), a.y < b.y ? 1 : -1});
    }
    std::ranges::sort(crossings, {}, &Crossing::x);
    return crossings;
}

void AddSpan(double from, double to, std::vector<double>& row) {
    from = std::max(from, 0.0);
    to = std::min(to, static_cast<double>(row.size()));
    for (double x = std::floor(from); x < to; ++x) {
        row[static_cast<std::size_t>(x)] += (std::min(x + 1, to) - std::max(x, from)) / kLines;
    }
}

}  // namespace

std::vector<std::uint8_t> Scan(std::span<const M_Vector2T<float>> points, const PIVPointType* operators,
                               const PIVDeviceRect& box) {
    const std::vector<Edge> edges = EdgesOf(points, operators);
    std::vector<std::uint8_t> coverage;
    for (std::int32_t y = box.top; y < box.bottom; ++y) {
        std::vector<double> row(static_cast<std::size_t>(box.right - box.left));
        for (int line = 0; line < kLines; ++line) {
            int winding = 0;
            double from = 0;
            for (const Crossing& crossing : CrossingsAt(y + (line + 0.5) / kLines, edges)) {
                if (winding == 0) from = crossing.x;
                winding += crossing.direction;
                if (winding == 0) AddSpan(from - box.left, crossing.x - box.left, row);
            }
        }
        for (const double share : row) coverage.push_back(static_cast<std::uint8_t>(std::lround(std::min(share, 1.0) * 255)));
    }
    return coverage;
}
