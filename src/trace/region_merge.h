#pragma once

#include <cstdint>

#include "trace/trace.h"

/// Absorbs every region below `minimum_area` pixels (at least 1) into the neighbour whose colour is nearest, joins
/// checkerboard corners along one diagonal and unites neighbours of one colour. Afterwards the trace is as if the final
/// colours had been traced, with consecutive numbers.
/// @throws int  kFailedCheck without a trace, kBrokenInvariant for an inner inconsistency
void RPMergeSmallRegions(RPTrace* trace, std::int32_t minimum_area);
