#include "tool/overlay.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "refhost/shape/feather_points.h"
#include "tool/cubic.h"
#include "tool/failure.h"
#include "tool/mark_painter.h"
#include "tool/option_values.h"
#include "tool/outline_measure.h"
#include "tool/standard_stream.h"
#include "tool/world_rows.h"

namespace vrltool {
namespace {

constexpr Colour kOutlineColour = {220, 0, 50}, kSmoothColour = {0, 90, 220}, kCornerColour = {0, 0, 0},
                 kFeatherColour = {0, 140, 60};

std::int32_t ScaleFor(std::int32_t width, std::int32_t height, std::int32_t asked) {
    constexpr std::int32_t kComfortableSide = 1600, kMostByItself = 32;
    if (asked != 0) return asked;
    return std::clamp(kComfortableSide / std::max(width, height), 1, kMostByItself);
}

std::unique_ptr<GW_World> NewWorld(std::int32_t width, std::int32_t height, std::int32_t scale, const std::string& file) {
    if (std::max(width, height) > kMaxSide / scale) {
        throw Failure(OutputName(file) + ": the overlay would be larger than " + std::to_string(kMaxSide) + " pixels each way");
    }
    std::unique_ptr<GW_World> world(GW_World::New(width * scale, height * scale, 8, 0));
    if (!world) throw std::bad_alloc();
    return world;
}

/// Half way to white: whatever the picture holds, dark lines show on it.
GW_Pixel8 Dimmed(std::uint32_t sample) {
    constexpr std::uint32_t kMax = SampleTraits<GW_Pixel8>::kMax;
    return static_cast<GW_Pixel8>((sample + kMax + 1) / 2);
}

/// Fills `world` with blocks of `scale` times `scale` pixels; `colour_at(x, y)` gives the colour of a block.
template <class ColourAt>
void FillBlocks(GW_World& world, std::int32_t scale, ColourAt colour_at) {
    for (std::int32_t y = 0; y < world.height; ++y) {
        const std::span<GW_Pixel8> row = RowOf<GW_Pixel8>(world, y);
        if (y % scale != 0) {
            std::ranges::copy(RowOf<GW_Pixel8>(world, y - 1), row.begin());
            continue;
        }
        auto sample = row.begin();
        for (std::int32_t x = 0; x < world.width / scale; ++x) {
            const Colour colour = colour_at(x, y / scale);
            for (std::int32_t i = 0; i < scale; ++i) {
                for (const GW_Pixel8 part : {GW_Pixel8{255}, colour.red, colour.green, colour.blue}) *sample++ = part;
            }
        }
    }
}

/// The segments, the closing one of a closed outline included.
std::vector<Cubic> SegmentsOf(const Outline& outline) {
    std::vector<Cubic> segments;
    const std::size_t count = outline.vertices.size();
    for (std::size_t i = 0; i + (outline.closed ? 0 : 1) < count; ++i) {
        const Vertex& from = outline.vertices[i];
        const Vertex& to = outline.vertices[(i + 1) % count];
        segments.push_back({from.anchor, from.out, to.in, to.anchor});
    }
    return segments;
}

Outline Mapped(Outline outline, const Affine& placement) {
    for (Vertex& vertex : outline.vertices) {
        vertex = {placement(vertex.in), placement(vertex.anchor), placement(vertex.out)};
    }
    return outline;
}

/// Both handles lie on one line, to either side.
bool IsSmooth(const Vertex& vertex) {
    constexpr double kMostTurn = 0.02;  // radians
    const Point in = {vertex.anchor.x - vertex.in.x, vertex.anchor.y - vertex.in.y};
    const Point out = {vertex.out.x - vertex.anchor.x, vertex.out.y - vertex.anchor.y};
    const double cross = in.x * out.y - in.y * out.x, dot = in.x * out.x + in.y * out.y;
    return dot > 0 && std::abs(cross) <= kMostTurn * dot;
}

/// Sizes of what is drawn, in pixels of the overlay.
struct MarkSizes {
    double line, outline, handle, anchor;
};

/// An anchor covers a pixel of the picture, as far as that leaves it readable.
MarkSizes SizesFor(std::int32_t scale) {
    const double unit = std::clamp(scale / 3.0, 1.0, 2.0);
    return {0.8 * unit, 1.2 * unit, 2.4 * unit, 3.4 * unit};
}

/// The direction in which a curve leaves its start, turned left; zero for a curve that is a point.
Point LeftAtStart(const Cubic& p) {
    for (const Point& next : {p[1], p[2], p[3]}) {
        if (next != p[0]) return LeftOf(p[0], next);
    }
    return {0, 0};
}

/// Half way between the left sides of what arrives at a place and of what leaves it, as a corner between the two has it.
Point LeftBetween(const Cubic& arriving, const Cubic& leaving) {
    const Point back = LeftAtStart({arriving[3], arriving[2], arriving[1], arriving[0]}), forward = LeftAtStart(leaving);
    const Point sum = {forward.x - back.x, forward.y - back.y};
    const double length = Distance({0, 0}, sum);
    return length == 0 ? forward : Point{sum.x / length, sum.y / length};
}

/// Where a feather point sits on its outline, and where its radius takes the edge: outwards when it is positive, measured in
/// the space whose width is divided by the pixel aspect ratio. No value beyond the outline's end.
std::optional<std::pair<Point, Point>> FeatherSpan(const refhost::FeatherPoint& feather, const Outline& outline,
                                                   double pixel_aspect) {
    const std::vector<Cubic> segments = SegmentsOf(Mapped(outline, Affine{1 / pixel_aspect, 0, 0, 1, 0, 0}));
    const auto index = static_cast<std::size_t>(std::max(feather.position, 0.0));
    if (index >= segments.size()) return std::nullopt;
    auto [arriving, leaving] = SplitAt(segments[index], feather.position - static_cast<double>(index));
    const Point at = leaving[0];
    if (at == segments[index][0] && (outline.closed || index > 0)) {
        arriving = segments[(index + segments.size() - 1) % segments.size()];
    }
    const Point left = LeftBetween(arriving, leaving);
    const double radius = static_cast<double>(feather.radius) * (SignedArea(outline) < 0 ? -1 : 1);
    return std::pair(Point{at.x * pixel_aspect, at.y}, Point{(at.x + left.x * radius) * pixel_aspect, at.y + left.y * radius});
}

/// Where shapes are drawn, and how.
struct Canvas {
    Affine placement;  // from the shapes' pixels
    MarkSizes sizes;
    LibrarySession& library;
    GW_World& picture;

