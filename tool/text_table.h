#pragma once

#include <string>
#include <vector>

namespace vrltool {

/// Rows of text in columns as wide as their widest cell, right-aligned, two spaces between. Every row has as many cells
/// as the first.
class TextTable {
 public:
    explicit TextTable(std::vector<std::string> header) : rows_{std::move(header)} {}

    void AddRow(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
    std::string Text() const;

 private:
    std::vector<std::vector<std::string>> rows_;
};

}  // namespace vrltool
