#include "tool/mark_painter.h"

#include <algorithm>
#include <cmath>

#include "api/vrl.h"
#include "tool/world_rows.h"

namespace vrltool {
namespace {

constexpr std::size_t kMostVertices = 20000;  // rendered at once: a chunk's mask stays near where its figures are

Vertex Corner(const Point& point) { return {point, point, point}; }

/// Puts the handles of straight legs at their thirds: evenly paced, such a leg is drawn in one piece.
void PaceStraightLegs(Outline& outline) {
    Vertex* from = &outline.vertices.back();
    for (Vertex& to : outline.vertices) {
        if (from->out == from->anchor && to.in == to.anchor) {
            from->out = Between(from->anchor, to.anchor, 1.0 / 3);
            to.in = Between(from->anchor, to.anchor, 2.0 / 3);
        }
        from = &to;
    }
}

/// The curve moved `distance` to its left: each point across the direction of the control polygon there. Good enough where
/// the distance is a pixel and the curve turns by less than half a turn.
Cubic MovedLeft(const Cubic& p, double distance) {
    const auto moved = [&](const Point& point, std::initializer_list<std::pair<int, int>> legs) {
        for (const auto& [from, to] : legs) {
            const Point left = LeftOf(p[static_cast<std::size_t>(from)], p[static_cast<std::size_t>(to)]);
            if (left != Point{0, 0}) return Point{point.x + left.x * distance, point.y + left.y * distance};
        }
        return point;
    };
    return {moved(p[0], {{0, 1}, {0, 2}, {0, 3}}), moved(p[1], {{0, 2}, {0, 3}}), moved(p[2], {{1, 3}, {0, 3}}),
            moved(p[3], {{2, 3}, {1, 3}, {0, 3}})};
}

}  // namespace

void MarkPainter::Line(const Point& from, const Point& to, double width) {
    const Point left = LeftOf(from, to);
    const double x = left.x * width / 2, y = left.y * width / 2;
    const Vertex ring[] = {Corner({from.x + x, from.y + y}), Corner({to.x + x, to.y + y}), Corner({to.x - x, to.y - y}),
                           Corner({from.x - x, from.y - y})};
    AddRing(ring);
}

void MarkPainter::Curve(const Cubic& curve, double width) {
    if (curve[0] == curve[1] && curve[2] == curve[3]) return Line(curve[0], curve[3], width);
    const auto [first, second] = SplitAt(curve, 0.5);
    Stroke(first, width);
    Stroke(second, width);
}

void MarkPainter::Stroke(const Cubic& curve, double width) {
    const Cubic left = MovedLeft(curve, width / 2), right = MovedLeft(curve, -width / 2);
    const Vertex ring[] = {
        {left[0], left[0], left[1]}, {left[2], left[3], left[3]}, {right[3], right[3], right[2]}, {right[1], right[0], right[0]}};
    AddRing(ring);
}

void MarkPainter::Square(const Point& centre, double side) {
    Line({centre.x - side / 2, centre.y}, {centre.x + side / 2, centre.y}, side);
}

void MarkPainter::Dot(const Point& centre, double diameter) {
    constexpr double kQuarterHandle = 0.5523;  // of a unit circle's quarter: deviates by 0.0003 at most
    const double r = diameter / 2, h = r * kQuarterHandle;
    const auto [x, y] = centre;
    const Vertex ring[] = {{{x - h, y - r}, {x, y - r}, {x + h, y - r}},
                           {{x + r, y - h}, {x + r, y}, {x + r, y + h}},
                           {{x + h, y + r}, {x, y + r}, {x - h, y + r}},
                           {{x - r, y + h}, {x - r, y}, {x - r, y - h}}};
    AddRing(ring);
}

/// All rings run clockwise: where they overlap their windings must not cancel.
void MarkPainter::AddRing(std::span<const Vertex> ring) {
    const Vertex& start = ring.front();
    ring_starts_.push_back(Corner(start.anchor));
    vertices_.push_back({start.anchor, start.anchor, start.out});
    vertices_.insert(vertices_.end(), ring.begin() + 1, ring.end());
    vertices_.push_back({start.in, start.anchor, start.anchor});
    if (vertices_.size() > kMostVertices) Finish();
}

void MarkPainter::Finish() {
    const M_LRect place = CoveredPixels();
    Outline outline = {std::move(vertices_), true};
    outline.vertices.insert(outline.vertices.end(), ring_starts_.rbegin(), ring_starts_.rend());
    vertices_.clear();
    ring_starts_.clear();
    if (place.left >= place.right || place.top >= place.bottom) return;

    PaceStraightLegs(outline);
    GW_UnoBuffer mask(place.right - place.left, place.bottom - place.top, 8);
    const VRL_MaskParams draft;  // figures that overlap need no resolving: all run the same way
    const M_Matrix3 to_mask = {{{1, 0, 0}, {0, 1, 0}, {static_cast<double>(-place.left), static_cast<double>(-place.top), 1}}};
    library_.Check(VRL_MaskWithShape(MakeShape(outline).get(), &draft, &to_mask, &mask, nullptr), "the overlay");
    Blend(mask, place);
}

M_LRect MarkPainter::CoveredPixels() const {
    M_FloatRect bounds = {static_cast<double>(picture_.width), static_cast<double>(picture_.height), 0, 0};
    for (const Vertex& vertex : vertices_) {
        for (const Point& p : {vertex.in, vertex.anchor, vertex.out}) {
            bounds = {std::min(bounds.left, p.x), std::min(bounds.top, p.y), std::max(bounds.right, p.x),
                      std::max(bounds.bottom, p.y)};
        }
    }
    const auto inside = [](double value, std::int32_t side) {
        return static_cast<std::int32_t>(std::clamp(value, 0.0, static_cast<double>(side)));
    };
    return {inside(std::floor(bounds.left), picture_.width), inside(std::floor(bounds.top), picture_.height),
            inside(std::ceil(bounds.right), picture_.width), inside(std::ceil(bounds.bottom), picture_.height)};
}

void MarkPainter::Blend(const GW_UnoBuffer& mask, const M_LRect& place) {
    constexpr std::uint32_t kMax = SampleTraits<GW_Pixel8>::kMax;
    const auto blend = [](GW_Pixel8& sample, std::uint32_t colour, std::uint32_t level) {
        sample = static_cast<GW_Pixel8>((sample * (kMax - level) + colour * level + kMax / 2) / kMax);
    };
    for (std::int32_t y = 0; y < mask.height; ++y) {
        const GW_Pixel8* const levels = mask.Row<GW_Pixel8>(y);
        GW_Pixel8* pixel = &RowOf<GW_Pixel8>(picture_, place.top + y)[static_cast<std::size_t>(place.left * kComponents)];
        for (std::int32_t x = 0; x < mask.width; ++x, pixel += kComponents) {
            if (levels[x] == 0) continue;
            blend(pixel[1], colour_.red, levels[x]);
            blend(pixel[2], colour_.green, levels[x]);
            blend(pixel[3], colour_.blue, levels[x]);
        }
    }
}

}  // namespace vrltool
