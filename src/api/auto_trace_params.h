#pragma once

#include <cstddef>
#include <cstdint>

#include "host/geometry_records.h"

/// Which value of a pixel is compared with the threshold. Ranges in brackets; the threshold is 0 to 255 for all of them.
enum VRL_TraceChannel : std::int32_t {
    kVRLTraceLuminance = 1,   // (77 R + 151 G + 28 B) / 256 [0, 255]
    kVRLTraceRed = 2,         // [0, 255]
    kVRLTraceGreen = 3,       // [0, 255]
    kVRLTraceBlue = 4,        // [0, 255]
    kVRLTraceAlpha = 5,       // [0, 255]
    kVRLTraceHue = 6,         // the hue angle, 360 degrees to 32767 [0, 32766], -1 for greys
    kVRLTraceLightness = 7,   // (max + min) * 128 [0, 65280]
    kVRLTraceSaturation = 8,  // of the hue-lightness-saturation model [0, 32767]
    kVRLTraceValue = 9,       // max [0, 255]
};

/// How an image is turned into shapes. Filled by the caller, only read by the library.
struct VRL_AutoTraceParams {
    std::int32_t channel = kVRLTraceLuminance;   // VRL_TraceChannel
    float tolerance = 1;                         // pixels that a curve may stray from the outline
    float threshold = 50;                        // percent, 0 to 100: pixels not below it are set
    float blur_radius = 0;                       // pixels; 0 for no blur before the threshold
    std::uint8_t invert = 0;                     // non-zero: all components are complemented first
    const M_Matrix3* layer_transform = nullptr;  // maps all shapes of the list in the end; may be null
    float minimum_area = 0;                      // pixels, cut off to a whole number; smaller regions are merged into neighbours
    float corner_angle = 40;                     // percent of 180 degrees, 0 to 100: outlines that turn further have a corner
};

static_assert(offsetof(VRL_AutoTraceParams, invert) == 16 && offsetof(VRL_AutoTraceParams, layer_transform) == 24 &&
                  offsetof(VRL_AutoTraceParams, corner_angle) == 36 && sizeof(VRL_AutoTraceParams) == 40,
              "the host fixes the layout");
