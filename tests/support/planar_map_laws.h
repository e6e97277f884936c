#pragma once

#include <string>

#include "trace/pixel_map.h"
#include "trace/trace.h"

namespace support {

/// Names the first law of planar maps that `trace` breaks as the trace of `pixels`; empty when it keeps them all. Decides
/// everything from the pixels, not by tracing: regions by flooding them, holes by flooding what is not of a region.
/// Time grows with pixels times holes.
std::string BrokenLaw(const RPPixelMap& pixels, const RPTrace& trace);

}  // namespace support
