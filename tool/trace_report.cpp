#include "tool/trace_report.h"

#include <cstdio>
#include <nlohmann/json.hpp>
#include <utility>

#include "tool/message.h"
#include "tool/text_table.h"

namespace vrltool {
namespace {

struct Counts {
    explicit Counts(const std::vector<ShapeRecord>& shapes) {
        for (const ShapeRecord& record : shapes) {
            constexpr std::int32_t kItemsPerVertex = 3;
            vertices += static_cast<std::size_t>((*record.shape->GetPoints())->count / kItemsPerVertex);
            ++(record.shape->IsOpen() ? open : closed);
        }
    }

    std::size_t vertices = 0, open = 0, closed = 0;
};

std::vector<std::string> Row(const Traced& traced) {
    if (traced.failure) return {"-", "-", "-", "-", "-", "-", "failed", OnOneLine(traced.image)};
    const Counts counts(traced.shapes);
    char milliseconds[32];
    std::snprintf(milliseconds, sizeof milliseconds, "%.2f", traced.milliseconds);
    return {std::to_string(traced.width),
            std::to_string(traced.height),
            std::to_string(traced.shapes.size()),
            std::to_string(counts.vertices),
            std::to_string(counts.open),
            std::to_string(counts.closed),
            milliseconds,
            OnOneLine(traced.image)};
}

nlohmann::ordered_json Object(const Traced& traced) {
    nlohmann::ordered_json object = {{"picture", traced.image}};
    if (traced.failure) {
        object["error"] = *traced.failure;
        return object;
    }
    const Counts counts(traced.shapes);
    object["width"] = traced.width;
    object["height"] = traced.height;
    object["shapes"] = traced.shapes.size();
    object["vertices"] = counts.vertices;
    object["open"] = counts.open;
    object["closed"] = counts.closed;
    object["ms"] = traced.milliseconds;
    object["notes"] = traced.notes;
    return object;
}

}  // namespace

std::string StatsTable(const std::vector<Traced>& pictures) {
    TextTable table({"width", "height", "shapes", "vertices", "open", "closed", "ms", "picture"}, TextTable::LastColumn::kLeft);
    for (const Traced& traced : pictures) table.AddRow(Row(traced));
    return table.Text();
}

std::string StatsJson(const std::vector<Traced>& pictures) {
    std::string text = "{\"pictures\": [";
    const char* separator = "\n  ";
    for (const Traced& traced : pictures) {
        constexpr auto kReplaceWrongUtf8 = nlohmann::ordered_json::error_handler_t::replace;
        text.append(std::exchange(separator, ",\n  ")).append(Object(traced).dump(-1, ' ', false, kReplaceWrongUtf8));
    }
    return text.append("\n]}\n");
}

}  // namespace vrltool
