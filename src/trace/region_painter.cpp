#include "trace/region_painter.h"

#include <cstddef>

namespace {

void MarkSteps(const RPGraph& graph, const RPEdge& edge, const std::vector<std::uint8_t>& colours, RPPixelMap& pixels);
void FillRow(std::uint8_t* row, std::int32_t width);

}  // namespace

RPPixelMap PaintRegions(const RPTrace& trace, const std::vector<std::uint8_t>& colours) {
    RPPixelMap pixels(trace.width, trace.height);
    for (const RPEdge& edge : trace.graph->edges) MarkSteps(*trace.graph, edge, colours, pixels);
    for (std::int32_t y = 0; y < trace.height; ++y) FillRow(pixels.Row(y), trace.width);
    return pixels;
}

namespace {

// Sets the pixels to the right of upright steps, where the spans of a row begin.
void MarkSteps(const RPGraph& graph, const RPEdge& edge, const std::vector<std::uint8_t>& colours, RPPixelMap& pixels) {
    const auto colour = [&](std::int32_t region) {
        return region == kNone ? RPPixelMap::kOutside : colours[static_cast<std::size_t>(region)];
    };
    const std::uint8_t right_of_up = colour(edge.region_b), right_of_down = colour(edge.region_a);
    std::int32_t x = edge.start_x, y = edge.start_y;
    for (std::int32_t i = 0; i < edge.step_count; ++i) {
        const RPDirection d = graph.Step(edge, i);
        if (d == kUp) pixels.Row(y - 1)[x] = right_of_up;
        if (d == kDown) pixels.Row(y)[x] = right_of_down;
        x += StepX(d);
        y += StepY(d);
    }
}

// Pixels that were not set continue the span of the pixel before.
void FillRow(std::uint8_t* row, std::int32_t width) {
    for (std::int32_t x = 1; x < width; ++x) {
        if (row[x] == RPPixelMap::kOutside) row[x] = row[x - 1];
    }
}

}  // namespace
