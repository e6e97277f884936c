#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tool/png_appearance.h"

namespace vrltool {

/// A PNG file as it stands, nothing converted.
struct PngPicture {
    int width = 0, height = 0;
    int depth = 8;                       // bits a sample
    int color_type = 0;                  // PNG's number: 0 grey, 2 RGB, 3 palette, 4 grey and alpha, 6 RGBA
    std::vector<std::uint32_t> samples;  // row by row
    bool interlaced = false;             // for writing
    std::vector<std::uint8_t> palette;   // for writing: red, green, blue of every entry
    std::vector<std::uint16_t> clear;    // for writing: alpha of the first palette entries, or the one clear colour
    std::vector<PngChunk> chunks = {};   // for writing: before all others but the first
};

/// A test failure and an empty picture when there is no PNG at `path`.
PngPicture ReadPngFile(const std::string& path);
void WritePngFile(const std::string& path, const PngPicture& picture);

}  // namespace vrltool
