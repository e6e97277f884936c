#pragma once

#include <string>
#include <vector>

#include "tool/shape_record.h"

namespace vrltool {

inline constexpr const char* kStandardStream = "-";  // as a file name: standard input or standard output

/// The shapes of an SVG or JSON file; which of the two it is shows from its first character, or else
/// from the name's ending.
/// @throws Failure  with the file's name
std::vector<ShapeRecord> LoadShapes(const std::string& path);

}  // namespace vrltool
