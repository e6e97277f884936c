#include "geometry/shape_to_path.h"

#include "base/errors.h"

namespace {

constexpr std::int32_t kPointsPerVertex = 3;

struct Vertex {
    M_Vector2T<float> anchor, arriving, leaving;
};

Vertex VertexAt(const DY_Shape& shape, std::int32_t index) {
    Vertex vertex = {};
    ThrowIfFailed(DY_ShapeGetBezPoints(&shape, index, &vertex.anchor, &vertex.arriving, &vertex.leaving));
    return vertex;
}

void AppendSegments(const DY_Shape& shape, std::int32_t point_count, CPIVBezierPath& path) {
    const Vertex first = VertexAt(shape, 0);
    path.MoveTo(first.anchor);
    M_Vector2T<float> leaving = first.leaving;
    std::int32_t index = kPointsPerVertex;
    for (; index < point_count; index += kPointsPerVertex) {
        const Vertex vertex = VertexAt(shape, index);
        path.CurveTo(leaving, vertex.arriving, vertex.anchor);
        leaving = vertex.leaving;
    }
    // The list ends with the handles of a closing segment only when it holds whole triples.
    if (!shape.IsOpen() && index == point_count) path.CurveTo(leaving, first.arriving, first.anchor);
}

}  // namespace

void VRLp_ShapeToPath(const DY_Shape& shape, CPIVBezierPath& path, bool close) {
    const std::int32_t point_count = (*shape.GetPoints())->count;
    if (point_count > 0) AppendSegments(shape, point_count, path);
    if (close && !shape.IsOpen()) path.ClosePath();
}

CGRXPath VRLp_PathOfShape(const DY_Shape& shape) {
    CPIVBezierPath record;
    VRLp_ShapeToPath(shape, record, true);
    return CGRXPath::FromRecord(record);
}
