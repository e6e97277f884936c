#pragma once

#include <bit>
#include <cstdint>
#include <utility>
#include <vector>

#include "refhost/engine/grid.h"

namespace refhost {

/// Gives grid points consecutive ids in order of first appearance. Open addressing, at most half full.
class VertexTable {
 public:
    explicit VertexTable(std::size_t expected)
        : slots_(std::bit_ceil(2 * expected + 2), kFree), shift_(64 - std::countr_zero(slots_.size())) {}

    std::uint32_t IdOf(GridPoint p);
    /// All points, by id.
    std::vector<GridPoint> TakePoints() && { return std::move(points_); }

 private:
    static constexpr std::uint32_t kFree = 0xFFFFFFFF;

    void Grow();
    std::size_t SlotOf(GridPoint p) const;

    std::vector<std::uint32_t> slots_;
    int shift_;
    std::vector<GridPoint> points_;
};

}  // namespace refhost
