#include "tests/support/exact_coverage.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "tests/support/offset_distance.h"

namespace support {
namespace {

using refhost::Point;

constexpr double kTolerance = 0.0002;  // pixels between curve and chord
constexpr double kLinesPerRow = 1024;

struct Edge {
    Point top, bottom;
    int winding;

    double XAt(double y) const { return top.x + (y - top.y) / (bottom.y - top.y) * (bottom.x - top.x); }
};

std::vector<Edge> EdgesOf(const refhost::PathView& path) {
    std::vector<Edge> edges;
    for (const auto& [from, to] : Chords(path, kTolerance)) {
        if (from.y < to.y) edges.push_back({from, to, 1});
        if (from.y > to.y) edges.push_back({to, from, -1});
    }
    return edges;
}

/// Adds the length of [from, to) within each pixel of a row, times `weight`.
void AddSpan(double from, double to, double weight, double* row, int columns) {
    from = std::clamp(from, 0.0, static_cast<double>(columns));
    to = std::clamp(to, 0.0, static_cast<double>(columns));
    for (int x = static_cast<int>(from); x < to; ++x)
        row[x] += weight * (std::min(to, x + 1.0) - std::max(from, static_cast<double>(x)));
}

/// The spans along one line; `weight` is the height it stands for.
void AddLine(const std::vector<Edge>& edges, double y, double weight, double left, double* row, int columns) {
    std::vector<std::pair<double, int>> crossings;
    for (const Edge& edge : edges)
        if (edge.top.y <= y && y < edge.bottom.y) crossings.emplace_back(edge.XAt(y) - left, edge.winding);
    std::sort(crossings.begin(), crossings.end());
    int winding = 0;
    for (std::size_t i = 0; i + 1 < crossings.size(); ++i) {
        winding += crossings[i].second;
        if (winding != 0) AddSpan(crossings[i].first, crossings[i + 1].first, weight, row, columns);
    }
}

void AddRow(const std::vector<Edge>& edges, double y, double left, double* row, int columns) {
    std::vector<double> stops = {y, y + 1};
    for (const Edge& edge : edges)
        for (const double end : {edge.top.y, edge.bottom.y})
            if (end > y && end < y + 1) stops.push_back(end);
    std::sort(stops.begin(), stops.end());
    for (std::size_t i = 0; i + 1 < stops.size(); ++i) {
        const double height = stops[i + 1] - stops[i];
        const int lines = static_cast<int>(std::ceil(height * kLinesPerRow));
        for (int line = 0; line < lines; ++line)
            AddLine(edges, stops[i] + height * (line + 0.5) / lines, 255 * height / lines, left, row, columns);
    }
}

}  // namespace

std::vector<double> ExactCoverage(const refhost::PathView& path, const M_LRect& box) {
    const int columns = box.right - box.left;
    const std::vector<Edge> edges = EdgesOf(path);
    std::vector<double> coverage(static_cast<std::size_t>(columns) * static_cast<std::size_t>(box.bottom - box.top));
    for (int y = box.top; y < box.bottom; ++y) {
        std::vector<Edge> in_row;
        for (const Edge& edge : edges)
            if (edge.top.y < y + 1 && edge.bottom.y > y) in_row.push_back(edge);
        AddRow(in_row, y, box.left, &coverage[static_cast<std::size_t>(y - box.top) * static_cast<std::size_t>(columns)],
               columns);
    }
    return coverage;
}

}  // namespace support
