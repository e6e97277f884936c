// Any text read as shapes in JSON; what was read is written and read again.

#include <algorithm>
#include <string>

#include "fuzz/shape_text.h"
#include "refhost/shape/feather_points.h"
#include "tool/json_shapes.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto records = fuzz::ShapesIn(data, size, vrltool::ReadJsonShapes);
    const std::string text = vrltool::WriteJsonShapes(records);
    const std::vector<vrltool::ShapeRecord> again = vrltool::ReadJsonShapes(text);
    fuzz::Require(again.size() == records.size() && vrltool::WriteJsonShapes(again) == text,
                  "written shapes read back to the same");
    for (std::size_t i = 0; i < records.size(); ++i) {
        const auto points = refhost::FeatherPointsOf(*records[i].shape);
        for (const auto& [position, radius] : points) {
            fuzz::Require(std::isfinite(position) && std::isfinite(radius), "feather points are finite");
        }
        fuzz::Require(std::ranges::equal(points, refhost::FeatherPointsOf(*again[i].shape)), "feather points keep their digits");
    }
    return 0;
}
