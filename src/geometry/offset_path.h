#pragma once

#include <cstdint>

#include "api/join.h"
#include "host/grx_path.h"
#include "host/shape.h"

/// Replaces `path` by the outline of `shape` grown by `distance` pixels, shrunk when it is negative. Distances are
/// measured in a space scaled horizontally by 1 / `pixel_aspect`, which must not be 0: one unit spans `pixel_aspect`
/// stored pixels across and one down. `quality` is accepted and not consulted. Returns 0; failures are raised.
/// @throws int, CNUBError, QELException, std::bad_alloc  as the host and its engine fail; `path` then holds
/// what it held before the step that failed
std::int32_t VRLp_OffsetShapePath(const DY_Shape& shape, bool quality, double distance, double pixel_aspect, VRL_Join join,
                                  CGRXPath& path);
