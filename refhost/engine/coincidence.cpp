#include "refhost/engine/coincidence.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "refhost/engine/box_tree.h"
#include "refhost/engine/flat_chain.h"
#include "refhost/engine/point_math.h"

namespace refhost {
namespace {

constexpr double kTouchOnGrid = 1.5 / kGridUnitsPerPixel;  // pixels
constexpr double kTouchOfInput = 2.4e-7;                   // of the coordinates: two steps of single precision

Point ToPoint(GridPoint p) { return {double{1} * p.x, double{1} * p.y}; }
bool LiesBeside(const GridSegment& segment, GridPoint p, double reach);
bool GoesOn(const GridSegment& before, const GridSegment& after);

}  // namespace

double TouchDistance(double largest_coordinate) { return kTouchOnGrid + kTouchOfInput * largest_coordinate; }

std::vector<Touch> FindTouches(std::span<const GridSegment> segments, std::span<const std::uint32_t> candidates, double reach,
                               const PassingTest& test) {
    std::vector<GridBox> boxes;
    boxes.reserve(candidates.size());
    const auto margin = static_cast<std::int32_t>(std::ceil(0.5 * reach));  // of either box
    for (const std::uint32_t i : candidates) {
        const GridBox box = BoxOf(segments[i].from, segments[i].to);
        boxes.push_back({box.left - margin, box.top - margin, box.right + margin, box.bottom + margin});
    }
    std::vector<Touch> touches;
    const auto lead_through = [&](std::uint32_t i, GridPoint p) {
        if (!LiesBeside(segments[i], p, reach)) return;
        const double parameter = test(i, p);
        if (parameter >= 0) touches.push_back({i, parameter, p});
    };
    BoxTree(boxes.size(), [&](std::size_t k) { return boxes[k]; }).ForEachPair([&](std::size_t a, std::size_t b) {
        const std::uint32_t i = candidates[a];
        const std::uint32_t j = candidates[b];
        if (j == i + 1 && GoesOn(segments[i], segments[j])) return;
        for (const GridPoint p : {segments[j].from, segments[j].to}) lead_through(i, p);
        for (const GridPoint p : {segments[i].from, segments[i].to}) lead_through(j, p);
    });
    const auto key = [](const Touch& touch) { return std::tuple(touch.segment, touch.parameter, touch.at.x, touch.at.y); };
    std::sort(touches.begin(), touches.end(), [&](const Touch& a, const Touch& b) { return key(a) < key(b); });
    const auto same = [&](const Touch& a, const Touch& b) { return key(a) == key(b); };
    touches.erase(std::unique(touches.begin(), touches.end(), same), touches.end());
    return touches;
}

namespace {

bool LiesBeside(const GridSegment& segment, GridPoint p, double reach) {
    const Point span = ToPoint(segment.to) - ToPoint(segment.from);
    const Point way = ToPoint(p) - ToPoint(segment.from);
    const double along = Dot(way, span);
    const double square = Dot(span, span);
    const double beside = Cross(way, span);
    return along > 0 && along < square && beside * beside <= reach * reach * square;
}

// Most neighbours only meet in their common end.
bool GoesOn(const GridSegment& before, const GridSegment& after) {
    return before.to == after.from &&
           Dot(ToPoint(before.to) - ToPoint(before.from), ToPoint(after.to) - ToPoint(after.from)) >= 0;
}

}  // namespace
}  // namespace refhost
