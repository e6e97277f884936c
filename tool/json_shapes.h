#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tool/shape_record.h"

namespace vrltool {

// Shapes as JSON:
//     {"shapes": [{"closed": true,
//                  "vertices": [{"p": [x, y], "in": [x, y], "out": [x, y]}],
//                  "mode": "add"}]}
// `in` and `out` are absolute; left out, they equal `p`. `closed` is true unless said otherwise. Beside `shapes` the
// outermost object may hold anything; inside it, an unknown key is an error.

/// @throws Failure  with the place (`shapes[2].vertices[0].in`) and what is wrong there
std::vector<ShapeRecord> ReadJsonShapes(std::string_view text);

/// Every number is the shortest text that reads back to the same 32-bit float.
std::string WriteJsonShapes(const std::vector<ShapeRecord>& records);

}  // namespace vrltool
