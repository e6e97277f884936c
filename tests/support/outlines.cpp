#include "tests/support/outlines.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include <cmath>
#include <cstddef>
#include <memory>
#include <numbers>
#include <random>

#include "base/narrow.h"

namespace support {
namespace {

using refhost::Point;

constexpr double kTurn = 2 * std::numbers::pi;

Point Polar(double x, double y, double radius, double angle) {
    return {x + radius * std::cos(angle), y + radius * std::sin(angle)};
}

/// Radii round a blob: a few slow waves, equal at both ends.
std::vector<double> BlobRadii(double radius, int vertices, std::mt19937& random) {
    std::uniform_real_distribution<double> phase(0, kTurn);
    std::vector<double> radii(static_cast<std::size_t>(vertices), radius);
    for (int wave = 2; wave <= 7; ++wave) {
        const double start = phase(random);
        for (int i = 0; i < vertices; ++i)
            radii[static_cast<std::size_t>(i)] += 0.15 * radius / wave * std::sin(start + wave * kTurn * i / vertices);
    }
    return radii;
}

Outline RoundLoop(double x, double y, const std::vector<double>& radii) {
    std::vector<Point> points;
    for (std::size_t i = 0; i < radii.size(); ++i)
        points.push_back(Polar(x, y, radii[i], kTurn * static_cast<double>(i) / static_cast<double>(radii.size())));
    return SmoothLoop(points);
}

/// What the decomposing callbacks write to.
struct Pen {
    Outline outline;
    double x, y, scale;
    Point at{};

    Point Place(const FT_Vector* p) const {
        return {x + scale * static_cast<double>(p->x), y - scale * static_cast<double>(p->y)};
    }
    int CurveTo(Point control1, Point control2, Point end) {
        outline.Curve(control1, control2, end);
        at = end;
        return 0;
    }
};

int MoveTo(const FT_Vector* to, void* user) {
    Pen& pen = *static_cast<Pen*>(user);
    pen.at = pen.Place(to);
    pen.outline.Move(pen.at.x, pen.at.y);
    return 0;
}

int LineTo(const FT_Vector* to, void* user) {
    Pen& pen = *static_cast<Pen*>(user);
    pen.at = pen.Place(to);
    pen.outline.Line(pen.at.x, pen.at.y);
    return 0;
}

int QuadraticTo(const FT_Vector* control, const FT_Vector* to, void* user) {
    Pen& pen = *static_cast<Pen*>(user);
    const Point middle = pen.Place(control);
    const Point end = pen.Place(to);
    const auto third = [&](Point p) { return Point{(p.x + 2 * middle.x) / 3, (p.y + 2 * middle.y) / 3}; };
    return pen.CurveTo(third(pen.at), third(end), end);
}

int CubicTo(const FT_Vector* control1, const FT_Vector* control2, const FT_Vector* to, void* user) {
    Pen& pen = *static_cast<Pen*>(user);
    return pen.CurveTo(pen.Place(control1), pen.Place(control2), pen.Place(to));
}

}  // namespace

void Outline::Add(PIVPointType operation, double x, double y) {
    points_.push_back({NarrowToFloat(x), NarrowToFloat(y)});
    operators_.push_back(operation);
}

void Outline::Curve(Point control1, Point control2, Point end) {
    for (const Point point : {control1, control2, end}) Add(kPIVCurve, point.x, point.y);
}

void Outline::Close() {
    std::size_t first = points_.size() - 1;
    while (operators_[first] != kPIVMove) --first;
    points_.push_back(points_[first]);
    operators_.push_back(kPIVClose);
}

void Outline::Append(const Outline& other) {
    points_.insert(points_.end(), other.points_.begin(), other.points_.end());
    operators_.insert(operators_.end(), other.operators_.begin(), other.operators_.end());
}

Outline Outline::Reversed() const {
    Outline reversed;
    for (std::size_t end = points_.size(); end > 0;) {
        std::size_t first = end - 1;
        while (operators_[first] != kPIVMove) --first;
        if (operators_[end - 1] == kPIVClose) --end;
        for (std::size_t i = end; i > first; --i) {
            reversed.points_.push_back(points_[i - 1]);
            reversed.operators_.push_back(i == end ? kPIVMove : operators_[i]);
        }
        reversed.Close();
        end = first;
    }
    return reversed;
}

Outline Outline::Shifted(double x, double y) const {
    Outline shifted = *this;
    for (auto& point : shifted.points_)
        point = {NarrowToFloat(static_cast<double>(point.x) + x), NarrowToFloat(static_cast<double>(point.y) + y)};
    return shifted;
}

Outline Circle(double x, double y, double radius) {
    const double arm = radius * 4 / 3 * (std::numbers::sqrt2 - 1);
    Outline circle;
    circle.Move(x + radius, y);
    circle.Curve({x + radius, y + arm}, {x + arm, y + radius}, {x, y + radius});
    circle.Curve({x - arm, y + radius}, {x - radius, y + arm}, {x - radius, y});
    circle.Curve({x - radius, y - arm}, {x - arm, y - radius}, {x, y - radius});
    circle.Curve({x + arm, y - radius}, {x + radius, y - arm}, {x + radius, y});
    circle.Close();
    return circle;
}

Outline Polygon(const std::vector<Point>& corners) {
    Outline polygon;
    polygon.Move(corners[0].x, corners[0].y);
    for (std::size_t i = 1; i < corners.size(); ++i) polygon.Line(corners[i].x, corners[i].y);
    polygon.Close();
    return polygon;
}

Outline Rectangle(double left, double top, double right, double bottom) {
    return Polygon({{left, top}, {right, top}, {right, bottom}, {left, bottom}});
}

Outline SmoothLoop(const std::vector<Point>& points) {
    const std::size_t count = points.size();
    const auto arm = [&](std::size_t i) {
        const Point before = points[(i + count - 1) % count];
        const Point after = points[(i + 1) % count];
        return Point{(after.x - before.x) / 6, (after.y - before.y) / 6};
    };
    Outline loop;
    loop.Move(points[0].x, points[0].y);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t next = (i + 1) % count;
        loop.Curve({points[i].x + arm(i).x, points[i].y + arm(i).y}, {points[next].x - arm(next).x, points[next].y - arm(next).y},
                   points[next]);
    }
    loop.Close();
    return loop;
}

