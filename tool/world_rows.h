#pragma once

#include <cstdint>
#include <span>

#include "host/world.h"

namespace vrltool {

inline constexpr std::int32_t kComponents = 4;  // of a world's pixel: alpha, red, green, blue

/// The components of row `y`, pixel after pixel.
template <class P>
std::span<P> RowOf(const GW_World& world, std::int32_t y) {
    auto* const bytes = static_cast<std::uint8_t*>(world.data) + std::int64_t{y} * world.row_bytes;
    return {reinterpret_cast<P*>(bytes), static_cast<std::size_t>(world.width) * kComponents};
}

inline bool IsDeep(const GW_World& world) { return world.Depth() == kDeepDepth; }

}  // namespace vrltool
