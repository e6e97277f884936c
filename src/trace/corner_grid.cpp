#include "trace/corner_grid.h"

#include <utility>

RPCornerGrid::RPCornerGrid(std::int32_t height, std::int32_t width)
    : blocks_across_(static_cast<std::size_t>((width + kSide - 1) >> kShift)),
      blocks_(static_cast<std::size_t>((height + kSide - 1) >> kShift) * blocks_across_) {}

std::unique_ptr<RPCornerGrid::Block> RPCornerGrid::NewBlock() {
    std::unique_ptr<Block> block;
    if (spare_.empty()) {
        block.reset(new Block);  // filled below
    } else {
        block = std::move(spare_.back());
        spare_.pop_back();
    }
    block->fill(kNone);
    return block;
}

void RPCornerGrid::ReleaseBlocksAbove(std::int32_t block_row) {
    const auto first = static_cast<std::size_t>(first_row_) * blocks_across_;
    const auto last = static_cast<std::size_t>(block_row) * blocks_across_;
    for (std::size_t i = first; i < last; ++i) {
        if (blocks_[i]) spare_.push_back(std::move(blocks_[i]));
    }
    first_row_ = block_row;
}
