#include "tool/shape_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tool/failure.h"
#include "tool/input_stream.h"
#include "tool/interrupt.h"
#include "tool/json_shapes.h"
#include "tool/message.h"
#include "tool/option_values.h"
#include "tool/output_file.h"
#include "tool/standard_stream.h"
#include "tool/svg_reader.h"
#include "tool/svg_writer.h"

namespace vrltool {
namespace {

constexpr const char* kSvgEnding = ".svg";
constexpr const char* kJsonEnding = ".json";

bool IsFileKind(const std::string& ending) { return ending == kSvgEnding || ending == kJsonEnding || ending == ".png"; }

std::string ReadWhole(const std::string& path) {
    const InputStream file = OpenInput(path);
    std::string text;
    char block[65536];
    while (const std::size_t count = std::fread(block, 1, sizeof block, file.get())) text.append(block, count);
    const int error = errno;
    ThrowIfInterrupted();
    if (std::ferror(file.get())) throw Failure(std::strerror(error));
    return text;
}

Drawing ReadDrawing(const std::string& path, const std::string& text) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    const std::size_t mark = text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    const std::size_t start = text.find_first_not_of(" \t\r\n", mark);
    if (start == std::string::npos) throw Failure("the file is empty");
    if (text[start] == '<' || path.ends_with(kSvgEnding)) return ReadSvgDrawing(text);
    if (text[start] == '{' || path.ends_with(kJsonEnding)) return {ReadJsonShapes(text), std::nullopt};
    throw Failure("neither an SVG drawing nor a JSON object");
}

}  // namespace

Drawing LoadDrawing(const std::string& path) {
    try {
        return ReadDrawing(path, ReadWhole(path));
    } catch (const Failure& failure) {
        throw Failure(InputName(path) + ": " + failure.what());
    }
}

std::vector<ShapeRecord> LoadShapes(const std::string& path) { return LoadDrawing(path).shapes; }

void NoteWhenEmpty(const std::vector<ShapeRecord>& records, const std::string& path) {
    if (records.empty()) PrintMessage(InputName(path) + ": there are no shapes in it");
}

ShapeWriter ShapeWriterFor(const std::string& path, const std::string& format) {
    const std::string ending = EndingOf(path);
    if (!format.empty() && IsFileKind(ending) && ending != '.' + format) return nullptr;
    const std::string kind = !format.empty() ? '.' + format : ending.empty() && IsStream(path) ? kJsonEnding : ending;
    if (kind == kJsonEnding) return WriteJsonShapes;
    if (kind == kSvgEnding) return WriteSvgShapes;
    return nullptr;
}

std::string ExplainNoShapeWriter(const std::string& path, const std::string& format) {
    if (format.empty()) return '"' + path + "\" does not end in .svg or .json";
    return '"' + path + "\" ends in " + EndingOf(path) + ", but --format is " + format;
}

CLI::Option* AddFormatOption(CLI::App& command, std::string& format, const char* description) {
    return AddValue(command, "--format", "NAME", description, [&](const std::string& text) { format = text; })
        ->check(CLI::IsMember({"svg", "json"}));
}

void WriteShapes(const std::vector<ShapeRecord>& records, const ShapeFileExtras& extras, ShapeWriter writer, OutputFile& output) {
    writer(records, extras, [&](std::string_view piece) {
        ThrowIfInterrupted();
        output.Write(piece);
    });
}

}  // namespace vrltool
