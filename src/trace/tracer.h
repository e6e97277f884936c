#pragma once

#include "trace/pixel_map.h"
#include "trace/trace.h"

/// Fills `trace` with the regions, holes and finished graph of `pixels`, in place of what it held. Region colours are the
/// colour numbers of the pixels. Where the map joins a diagonal pair the walk crosses to the other pixel of the pair, the
/// corner is no junction for anybody, and the vertex there (if another edge needs one) records the pair.
/// One pass over the colour changes of each row: time and memory grow with pixels plus crack edges.
void RPTracePixels(const RPPixelMap& pixels, RPTrace& trace);
