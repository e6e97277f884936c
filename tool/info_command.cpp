#include "tool/info_command.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tool/outline.h"
#include "tool/outline_measure.h"
#include "tool/shape_file.h"
#include "tool/text_table.h"

namespace vrltool {
namespace {

constexpr const char* kExamples = R"(Examples:
  vrl info hand.json
  vrl info - < icon.svg

Bounds are those of the curves. The area is positive for an outline that runs clockwise on screen; an open outline counts
as closed by a straight line.)";

/// Two decimals: a hundredth of a pixel is finer than any mask shows.
std::string Decimal(double value) {
    char text[400];  // the longest: a 32-bit float squared
    std::snprintf(text, sizeof text, "%.2f", value);
    return text;
}

const char* DirectionOf(double area) { return area > 0 ? "clockwise" : area < 0 ? "counterclockwise" : "none"; }

struct Totals {
    std::size_t closed = 0, open = 0, vertices = 0;

    void Add(const Outline& outline) {
        ++(outline.closed ? closed : open);
        vertices += outline.vertices.size();
    }
};

std::vector<std::string> Header() {
    return {"shape", "outline", "vertices", "left", "top", "right", "bottom", "area", "direction", "mode"};
}

std::vector<std::string> RowFor(std::size_t number, const ShapeRecord& record, const Outline& outline) {
    const M_FloatRect bounds = TightBounds(outline);
    const double area = SignedArea(outline);
    return {std::to_string(number),
            outline.closed ? "closed" : "open",
            std::to_string(outline.vertices.size()),
            Decimal(bounds.left),
            Decimal(bounds.top),
            Decimal(bounds.right),
            Decimal(bounds.bottom),
            Decimal(area),
            DirectionOf(area),
            record.mode ? NameOf(*record.mode) : "-"};
}

bool HasFeather(const ShapeRecord& record) { return record.shape->GetFeatherPtCount(0) > 0; }

void RunInfo(const std::string& path) {
    const std::vector<ShapeRecord> records = LoadShapes(path);
    const bool feathered = std::ranges::any_of(records, HasFeather);
    std::vector<std::string> header = Header();
    if (feathered) header.push_back("feather points");
    TextTable table(std::move(header));
    Totals totals;
    for (const ShapeRecord& record : records) {
        const Outline outline = OutlineOf(*record.shape);
        totals.Add(outline);
        std::vector<std::string> row = RowFor(totals.closed + totals.open, record, outline);
        if (feathered) row.push_back(std::to_string(record.shape->GetFeatherPtCount(0)));
        table.AddRow(std::move(row));
    }
    std::printf("%s%zu %s: %zu closed, %zu open, %zu %s\n", records.empty() ? "" : table.Text().c_str(), records.size(),
                records.size() == 1 ? "shape" : "shapes", totals.closed, totals.open, totals.vertices,
                totals.vertices == 1 ? "vertex" : "vertices");
}

}  // namespace

void AddInfoCommand(CLI::App& program, Command& chosen) {
    const auto path = std::make_shared<std::string>();
    CLI::App& command = *program.add_subcommand("info", "Tell what is in a file of shapes");
    command.add_option("SHAPES", *path, "SVG or JSON file, - for standard input")->required()->type_name("");
    command.footer(kExamples);
    command.callback([path, &chosen] { chosen = [path] { RunInfo(*path); }; });
}

}  // namespace vrltool
