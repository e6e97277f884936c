#pragma once

#include <cstdint>

#include "trace/corner_grid.h"

/// Finds the vertex at a corner of the pixel lattice, in constant time.
class RPVertexDictionary {
 public:
    /// Corners run from (0, 0) to (lattice_width - 1, lattice_height - 1).
    RPVertexDictionary(std::int32_t lattice_height, std::int32_t lattice_width);
    virtual ~RPVertexDictionary() = default;

    /// The number of the vertex at a corner, or kNone.
    /// @throws int  kBrokenInvariant for a corner off the lattice
    std::int32_t Find(std::int32_t x, std::int32_t y) const;
    /// @throws int  kBrokenInvariant for a corner off the lattice
    void Insert(std::int32_t x, std::int32_t y, std::int32_t vertex);
    /// The rows above `y` are not asked for again.
    void ReleaseAbove(std::int32_t y) { vertices_.ReleaseAbove(y); }

 private:
    void CheckCorner(std::int32_t x, std::int32_t y) const;

    std::int32_t height_, width_;
    RPCornerGrid vertices_;
};
