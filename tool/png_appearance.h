#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vrltool {

/// A chunk of a PNG file as it stands.
struct PngChunk {
    std::string name;  // four letters
    std::vector<std::uint8_t> content;
};

/// What a PNG file says about how its samples are shown: what their colours mean and how large a pixel is. Nothing here reads
/// it; it goes with the samples, unchanged.
struct PngAppearance {
    std::vector<PngChunk> chunks;
    bool is_grey = false;  // a colour profile in `chunks` is one for grey, and no other picture may have it
};

}  // namespace vrltool
