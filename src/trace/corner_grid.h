#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/// Stands for no region (which on an edge's side is the outside of the image), no edge, no vertex, no hole.
inline constexpr std::int32_t kNone = -1;

/// A number for every corner of a pixel lattice, kNone where none has been set. The numbers live in square blocks, which
/// suit walks in all directions and come into being when first written to, so that memory follows what is written. A scan
/// that goes down the lattice gives the blocks behind it back for use ahead of it.
class RPCornerGrid {
 public:
    RPCornerGrid(std::int32_t height, std::int32_t width);

    std::int32_t At(std::int32_t x, std::int32_t y) const {
        const auto& block = blocks_[BlockOf(x, y)];
        return block ? (*block)[PlaceOf(x, y)] : kNone;
    }
    void Set(std::int32_t x, std::int32_t y, std::int32_t number) {
        auto& block = blocks_[BlockOf(x, y)];
        if (!block) block = NewBlock();
        (*block)[PlaceOf(x, y)] = number;
    }
    /// The rows above `y` are not used again. Their numbers may stay for a while.
    void ReleaseAbove(std::int32_t y) {
        if ((y >> kShift) > first_row_) ReleaseBlocksAbove(y >> kShift);
    }

 private:
    static constexpr int kShift = 5;  // 32 x 32 corners, 4 KiB a block
    static constexpr std::int32_t kSide = 1 << kShift;
    using Block = std::array<std::int32_t, std::size_t{kSide} * kSide>;

    std::size_t BlockOf(std::int32_t x, std::int32_t y) const {
        return static_cast<std::size_t>(y >> kShift) * blocks_across_ + static_cast<std::size_t>(x >> kShift);
    }
    static std::size_t PlaceOf(std::int32_t x, std::int32_t y) {
        return static_cast<std::size_t>((y & (kSide - 1)) * kSide + (x & (kSide - 1)));
    }
    std::unique_ptr<Block> NewBlock();
    void ReleaseBlocksAbove(std::int32_t block_row);

    std::size_t blocks_across_;
    std::vector<std::unique_ptr<Block>> blocks_;  // row by row
    std::vector<std::unique_ptr<Block>> spare_;
    std::int32_t first_row_ = 0;  // of blocks that are not released
};