    MarkPainter Painter(const Colour& colour) const { return {colour, library, picture}; }
};

void DrawOutlines(const std::vector<ShapeRecord>& records, const Canvas& canvas) {
    MarkPainter painter = canvas.Painter(kOutlineColour);
    for (const ShapeRecord& record : records) {
        for (const Cubic& segment : SegmentsOf(Mapped(OutlineOf(*record.shape), canvas.placement))) {
            painter.Curve(segment, canvas.sizes.outline);
        }
    }
    painter.Finish();
}

void DrawHandles(const std::vector<ShapeRecord>& records, const Canvas& canvas) {
    MarkPainter painter = canvas.Painter(kSmoothColour);
    for (const ShapeRecord& record : records) {
        for (const Vertex& vertex : Mapped(OutlineOf(*record.shape), canvas.placement).vertices) {
            for (const Point& handle : {vertex.in, vertex.out}) {
                if (Distance(handle, vertex.anchor) < canvas.sizes.anchor / 2) continue;  // the anchor's mark hides it
                painter.Line(vertex.anchor, handle, canvas.sizes.line);
                painter.Dot(handle, canvas.sizes.handle);
            }
        }
    }
    painter.Finish();
}

void DrawAnchors(const std::vector<ShapeRecord>& records, const Canvas& canvas) {
    MarkPainter smooth = canvas.Painter(kSmoothColour), corners = canvas.Painter(kCornerColour);
    const double size = canvas.sizes.anchor;
    for (const ShapeRecord& record : records) {
        for (const Vertex& vertex : Mapped(OutlineOf(*record.shape), canvas.placement).vertices) {
            IsSmooth(vertex) ? smooth.Dot(vertex.anchor, size) : corners.Square(vertex.anchor, size);
        }
    }
    smooth.Finish();
    corners.Finish();
}

void DrawFeatherPoints(const std::vector<ShapeRecord>& records, double pixel_aspect, const Canvas& canvas) {
    MarkPainter painter = canvas.Painter(kFeatherColour);
    for (const ShapeRecord& record : records) {
        if (record.shape->GetFeatherPtCount(0) == 0) continue;
        const Outline outline = OutlineOf(*record.shape);
        for (const refhost::FeatherPoint& feather : refhost::FeatherPointsOf(*record.shape)) {
            const auto span = FeatherSpan(feather, outline, pixel_aspect);
            if (!span) continue;
            const Point on_outline = canvas.placement(span->first), on_edge = canvas.placement(span->second);
            painter.Line(on_outline, on_edge, canvas.sizes.outline);
            painter.Dot(on_outline, canvas.sizes.handle);
            painter.Dot(on_edge, canvas.sizes.anchor);
        }
    }
    painter.Finish();
}

}  // namespace

void AddOverlayOptions(CLI::App& command, OverlayOptions& options, const char* file_description) {
    constexpr std::int32_t kMostScale = 64;
    AddValue(command, "--overlay", "FILE", file_description,
             [&](const std::string& text) { options.path = ParseOutputName(text); });
    AddValue(command, "--overlay-scale", "N", "magnify the overlay by this whole number; without it, by the picture's size",
             [&](const std::string& text) { options.scale = ParseWhole(text, 1, kMostScale); })
        ->needs("--overlay");
}

Overlay::Overlay(const GW_World& picture, bool shows_alpha, std::int32_t scale, const std::string& file)
    : scale_(ScaleFor(picture.width, picture.height, scale)), world_(NewWorld(picture.width, picture.height, scale_, file)) {
    FillBlocks(*world_, scale_, [&](std::int32_t x, std::int32_t y) {
        const GW_Pixel8* const pixel = &RowOf<GW_Pixel8>(picture, y)[static_cast<std::size_t>(x * kComponents)];
        if (shows_alpha) return Colour{Dimmed(pixel[0]), Dimmed(pixel[0]), Dimmed(pixel[0])};
        return Colour{Dimmed(pixel[1]), Dimmed(pixel[2]), Dimmed(pixel[3])};
    });
}

Overlay::Overlay(const GW_UnoBuffer& mask, std::int32_t scale, const std::string& file)
    : scale_(ScaleFor(mask.width, mask.height, scale)), world_(NewWorld(mask.width, mask.height, scale_, file)) {
    FillBlocks(*world_, scale_, [&](std::int32_t x, std::int32_t y) {
        const std::uint32_t level =
            mask.IsDeep() ? mask.Row<GW_Pixel16>(y)[x] * SampleTraits<GW_Pixel8>::kMax / SampleTraits<GW_Pixel16>::kMax
                          : mask.Row<GW_Pixel8>(y)[x];
        return Colour{Dimmed(level), Dimmed(level), Dimmed(level)};
    });
}

void Overlay::Draw(const std::vector<ShapeRecord>& records, const Affine& placement, double pixel_aspect,
                   LibrarySession& library) {
    const auto scale = static_cast<double>(scale_);
    const Canvas canvas = {Affine{scale, 0, 0, scale, 0, 0} * placement, SizesFor(scale_), library, *world_};
    DrawOutlines(records, canvas);
    DrawHandles(records, canvas);
    DrawAnchors(records, canvas);
    DrawFeatherPoints(records, pixel_aspect, canvas);
}

}  // namespace vrltool
