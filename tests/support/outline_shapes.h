#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "refhost/engine/path_view.h"

namespace outline_shapes {

/// An engine path under construction, in pixels.
class PathBuilder {
 public:
    PathBuilder& Move(double x, double y) { return Add(kPIVMove, x, y); }
    PathBuilder& Line(double x, double y) { return Add(kPIVLine, x, y); }
    PathBuilder& Curve(double x1, double y1, double x2, double y2, double x3, double y3) {
        return Add(kPIVCurve, x1, y1).Add(kPIVCurve, x2, y2).Add(kPIVCurve, x3, y3);
    }
    PathBuilder& Close();
    PathBuilder& Append(const PathBuilder& other);

    refhost::PathView View() const { return {points, operators}; }
    /// The same outline run through the other way; subpaths must be closed.
    PathBuilder Reversed() const;
    /// Segments of the path: what a result's vertex count is compared with.
    std::size_t VertexCount() const;

    std::vector<M_Vector2T<float>> points;
    std::vector<PIVPointType> operators;

 private:
    PathBuilder& Add(PIVPointType type, double x, double y);
};

PathBuilder Polygon(const std::vector<refhost::Point>& points);
/// A closed curve through `points` without corners.
PathBuilder Smooth(const std::vector<refhost::Point>& points);

PathBuilder Circle(double cx, double cy, double radius);
PathBuilder RoundedRectangle(double left, double top, double right, double bottom, double radius);
/// A letter with serifs, a bowl, a hole and thin joints: lines, curves, corners of both kinds.
PathBuilder Letter();
/// A smooth closed outline of `vertices` cubics, about `radius` px round, with bays and necks.
PathBuilder Blob(int vertices, double radius, std::uint32_t seed);
/// As a bitmap tracer leaves an outline: ragged, half of the pieces straight, about 3 px each.
PathBuilder Traced(int vertices, std::uint32_t seed);
PathBuilder Star(int spikes, double outer, double inner);
/// Curves with a cusp, a loop, a handle that runs backwards, and zero handles.
PathBuilder CuspsAndLoops();
/// A smooth outline that crosses itself again and again.
PathBuilder Scribble(int vertices, double extent, std::uint32_t seed);
/// One to three subpaths of lines and wild curves, sometimes degenerate.
PathBuilder RandomPath(std::mt19937& random);

}  // namespace outline_shapes
