#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "refhost/engine/arrangement.h"

namespace refhost {

/// How far apart, in pixels on the grid, two sides of an outline may lie that were meant to run along one line: what their ends
/// move when they are rounded to single precision, near `largest_coordinate`, and then to the grid.
double TouchDistance(double largest_coordinate);

/// A segment, or what it stands for, passes an end of another one.
struct Touch {
    std::uint32_t segment;
    double parameter;  // on what the segment stands for, increasing along it
    GridPoint at;
};

/// Parameter at which what a segment stands for passes a grid point, negative when it does not touch it.
using PassingTest = std::function<double(std::uint32_t segment, GridPoint p)>;

/// Ends of segments that lie beside other ones, up to `reach` grid units from them, and pass `test`. By segment, then along it,
/// each once. Only segments named in `candidates` (in increasing order) take part.
///
/// Sides that cover each other enclose nothing, but after rounding they seldom run through the same points, and what lies between
/// them is then a part of the plane like any other, to which an offset adds its whole distance. With every segment led through
/// the points found here, such sides become chains of equal edges, which cancel.
std::vector<Touch> FindTouches(std::span<const GridSegment> segments, std::span<const std::uint32_t> candidates, double reach,
                               const PassingTest& test);

}  // namespace refhost
