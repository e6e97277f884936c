#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vrltool {

struct GreyPicture {
    int width = 0, height = 0, depth = 0;  // 8 or 16 bits
    std::vector<std::uint32_t> samples;    // row by row, as the file holds them
};

/// The grey PNG at `path`; a test failure and an empty picture when it is none.
GreyPicture ReadGreyPng(const std::string& path);

}  // namespace vrltool
