#include "tool/svg_shapes.h"

#include <algorithm>
#include <optional>
#include <string>

#include "tool/failure.h"
#include "tool/number_scanner.h"
#include "tool/path_builder.h"
#include "tool/path_data.h"

namespace vrltool {
namespace {

using Outlines = std::vector<Outline>;

Outlines PathOutlines(const SvgAttributes& attributes) {
    const std::string_view data = attributes.Text("d");
    if (data == "none") return {};
    try {
        return ParsePathData(data);
    } catch (const Failure& failure) {
        throw Failure(std::string("path data ") + failure.what());
    }
}

struct Radii {
    double rx, ry;
};

/// The radii of a rect or an ellipse; where only one is given the other one equals it.
Radii ReadRadii(const SvgAttributes& attributes) {
    const std::optional<double> rx = attributes.Size("rx", attributes.Viewport().width);
    const std::optional<double> ry = attributes.Size("ry", attributes.Viewport().height);
    return {rx.value_or(ry.value_or(0)), ry.value_or(rx.value_or(0))};
}

void QuarterTurn(const Radii& radii, const Point& end, PathBuilder& path) {
    path.ArcTo({radii.rx, radii.ry, 0}, false, true, end);
}

/// Clockwise on screen from the left end of the top edge, where SVG starts a rectangle.
Outlines RectOutlines(const SvgAttributes& attributes) {
    const double left = attributes.Horizontal("x");
    const double top = attributes.Vertical("y");
    const double width = attributes.Size("width", attributes.Viewport().width).value_or(0);
    const double height = attributes.Size("height", attributes.Viewport().height).value_or(0);
    Radii corner = ReadRadii(attributes);
    if (width == 0 || height == 0) return {};
    corner = {std::min(corner.rx, width / 2), std::min(corner.ry, height / 2)};

    const double right = left + width, bottom = top + height;
    const bool round = corner.rx > 0 && corner.ry > 0;
    if (!round) corner = {0, 0};
    PathBuilder path;
    path.MoveTo({left + corner.rx, top});
    const auto side = [&](const Point& end, const Point& after_corner) {
        if (end != path.Current()) path.LineTo(end);  // nothing is left of a side between two full corners
        if (round) QuarterTurn(corner, after_corner, path);
    };
    side({right - corner.rx, top}, {right, top + corner.ry});
    side({right, bottom - corner.ry}, {right - corner.rx, bottom});
    side({left + corner.rx, bottom}, {left, bottom - corner.ry});
    side({left, top + corner.ry}, {left + corner.rx, top});
    path.Close();
    return path.Take();
}

/// Clockwise on screen from the rightmost point, where SVG starts an ellipse.
Outlines EllipseOutlines(const Point& center, const Radii& radii) {
    if (radii.rx == 0 || radii.ry == 0) return {};
    PathBuilder path;
    path.MoveTo({center.x + radii.rx, center.y});
    QuarterTurn(radii, {center.x, center.y + radii.ry}, path);
    QuarterTurn(radii, {center.x - radii.rx, center.y}, path);
    QuarterTurn(radii, {center.x, center.y - radii.ry}, path);
    QuarterTurn(radii, {center.x + radii.rx, center.y}, path);
    path.Close();
    return path.Take();
}

Point Center(const SvgAttributes& attributes) { return {attributes.Horizontal("cx"), attributes.Vertical("cy")}; }

Outlines CircleOutlines(const SvgAttributes& attributes) {
    const double radius = attributes.Size("r", attributes.Viewport().Diagonal()).value_or(0);
    return EllipseOutlines(Center(attributes), {radius, radius});
}

Outlines LineOutlines(const SvgAttributes& attributes) {
    PathBuilder path;
    path.MoveTo({attributes.Horizontal("x1"), attributes.Vertical("y1")});
    path.LineTo({attributes.Horizontal("x2"), attributes.Vertical("y2")});
    return path.Take();
}

std::vector<Point> ReadPoints(std::string_view text) {
    NumberScanner scan(text);
    std::vector<Point> points;
    while (!scan.AtEnd()) {
        if (!points.empty()) scan.SkipComma();
        const double x = scan.Number();
        scan.SkipComma();
        points.push_back({x, scan.Number()});
    }
    return points;
}

Outlines PolyOutlines(const SvgAttributes& attributes, bool closed) {
    try {
        PathBuilder path;
        const std::vector<Point> points = ReadPoints(attributes.Text("points"));
        for (std::size_t i = 0; i < points.size(); ++i) i == 0 ? path.MoveTo(points[i]) : path.LineTo(points[i]);
        if (closed) path.Close();
        return path.Take();
    } catch (const Failure& failure) {
        throw Failure(std::string("points: ") + failure.what());
    }
}

struct SvgShape {
    std::string_view tag;
    Outlines (*outlines)(const SvgAttributes& attributes);
};

constexpr SvgShape kSvgShapes[] = {
    {"path", PathOutlines},
    {"rect", RectOutlines},
    {"circle", CircleOutlines},
    {"ellipse", [](const SvgAttributes& attributes) { return EllipseOutlines(Center(attributes), ReadRadii(attributes)); }},
    {"line", LineOutlines},
    {"polyline", [](const SvgAttributes& attributes) { return PolyOutlines(attributes, false); }},
    {"polygon", [](const SvgAttributes& attributes) { return PolyOutlines(attributes, true); }},
};

const SvgShape* FindSvgShape(std::string_view tag) {
    const auto found =
        std::find_if(std::begin(kSvgShapes), std::end(kSvgShapes), [&](const SvgShape& s) { return s.tag == tag; });
    return found == std::end(kSvgShapes) ? nullptr : found;
}

}  // namespace

bool IsSvgShape(std::string_view tag) { return FindSvgShape(tag) != nullptr; }

std::vector<Outline> SvgShapeOutlines(std::string_view tag, const SvgAttributes& attributes) {
    return FindSvgShape(tag)->outlines(attributes);
}

}  // namespace vrltool
