#include "refhost/engine/row_accumulator.h"

namespace refhost {

/// Pieces on the right border write one column past it, and pass on to the next.
void RowAccumulator::Reset(std::int32_t columns) {
    columns_ = columns;
    sums_.assign(static_cast<std::size_t>(columns) + 2, 0);
}

/// The right border passes on to columns that do not exist.
void RowAccumulator::Clear() {
    sums_[static_cast<std::size_t>(columns_)] = 0;
    sums_[static_cast<std::size_t>(columns_) + 1] = 0;
    drained_ = 0;
    written_ = 0;
    area_ = 0;
}

/// Shares the height out by where the piece meets the column borders; the last column takes what is left, so nothing is lost.
void RowAccumulator::AddAcross(std::int32_t low, std::int32_t high, std::int32_t height) {
    constexpr int kBits = 30;
    constexpr std::int64_t kOne = std::int64_t{1} << kBits;
    const auto slope = static_cast<std::int64_t>(static_cast<double>(height * kOne) / (high - low));
    const auto height_at = [&](std::int32_t x) { return static_cast<std::int32_t>((slope * (x - low) + kOne / 2) >> kBits); };

    const std::int32_t first = low >> kSubBits;
    const std::int32_t last = (high - 1) >> kSubBits;
    std::uint32_t* sum = &sums_[static_cast<std::size_t>(first)];
    std::int32_t border = (first + 1) << kSubBits;
    std::int32_t reached = height_at(border);
    AddCell(sum, reached, low + 2 * kSubOne - border);
    for (std::int32_t column = first + 1; column < last; ++column) {
        border += kSubOne;
        const std::int32_t used = std::exchange(reached, height_at(border));
        AddCell(++sum, reached - used, kSubOne);
    }
    AddCell(++sum, height - reached, high - border);
    written_ = std::max(written_, last + 2);
}

}  // namespace refhost
