#include "tool/svg_writer.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <utility>

#include "base/narrow.h"
#include "tool/number_text.h"
#include "tool/outline.h"
#include "tool/outline_measure.h"

namespace vrltool {
namespace {

/// From the origin, or from where the shapes begin before it.
M_FloatRect CanvasAround(const std::vector<ShapeRecord>& records) {
    M_FloatRect canvas = {0, 0, 1, 1};  // one without size would turn the drawing off
    for (const ShapeRecord& record : records) {
        const M_FloatRect bounds = TightBounds(OutlineOf(*record.shape));
        canvas = {std::min(canvas.left, std::floor(bounds.left)), std::min(canvas.top, std::floor(bounds.top)),
                  std::max(canvas.right, std::ceil(bounds.right)), std::max(canvas.bottom, std::ceil(bounds.bottom))};
    }
    return canvas;
}

void AppendAttribute(const char* name, std::initializer_list<double> numbers, std::string& text) {
    text.append(" ").append(name);
    const char* separator = "=\"";
    for (const double number : numbers) {
        text.append(std::exchange(separator, " "));
        AppendNumber(number, text);
    }
    text.append("\"");
}

void AppendPoint(const char* lead, const Point& point, std::string& text) {
    text.append(lead);
    AppendNumber(NarrowToFloat(point.x), text);
    text.append(",");
    AppendNumber(NarrowToFloat(point.y), text);
}

bool IsStraight(const Vertex& from, const Vertex& to) { return from.out == from.anchor && to.in == to.anchor; }

void AppendSegment(const Vertex& from, const Vertex& to, std::string& text) {
    if (IsStraight(from, to)) return AppendPoint(" L", to.anchor, text);
    AppendPoint(" C", from.out, text);
    AppendPoint(" ", to.in, text);
    AppendPoint(" ", to.anchor, text);
}

/// Z draws the closing segment of a closed outline where that is straight.
void AppendSubpath(const Outline& outline, std::string& text) {
    const std::vector<Vertex>& vertices = outline.vertices;
    AppendPoint("M", vertices.front().anchor, text);
    for (std::size_t i = 1; i < vertices.size(); ++i) AppendSegment(vertices[i - 1], vertices[i], text);
    if (!outline.closed) return;
    if (!IsStraight(vertices.back(), vertices.front())) AppendSegment(vertices.back(), vertices.front(), text);
    text.append(" Z");
}

}  // namespace

void WriteSvgShapes(const std::vector<ShapeRecord>& records, const ShapeFileExtras& extras, const TextSink& sink) {
    const auto [left, top, right, bottom] = extras.canvas ? *extras.canvas : CanvasAround(records);
    std::string text = "<svg xmlns=\"http://www.w3.org/2000/svg\"";
    AppendAttribute("width", {right - left}, text);
    AppendAttribute("height", {bottom - top}, text);
    AppendAttribute("viewBox", {left, top, right - left, bottom - top}, text);
    text.append(" overflow=\"visible\">\n<path fill-rule=\"evenodd\" d=\"");
    const char* separator = "";
    for (const ShapeRecord& record : records) {
        text.append(std::exchange(separator, "\n"));
        AppendSubpath(OutlineOf(*record.shape), text);
        HandOver(text, sink);
    }
    sink(text.append("\"/>\n</svg>\n"));
}

std::string WriteSvgShapes(const std::vector<ShapeRecord>& records, const ShapeFileExtras& extras) {
    return WholeText([&](const TextSink& sink) { WriteSvgShapes(records, extras, sink); });
}

}  // namespace vrltool
