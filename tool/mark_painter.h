#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "host/world.h"
#include "tool/cubic.h"
#include "tool/library_session.h"
#include "tool/outline.h"

namespace vrltool {

struct Colour {
    std::uint8_t red, green, blue;
};

/// Paints small figures of one colour onto a picture of 8 bits, in its pixels. Thousands of figures are rendered at once, as
/// the mask of one outline: it goes round each figure, on to the next along a straight bridge, and in the end back over all
/// bridges, which enclose nothing.
class MarkPainter {
 public:
    /// Borrows the session and the picture.
    MarkPainter(const Colour& colour, LibrarySession& library, GW_World& picture)
        : colour_(colour), library_(library), picture_(picture) {}

    // They throw what `Finish` throws.
    void Line(const Point& from, const Point& to, double width);
    void Curve(const Cubic& curve, double width);
    void Square(const Point& centre, double side);
    void Dot(const Point& centre, double diameter);

    /// Paints what was collected so far.
    /// @throws Failure
    /// @throws std::bad_alloc
    void Finish();

 private:
    void Stroke(const Cubic& curve, double width);
    void AddRing(std::span<const Vertex> ring);
    M_LRect CoveredPixels() const;
    void Blend(const GW_UnoBuffer& mask, const M_LRect& place);

    Colour colour_;
    LibrarySession& library_;
    GW_World& picture_;
    std::vector<Vertex> vertices_;     // of all rings, each with its start repeated at its end
    std::vector<Vertex> ring_starts_;  // where the bridges hold on
};

}  // namespace vrltool
