#pragma once

#include <cstdint>

#include "host/progress.h"

/// How a mask is rendered. Filled by the caller, read only; natural alignment.
struct VRL_MaskParams {
    std::int32_t feather_x = 0;                 // 16.16 pixels, 0 = none
    std::int32_t feather_y = 0;                 // 16.16 pixels, 0 = none
    std::int32_t expansion = 0;                 // 16.16 pixels, negative contracts
    double pixel_aspect = 0;                    // horizontal pixel aspect ratio; 0 means 1
    std::uint8_t invert = 0;                    // non-zero: the mask is inverted after rendering
    std::int32_t opacity = 65536;               // 16.16, 0 (clear) to 65536 (opaque)
    std::uint8_t variable_feather_option = 0;   // 0: smooth falloff of a variable-width feather; else linear
    std::uint8_t quality = 0;                   // 0 draft, 1 best
    const GW_ProgressInfo* progress = nullptr;  // may be null
};
