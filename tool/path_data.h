#pragma once

#include <string_view>
#include <vector>

#include "tool/outline.h"

namespace vrltool {

/// The subpaths of SVG path data (the `d` attribute), in its own coordinates.
/// @throws Failure  with the offset in `data` and what is wrong there
std::vector<Outline> ParsePathData(std::string_view data);

}  // namespace vrltool
