#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tool/shape_record.h"
#include "tool/text_sink.h"

namespace vrltool {

// Shapes as JSON:
//     {"shapes": [{"closed": true,
//                  "vertices": [{"p": [x, y], "in": [x, y], "out": [x, y]}],
//                  "feather": [{"position": 1.5, "radius": 12}],
//                  "mode": "add"}]}
// `in` and `out` are absolute; left out, they equal `p`. `closed` is true unless said otherwise. A feather point's position
// is the index of a segment plus the parameter on it, its radius is in pixels, negative inwards. Beside `shapes` the
// outermost object may hold anything; inside it, an unknown key is an error.

/// @throws Failure  with the place (`shapes[2].vertices[0].in`) and what is wrong there
std::vector<ShapeRecord> ReadJsonShapes(std::string_view text);

/// Every number is the shortest text that reads back to the same 32-bit float (positions: 64-bit).
void WriteJsonShapes(const std::vector<ShapeRecord>& records, const ShapeFileExtras& extras, const TextSink& sink);
std::string WriteJsonShapes(const std::vector<ShapeRecord>& records, const ShapeFileExtras& extras = {});

}  // namespace vrltool
