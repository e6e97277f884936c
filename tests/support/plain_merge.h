#pragma once

#include <cstdint>

#include "trace/pixel_map.h"
#include "trace/trace.h"

namespace support {

/// The bitmap that `RPMergeSmallRegions` would leave of `pixels`, found slowly: in final colour numbers of the thread's
/// palette, with the joins that are left. `trace` is the latest trace of `pixels`.
RPPixelMap PlainMerge(const RPPixelMap& pixels, const RPTrace& trace, std::int32_t minimum_area);

}  // namespace support
