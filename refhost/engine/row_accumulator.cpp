#include "refhost/engine/row_accumulator.h"

namespace refhost {

/// Pieces on the right border write one column past it, and pass on to the next.
void RowAccumulator::Reset(std::int32_t columns) {
    columns_ = columns;
    const std::size_t written = static_cast<std::size_t>(columns) + 2;
    const std::size_t words = written / kWord + 1;
    sums_.assign(written, 0);
    dirty_.assign(words, 0);
    dirty_words_.assign(words / kWord + 1, 0);
}

/// Shares the height out by where the piece meets the column borders; the last column takes what is left, so nothing is lost.
void RowAccumulator::AddAcross(std::int32_t low, std::int32_t high, std::int32_t height) {
    const double slope = static_cast<double>(height) / (high - low);
    const double rounding = height < 0 ? -0.5 : 0.5;
    std::int32_t used = 0;
    std::int32_t from = low;
    for (std::int32_t left = low & -kSubOne; from < high; left += kSubOne) {
        const std::int32_t to = std::min(left + kSubOne, high);
        const std::int32_t reached = to == high ? height : static_cast<std::int32_t>(slope * (to - low) + rounding);
        AddCell(left >> kSubBits, reached - used, (from - left) + (to - left));
        used = reached;
        from = to;
    }
}

}  // namespace refhost
