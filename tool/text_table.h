#pragma once

#include <string>
#include <vector>

namespace vrltool {

/// Rows of text in columns as wide as their widest cell, right-aligned, two spaces between; a last column of names may be
/// left-aligned instead. Every row has as many cells as the first.
class TextTable {
 public:
    enum class LastColumn { kRight, kLeft };
    explicit TextTable(std::vector<std::string> header, LastColumn last = LastColumn::kRight)
        : rows_{std::move(header)}, last_(last) {}

    void AddRow(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
    std::string Text() const;

 private:
    std::vector<std::vector<std::string>> rows_;
    LastColumn last_;
};

}  // namespace vrltool
