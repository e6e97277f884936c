#pragma once

#include <string_view>
#include <vector>

#include "tool/outline.h"
#include "tool/svg_attributes.h"

namespace vrltool {

/// True for the elements that are outlines: path, rect, circle, ellipse, line, polyline, polygon.
bool IsSvgShape(std::string_view tag);

/// The outlines of such an element in its own coordinates; none when a size of 0 turns it off.
/// @throws Failure
std::vector<Outline> SvgShapeOutlines(std::string_view tag, const SvgAttributes& attributes);

}  // namespace vrltool
