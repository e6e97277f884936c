#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "refhost/engine/path_view.h"

namespace support {

/// An engine path under construction, in pixels.
class Outline {
 public:
    Outline& Move(double x, double y) { return Add(kPIVMove, x, y); }
    Outline& Line(double x, double y) { return Add(kPIVLine, x, y); }
    Outline& Curve(double x1, double y1, double x2, double y2, double x3, double y3) {
        return Add(kPIVCurve, x1, y1).Add(kPIVCurve, x2, y2).Add(kPIVCurve, x3, y3);
    }
    Outline& Close();
    Outline& Append(const Outline& other);

    refhost::PathView View() const { return {points, operators}; }
    /// The same outline run through the other way; every subpath ends closed.
    Outline Reversed() const;
    Outline Shifted(double x, double y) const;
    /// Turned round the origin, then shifted.
    Outline Turned(double angle, double x, double y) const;
    /// Segments of the path: what a result's vertex count is compared with.
    std::size_t VertexCount() const;

    std::vector<M_Vector2T<float>> points;
    std::vector<PIVPointType> operators;

 private:
    Outline& Add(PIVPointType type, double x, double y);
};

Outline Polygon(const std::vector<refhost::Point>& corners);
Outline Rectangle(double left, double top, double right, double bottom);
/// A closed curve through `points` without corners.
Outline Smooth(const std::vector<refhost::Point>& points);

/// From its top, clockwise on screen.
Outline Circle(double x, double y, double radius);
Outline RoundedRectangle(double left, double top, double right, double bottom, double radius);
/// A letter with serifs, a bowl, a hole and thin joints: lines, curves, corners of both kinds.
Outline Letter();
/// A smooth closed outline of `vertices` cubics round the origin, about `radius` px away, with bays and necks.
Outline Blob(int vertices, double radius, std::uint32_t seed);
/// A blob whose edge is rough by a pixel and does not cross itself, as traced closely from a picture.
Outline RoughBlob(int vertices, double radius, std::uint32_t seed);
/// As a bitmap tracer leaves an outline: ragged, half of the pieces straight, about 3 px each.
Outline Traced(int vertices, std::uint32_t seed);
Outline Star(int spikes, double outer, double inner);
/// A star polygon round the origin that visits every `step`-th of `points` corners: it crosses itself.
Outline StarPolygon(int points, int step, double radius);
/// Curves with a cusp, a loop, a handle that runs backwards, and zero handles.
Outline CuspsAndLoops();
/// A smooth outline through random points of a square from the origin on, which crosses itself again and again.
Outline Scribble(int vertices, double extent, std::uint32_t seed);
/// One to three subpaths of lines and wild curves, sometimes degenerate.
Outline RandomPath(std::mt19937& random);

}  // namespace support
