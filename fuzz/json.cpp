// Any text read as shapes in JSON; what was read is written and read again.

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "fuzz/require.h"
#include "refhost/shape/feather_points.h"
#include "tool/failure.h"
#include "tool/json_shapes.h"
#include "tool/outline.h"

namespace {

bool IsFinite(const vrltool::Point& p) { return std::isfinite(p.x) && std::isfinite(p.y); }

void RequireFinite(const vrltool::ShapeRecord& record) {
    for (const vrltool::Vertex& vertex : vrltool::OutlineOf(*record.shape).vertices) {
        fuzz::Require(IsFinite(vertex.in) && IsFinite(vertex.anchor) && IsFinite(vertex.out), "points are finite");
    }
    for (const refhost::FeatherPoint& point : refhost::FeatherPointsOf(*record.shape)) {
        fuzz::Require(std::isfinite(point.position) && std::isfinite(point.radius), "feather points are finite");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<vrltool::ShapeRecord> records;
    try {
        records = vrltool::ReadJsonShapes({reinterpret_cast<const char*>(data), size});
    } catch (const vrltool::Failure&) {
        return 0;
    }
    const std::string text = vrltool::WriteJsonShapes(records);
    const std::vector<vrltool::ShapeRecord> again = vrltool::ReadJsonShapes(text);
    fuzz::Require(again.size() == records.size() && vrltool::WriteJsonShapes(again) == text,
                  "written shapes read back to the same");
    for (std::size_t i = 0; i < records.size(); ++i) {
        RequireFinite(records[i]);
        fuzz::Require(std::ranges::equal(refhost::FeatherPointsOf(*records[i].shape), refhost::FeatherPointsOf(*again[i].shape)),
                      "feather points keep their digits");
    }
    return 0;
}
