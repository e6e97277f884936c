#pragma once

#include <string>
#include <vector>

#include "tool/shape_record.h"
#include "tool/text_sink.h"

namespace vrltool {

/// A drawing of one path that holds every shape as a subpath and is filled by the even-odd rule. Every coordinate is the
/// shortest text that reads back to the same 32-bit float; modes and feather points have no place in it.
/// The drawing shows the canvas and lets curves that leave it be seen. Without a canvas it shows the rectangle from the origin
/// that holds all of the shapes, in whole pixels. So it lies over the picture it was made of, and reads back in the same place
/// as long as neither begins left of the origin or above it.
void WriteSvgShapes(const std::vector<ShapeRecord>& records, const ShapeFileExtras& extras, const TextSink& sink);
std::string WriteSvgShapes(const std::vector<ShapeRecord>& records, const ShapeFileExtras& extras = {});

}  // namespace vrltool
