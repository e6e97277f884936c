#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "host/engine.h"

/// Coverage of the filled outline in the device's box, 0 to 255, row by row. Nonzero winding; curves are cut into chords.
/// @throws std::bad_alloc
std::vector<std::uint8_t> Scan(std::span<const M_Vector2T<float>> points, const PIVPointType* operators,
                               const PIVDeviceRect& box);
