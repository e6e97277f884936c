#pragma once

#include <string_view>
#include <vector>

#include "tool/shape_record.h"

namespace vrltool {

/// Every subpath of every path and basic shape that an SVG drawing would show, in drawing order and in the pixels of
/// its outermost viewport. Fill and stroke are not looked at; clips, masks and text are left out.
/// The canvas is there when the drawing has a size in absolute lengths or a view box.
/// @throws Failure  with the element, by id or line, and what is wrong
Drawing ReadSvgDrawing(std::string_view text);

/// Its shapes only.
std::vector<ShapeRecord> ReadSvgShapes(std::string_view text);

}  // namespace vrltool
