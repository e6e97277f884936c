#pragma once

#include <string>
#include <vector>

#include "tool/shape_record.h"

namespace vrltool {

/// The shapes of an SVG or JSON file; which of the two it is shows from its first character, or else
/// from the name's ending.
/// @throws Failure  with the file's name
std::vector<ShapeRecord> LoadShapes(const std::string& path);

/// Tells on standard error that there are no shapes, so that an empty result surprises nobody.
void NoteWhenEmpty(const std::vector<ShapeRecord>& records, const std::string& path);

/// Makes the text of a file of shapes.
using ShapeWriter = std::string (*)(const std::vector<ShapeRecord>& records, const ShapeFileExtras& extras);

/// The writer for a file of that name, by its ending; JSON for standard output. Null when the ending says neither.
ShapeWriter ShapeWriterFor(const std::string& path);

}  // namespace vrltool
