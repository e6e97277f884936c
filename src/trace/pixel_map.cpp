#include "trace/pixel_map.h"

#include <algorithm>

RPPixelMap::RPPixelMap(std::int32_t width, std::int32_t height)
    : width_(width),
      height_(height),
      pixels_(static_cast<std::size_t>(width + 2) * static_cast<std::size_t>(height + 2), kOutside) {}

void RPPixelMap::SetJoin(std::int32_t x, std::int32_t y, RPJoin join) {
    if (!HasJoins()) joins_.resize(static_cast<std::size_t>(width_ + 1) * static_cast<std::size_t>(height_ + 1), kJoinNone);
    joins_[Corner(x, y)] = join;
}
