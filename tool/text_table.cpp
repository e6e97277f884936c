#include "tool/text_table.h"

#include <algorithm>

namespace vrltool {

std::string TextTable::Text() const {
    std::vector<std::size_t> widths(rows_.front().size());
    for (const auto& row : rows_) {
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    }
    if (last_ == LastColumn::kLeft) widths.back() = 0;  // nothing before a cell, and nothing behind it
    std::string text;
    for (const auto& row : rows_) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            text.append(i == 0 ? 0 : 2, ' ').append(widths[i] - std::min(widths[i], row[i].size()), ' ').append(row[i]);
        }
        text.append("\n");
    }
    return text;
}

}  // namespace vrltool
