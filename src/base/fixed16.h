#pragma once

#include <cstdint>

// 16.16 fixed point: feather radii, expansion and opacity cross the mask interface in it.
inline constexpr std::int32_t kFixedOne = 65536;  // one pixel, or full opacity

/// The number a 16.16 value stands for, exact.
constexpr double FixedToDouble(std::int32_t value) { return static_cast<double>(value) / kFixedOne; }
