#pragma once

#include <string>
#include <vector>

#include "tool/shape_record.h"

namespace vrltool {

/// The shapes of an SVG or JSON file; which of the two it is shows from its first character, or else
/// from the name's ending.
/// @throws Failure  with the file's name
std::vector<ShapeRecord> LoadShapes(const std::string& path);

}  // namespace vrltool
