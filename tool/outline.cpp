#include "tool/outline.h"

#include <cmath>

#include "base/errors.h"
#include "base/narrow.h"

namespace vrltool {
namespace {

void Append(const Point& point, DY_Shape& shape) {
    const WEX_Item item = {NarrowToFloat(point.x), NarrowToFloat(point.y)};
    ThrowIfFailed(WEX_Insert(&item, -1, shape.GetPoints()));
}

Point Widened(const M_Vector2T<float>& point) { return {static_cast<double>(point.x), static_cast<double>(point.y)}; }

}  // namespace

bool FitsFloat(double value) { return std::isfinite(NarrowToFloat(value)); }

boost::shared_ptr<DY_Shape> MakeShape(const Outline& outline) {
    boost::shared_ptr<DY_Shape> shape(new DY_Shape(kShapeTypeBezier, nullptr));
    if (!outline.closed) shape->flags |= kShapeFlagOpen;
    if (outline.vertices.empty()) return shape;

    const Vertex* previous = &outline.vertices.front();
    Append(previous->anchor, *shape);
    for (std::size_t i = 1; i < outline.vertices.size(); ++i) {
        const Vertex& next = outline.vertices[i];
        Append(previous->out, *shape);
        Append(next.in, *shape);
        Append(next.anchor, *shape);
        previous = &next;
    }
    if (outline.closed) {
        Append(previous->out, *shape);
        Append(outline.vertices.front().in, *shape);
    }
    return shape;
}

Outline OutlineOf(const DY_Shape& shape) {
    const int items = (*shape.GetPoints())->count;
    const int vertices = (items + 2) / 3;  // 3k - 2 items make k vertices, and so do 3k
    Outline outline;
    outline.closed = !shape.IsOpen();
    for (int i = 0; i < vertices; ++i) {
        M_Vector2T<float> anchor{}, arriving{}, leaving{};
        ThrowIfFailed(DY_ShapeGetBezPoints(&shape, i * 3, &anchor, &arriving, &leaving));
        outline.vertices.push_back({Widened(arriving), Widened(anchor), Widened(leaving)});
    }
    return outline;
}

}  // namespace vrltool
