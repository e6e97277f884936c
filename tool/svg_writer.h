#pragma once

#include <string>
#include <vector>

#include "tool/shape_record.h"

namespace vrltool {

/// A drawing of one path that holds every shape as a subpath and is filled by the even-odd rule. Every coordinate is the
/// shortest text that reads back to the same 32-bit float; modes and feather points have no place in it.
/// The drawing shows `extras.picture` and, beyond it, all of the shapes, in whole pixels. So it reads back in the same
/// place as long as no coordinate is negative.
std::string WriteSvgShapes(const std::vector<ShapeRecord>& records, const ShapeFileExtras& extras = {});

}  // namespace vrltool
