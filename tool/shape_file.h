#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "tool/output_file.h"
#include "tool/shape_record.h"
#include "tool/text_sink.h"

namespace vrltool {

/// What an SVG or JSON file holds; which of the two it is shows from its first character, or else from the name's ending.
/// @throws Failure  with the file's name
Drawing LoadDrawing(const std::string& path);

/// Its shapes only.
std::vector<ShapeRecord> LoadShapes(const std::string& path);

/// Tells on standard error that there are no shapes, so that an empty result surprises nobody.
void NoteWhenEmpty(const std::vector<ShapeRecord>& records, const std::string& path);

/// Writes the text of a file of shapes.
using ShapeWriter = void (*)(const std::vector<ShapeRecord>& records, const ShapeFileExtras& extras, const TextSink& sink);

/// The writer for a file of that name: by `format`, "svg" or "json", or, when that is empty, by the name's ending; JSON for a
/// stream without one. Null when the ending says neither, or another kind of file than `format` does.
ShapeWriter ShapeWriterFor(const std::string& path, const std::string& format);

/// What a user reads for whom there was none.
std::string ExplainNoShapeWriter(const std::string& path, const std::string& format);

/// Adds --format, the kind of file to write when names do not tell it.
CLI::Option* AddFormatOption(CLI::App& command, std::string& format, const char* description);

/// Writes the shapes to `output`, piece by piece.
/// @throws Failure  with the file's name
void WriteShapes(const std::vector<ShapeRecord>& records, const ShapeFileExtras& extras, ShapeWriter writer, OutputFile& output);

}  // namespace vrltool
