// Any text read as shapes in JSON; what was read is written and read again.

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "refhost/shape/feather_points.h"
#include "tool/failure.h"
#include "tool/json_shapes.h"
#include "tool/outline.h"

namespace {

bool IsFinite(const vrltool::Point& p) { return std::isfinite(p.x) && std::isfinite(p.y); }

void RequireSound(const vrltool::ShapeRecord& record) {
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
    for (const vrltool::ShapeRecord& record : records) RequireSound(record);
    const std::string text = vrltool::WriteJsonShapes(records);
    fuzz::Require(vrltool::WriteJsonShapes(vrltool::ReadJsonShapes(text)) == text, "written shapes read back to the same");
    return 0;
}