Outline Blob(double x, double y, double radius, int vertices, std::uint32_t seed) {
    std::mt19937 random(seed);
    return RoundLoop(x, y, BlobRadii(radius, vertices, random));
}

Outline TracedShape(double x, double y, double radius, int vertices, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<double> radii = BlobRadii(radius, vertices, random);
    std::uniform_real_distribution<double> jitter(0, 1);
    for (double& distance : radii) distance -= jitter(random);
    return RoundLoop(x, y, radii);
}

Outline Star(double x, double y, double radius, int points, int step) {
    std::vector<Point> corners;
    for (int i = 0; i < points; ++i) corners.push_back(Polar(x, y, radius, kTurn * i * step / points));
    return Polygon(corners);
}

Outline Scribble(double left, double top, double size, int vertices, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> along(0.1 * size, 0.9 * size);
    std::vector<Point> points;
    for (int i = 0; i < vertices; ++i) {
        const double x = left + along(random);
        points.push_back({x, top + along(random)});
    }
    return SmoothLoop(points);
}

Outline Glyph(const char* font_file, char32_t character, double x, double y, double size) {
    FT_Library library = nullptr;
    if (FT_Init_FreeType(&library) != 0) return {};
    const std::unique_ptr<FT_LibraryRec_, decltype(&FT_Done_FreeType)> library_owner(library, &FT_Done_FreeType);
    FT_Face face = nullptr;
    if (FT_New_Face(library, font_file, 0, &face) != 0) return {};
    const std::unique_ptr<FT_FaceRec_, decltype(&FT_Done_Face)> face_owner(face, &FT_Done_Face);
    if (FT_Load_Char(face, character, FT_LOAD_NO_SCALE) != 0) return {};
    Pen pen{{}, x, y, size / face->units_per_EM};
    const FT_Outline_Funcs callbacks{&MoveTo, &LineTo, &QuadraticTo, &CubicTo, 0, 0};
    FT_Outline_Decompose(&face->glyph->outline, &callbacks, &pen);
    return pen.outline;
}

}  // namespace support
