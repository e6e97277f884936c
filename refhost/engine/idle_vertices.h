#pragma once

#include "refhost/engine/outline.h"

namespace refhost {

/// The same loops without vertices that carry nothing: pieces no longer than `tolerance` (pixels) are left out, and a row of
/// straight pieces that goes on in one direction becomes one. However many vertices are left out of a row, each was within
/// `tolerance` of the line that replaces it. Loops of which nothing but a line is left disappear.
Outline WithoutIdleVertices(const Outline& outline, double tolerance);

}  // namespace refhost
