#pragma once

#include "host/geometry_records.h"
#include "tool/outline.h"

namespace vrltool {

/// Smallest rectangle round the outline's curves (not round their control points). The outline has a vertex.
M_FloatRect TightBounds(const Outline& outline);

/// Signed area inside the curves, square pixels; positive when the outline runs clockwise on screen. An open outline
/// counts as closed by a straight line, as it does when it is filled.
double SignedArea(const Outline& outline);

}  // namespace vrltool
