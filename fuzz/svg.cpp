// Any text read as an SVG drawing; what was read can be written and read again.

#include <algorithm>
#include <cmath>
#include <vector>

#include "fuzz/require.h"
#include "tool/failure.h"
#include "tool/outline.h"
#include "tool/svg_reader.h"
#include "tool/svg_writer.h"

namespace {

using vrltool::Point;

std::vector<Point> PointsOf(const std::vector<vrltool::ShapeRecord>& records) {
    std::vector<Point> points;
    for (const vrltool::ShapeRecord& record : records) {
        for (const vrltool::Vertex& vertex : vrltool::OutlineOf(*record.shape).vertices) {
            points.insert(points.end(), {vertex.in, vertex.anchor, vertex.out});
        }
    }
    return points;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<vrltool::ShapeRecord> records;
    try {
        records = vrltool::ReadSvgShapes({reinterpret_cast<const char*>(data), size});
    } catch (const vrltool::Failure&) {
        return 0;
    }
    const std::vector<Point> points = PointsOf(records);
    fuzz::Require(std::ranges::all_of(points, [](Point p) { return std::isfinite(p.x) && std::isfinite(p.y); }),
                  "points are finite");
    if (std::ranges::any_of(points, [](Point p) { return p.x < 0 || p.y < 0; })) return 0;  // written moved, perhaps too far
    // Not the same again to the last vertex: what comes within a rounding of a subpath's start counts as back at it, and dots go.
    const auto again = vrltool::ReadSvgShapes(vrltool::WriteSvgShapes(records));
    fuzz::Require(again.size() <= records.size(), "a written drawing reads back");
    return 0;
}
