#pragma once

#include <cmath>
#include <concepts>
#include <cstdint>
#include <limits>
#include <new>

/// The nearest single-precision value; out of range becomes an infinity.
inline float NarrowToFloat(double value) { return static_cast<float>(value); }

/// `value` cut off towards zero and held inside the range of `Int`; NaN becomes 0.
template <std::signed_integral Int>
Int TruncateTo(double value) {
    constexpr double low = static_cast<double>(std::numeric_limits<Int>::min());
    constexpr double high = -low;  // one past the largest value, exact in double
    if (std::isnan(value)) return 0;
    if (value < low) return std::numeric_limits<Int>::min();
    if (value >= high) return std::numeric_limits<Int>::max();
    return static_cast<Int>(value);
}

inline std::int32_t FloorToInt(double value) { return TruncateTo<std::int32_t>(std::floor(value)); }
inline std::int32_t CeilToInt(double value) { return TruncateTo<std::int32_t>(std::ceil(value)); }

/// `value` held inside the 32-bit range.
inline std::int32_t SaturateToInt(std::int64_t value) {
    if (value < std::numeric_limits<std::int32_t>::min()) return std::numeric_limits<std::int32_t>::min();
    if (value > std::numeric_limits<std::int32_t>::max()) return std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(value);
}

/// A count of bytes or samples as the 32-bit number the host takes.
/// @throws std::bad_alloc when it does not fit: no such block can be had
inline std::int32_t CheckedCount(std::int64_t value) {
    if (value < 0 || value > std::numeric_limits<std::int32_t>::max()) throw std::bad_alloc();
    return static_cast<std::int32_t>(value);
}
