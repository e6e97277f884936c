#pragma once

#include <cstdint>

#include "base/export.h"

/// One step of a parallel iteration. Indexes of threads start at 0, which is the caller's thread. It must not throw.
using GW_IterateStep = int (*)(void* context, std::int32_t thread_index, std::int32_t index);

/// Calls `step` for every index from 0 to `count` - 1, on several threads at once and in any order, and returns when all
/// are done. The first non-zero status is returned and keeps further steps from starting.
VRL_HOST_API int GW_IterateGeneric(std::int32_t count, void* context, GW_IterateStep step);
