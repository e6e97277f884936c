#pragma once

#include <cstdint>
#include <vector>

#include "refhost/engine/path_view.h"

namespace support {

/// A path being built. Owns its entries.
class Outline {
 public:
    refhost::PathView View() const { return {points_, operators_}; }
    void Move(double x, double y) { Add(kPIVMove, x, y); }
    void Line(double x, double y) { Add(kPIVLine, x, y); }
    void Curve(refhost::Point control1, refhost::Point control2, refhost::Point end);
    void Close();
    void Append(const Outline& other);
    /// The same outline run the other way.
    Outline Reversed() const;
    Outline Shifted(double x, double y) const;

 private:
    void Add(PIVPointType operation, double x, double y);

    std::vector<M_Vector2T<float>> points_;
    std::vector<PIVPointType> operators_;
};

/// Four cubics, clockwise on screen.
Outline Circle(double x, double y, double radius);
Outline Polygon(const std::vector<refhost::Point>& corners);
Outline Rectangle(double left, double top, double right, double bottom);
/// A smooth closed curve through the points, one cubic for each.
Outline SmoothLoop(const std::vector<refhost::Point>& points);
/// A smooth round shape of `vertices` cubics that does not cross itself, within 1.5 * `radius` of (x, y).
Outline Blob(double x, double y, double radius, int vertices, std::uint32_t seed);
/// A blob whose edge is rough by a pixel, as traced from a picture.
Outline TracedShape(double x, double y, double radius, int vertices, std::uint32_t seed);
/// A star polygon that visits every `step`-th of `points` corners.
Outline Star(double x, double y, double radius, int points, int step);
/// A smooth closed curve through random points of a square: it crosses itself many times.
Outline Scribble(double left, double top, double size, int vertices, std::uint32_t seed);

inline constexpr const char* kSerifBold = "/usr/share/fonts/truetype/dejavu/DejaVuSerif-Bold.ttf";

/// A character of a font file, `size` pixels to the em, its origin at (x, y); no entries when the font is not installed.
Outline Glyph(const char* font_file, char32_t character, double x, double y, double size);

}  // namespace support
