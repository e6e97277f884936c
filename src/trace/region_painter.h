#pragma once

#include <cstdint>
#include <vector>

#include "trace/pixel_map.h"
#include "trace/trace.h"

/// The bitmap of a trace with `colours` for its regions. Time grows with pixels plus boundary steps.
RPPixelMap PaintRegions(const RPTrace& trace, const std::vector<std::uint8_t>& colours);
