#pragma once

#include <string>

#include "trace/pixel_map.h"
#include "trace/trace.h"

namespace support {

/// Names the first law of planar maps that `trace` breaks as the trace of `pixels`: edges part the right pixels, and the rings of
/// a region enclose what hangs together. Empty when it keeps them all. Decides everything from the pixels, not by tracing.
std::string BrokenLaw(const RPPixelMap& pixels, const RPTrace& trace);

}  // namespace support
