#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "tool/outline.h"

namespace vrltool {

/// Finite floats of every magnitude, as likely as their bit patterns.
inline double RandomFloat(std::mt19937& random) {
    for (;;) {
        const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (std::isfinite(value)) return static_cast<double>(value);
    }
}

/// An outline of `size` vertices, coordinates from `number`.
template <class Number>
Outline RandomOutline(std::size_t size, bool closed, Number number) {
    const auto point = [&] {
        const double x = number();
        return Point{x, number()};
    };
    Outline outline;
    outline.closed = closed;
    for (std::size_t i = 0; i < size; ++i) {
        const Point in = point(), anchor = point();
        outline.vertices.push_back({in, anchor, point()});
    }
    return outline;
}

inline std::vector<std::uint32_t> PointBits(const DY_Shape& shape) {
    std::vector<std::uint32_t> bits;
    for (int i = 0; i < (*shape.GetPoints())->count; ++i) {
        WEX_Item item{};
        WEX_GetItem(shape.GetPoints(), i, &item);
        bits.push_back(std::bit_cast<std::uint32_t>(item.x));
        bits.push_back(std::bit_cast<std::uint32_t>(item.y));
    }
    return bits;
}

}  // namespace vrltool
