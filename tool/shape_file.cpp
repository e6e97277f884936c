#include "tool/shape_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tool/failure.h"
#include "tool/input_stream.h"
#include "tool/interrupt.h"
#include "tool/json_shapes.h"
#include "tool/standard_stream.h"
#include "tool/svg_reader.h"
#include "tool/svg_writer.h"

namespace vrltool {
namespace {

constexpr const char* kSvgEnding = ".svg";
constexpr const char* kJsonEnding = ".json";

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

std::vector<ShapeRecord> ReadShapes(const std::string& path, const std::string& text) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    const std::size_t mark = text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    const std::size_t start = text.find_first_not_of(" \t\r\n", mark);
    if (start == std::string::npos) throw Failure("the file is empty");
    if (text[start] == '<' || path.ends_with(kSvgEnding)) return ReadSvgShapes(text);
    if (text[start] == '{' || path.ends_with(kJsonEnding)) return ReadJsonShapes(text);
    throw Failure("neither an SVG drawing nor a JSON object");
}

}  // namespace

std::vector<ShapeRecord> LoadShapes(const std::string& path) {
    try {
        return ReadShapes(path, ReadWhole(path));
    } catch (const Failure& failure) {
        throw Failure(InputName(path) + ": " + failure.what());
    }
}

void NoteWhenEmpty(const std::vector<ShapeRecord>& records, const std::string& path) {
    if (records.empty()) std::fprintf(stderr, "vrl: %s: there are no shapes in it\n", InputName(path).c_str());
}

ShapeWriter ShapeWriterFor(const std::string& path) {
    if (path == kStandardStream || path.ends_with(kJsonEnding)) return WriteJsonShapes;
    return path.ends_with(kSvgEnding) ? WriteSvgShapes : nullptr;
}

}  // namespace vrltool
