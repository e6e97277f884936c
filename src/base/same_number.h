#pragma once

#include <cmath>

/// Numbers no further apart than this count as equal: what came through single precision is seldom exactly 0 or 1.
inline constexpr double kSameNumber = 1e-6;

/// False when either is no number.
inline bool IsSameNumber(double a, double b) { return std::abs(a - b) <= kSameNumber; }
