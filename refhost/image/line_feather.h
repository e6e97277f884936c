#pragma once

#include <cstdint>

#include "base/export.h"
#include "refhost/services/status.h"

// The feather of one line of coverage, the way `GW_FeatherLineProc` asks for it.
//
// The kernel is a chain of equal fractional boxes: two for `quality` 0, up to four otherwise. Its variance is r^2 / 3 either way,
// so quality changes the shape of the soft edge and not its width, and it reaches no further than 2 * ceil(r) samples.
// Samples outside the line count as 0. Plateaus wider than the reach keep their value exactly.

namespace refhost {

/// Feathers the first `length` samples of `line` in place by `radius` (16.16 pixels). `lo` and `hi` only bound what is written,
/// the samples within reach of [lo, hi): coverage outside them is read as it is. `scratch` is not needed and stays as it was. Any
/// thread may call at any time; each keeps its working memory from call to call.
/// @return 0, `kStatusBadArgument` with the line as it was, or `kStatusNoMemory` with the line feathered in parts
VRL_HOST_API int FeatherLine8(unsigned char quality, std::int32_t length, std::int32_t lo, std::int32_t hi, std::int32_t radius,
                              void* scratch, void* line);
VRL_HOST_API int FeatherLine16(unsigned char quality, std::int32_t length, std::int32_t lo, std::int32_t hi, std::int32_t radius,
                               void* scratch, void* line);

}  // namespace refhost
