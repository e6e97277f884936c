// Any text read as an SVG drawing; what was read can be written and read again.

#include <algorithm>

#include "fuzz/shape_text.h"
#include "tool/svg_reader.h"
#include "tool/svg_writer.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto records = fuzz::ShapesIn(data, size, vrltool::ReadSvgShapes);
    for (const vrltool::ShapeRecord& record : records) {
        for (const auto& [in, anchor, out] : vrltool::OutlineOf(*record.shape).vertices) {
            if (std::min({in.x, in.y, anchor.x, anchor.y, out.x, out.y}) < 0) return 0;  // written moved, perhaps too far
        }
    }
    // Not the same again to the last vertex: what comes within a rounding of a subpath's start counts as back at it, and dots go.
    const auto again = vrltool::ReadSvgShapes(vrltool::WriteSvgShapes(records));
    fuzz::Require(again.size() <= records.size(), "a written drawing reads back");
    return 0;
}
