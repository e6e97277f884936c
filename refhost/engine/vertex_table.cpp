#include "refhost/engine/vertex_table.h"

namespace refhost {

std::uint32_t VertexTable::IdOf(GridPoint p) {
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t slot = SlotOf(p);; slot = (slot + 1) & mask) {
        if (slots_[slot] == kFree) {
            slots_[slot] = static_cast<std::uint32_t>(points_.size());
            points_.push_back(p);
            if (2 * points_.size() > slots_.size()) Grow();
            return static_cast<std::uint32_t>(points_.size() - 1);
        }
        if (points_[slots_[slot]] == p) return slots_[slot];
    }
}

void VertexTable::Grow() {
    slots_.assign(2 * slots_.size(), kFree);
    --shift_;
    for (std::uint32_t id = 0; id < points_.size(); ++id) {
        std::size_t slot = SlotOf(points_[id]);
        while (slots_[slot] != kFree) slot = (slot + 1) & (slots_.size() - 1);
        slots_[slot] = id;
    }
}

// The high bits of a product with 2^64 over the golden ratio are well mixed (Knuth, vol. 3, 6.4).
std::size_t VertexTable::SlotOf(GridPoint p) const {
    const std::uint64_t key = std::uint64_t{static_cast<std::uint32_t>(p.x)} << 32 | static_cast<std::uint32_t>(p.y);
    return (key * 0x9E3779B97F4A7C15U) >> shift_;
}

}  // namespace refhost
