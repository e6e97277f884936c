#pragma once

#include <string>

#include "trace/pixel_map.h"
#include "trace/trace.h"

namespace support {

/// What `RPTracePixels` does, slowly: labels the pixels first, then follows every boundary pixel by pixel, and finds edges
/// and vertices in maps.
void PlainTrace(const RPPixelMap& pixels, RPTrace& trace);

/// The first item in which two traces differ, both versions; empty when they are equal in all regions, holes, edges with
/// their steps, and vertices.
std::string DescribeDifference(const RPTrace& a, const RPTrace& b);

}  // namespace support
