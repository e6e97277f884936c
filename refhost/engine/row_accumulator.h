#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace refhost {

// The scan converter's fixed point: 1/1024 pixel in both directions.
inline constexpr int kSubBits = 10;
inline constexpr std::int32_t kSubOne = 1 << kSubBits;

/// Twice the area, in square sub-units, of a pixel wholly inside one winding.
inline constexpr std::int32_t kFullArea = 2 * kSubOne * kSubOne;

/// The part of a line that lies in one pixel row, sub-units; y counts from the row's top, y_top < y_bottom.
struct RowPiece {
    std::int32_t x_top, x_bottom;
    std::int32_t y_top, y_bottom;
    std::int32_t winding;  // what it adds to the winding number on its right: 1 or -1
};

/// What a line does to the filled area when the winding number goes from `left` to `right` there: 1 enters it, -1 leaves it.
inline std::int32_t SideOf(std::int32_t left, std::int32_t right) {
    return static_cast<std::int32_t>(right != 0) - static_cast<std::int32_t>(left != 0);
}

/// Sums the signed areas to the right of the pieces of one pixel row, column by column, from the left: what is drained takes no
/// more pieces. The sums are whole numbers: they do not depend on the order of the pieces, and pieces that cancel cancel exactly.
/// They wrap, so only winding numbers that end between -1024 and 1023 count.
class RowAccumulator {
 public:
    /// Makes room for pixel columns 0 to `columns` - 1. All sums are zero, as after `Clear`.
    void Reset(std::int32_t columns);

    /// `piece` reaches from x 0 to `columns` * kSubOne at most.
    void Add(const RowPiece& piece);

    /// Calls `span(area, end)` for stretches of equal winding area, left to right, from where the call before stopped up to
    /// `column`. `area` is the mean winding number over each pixel times kFullArea.
    template <class Span>
    void DrainBefore(std::int32_t column, Span span);
    /// To be called when all columns are drained.
    void Clear();

 private:
    static void AddCell(std::uint32_t* sum, std::int32_t height, std::int32_t twice_from_left);
    void AddAcross(std::int32_t low, std::int32_t high, std::int32_t height);

    std::int32_t columns_ = 0;
    std::int32_t drained_ = 0;         // columns
    std::int32_t written_ = 0;         // no sum from here on was written
    std::uint32_t area_ = 0;           // of the last drained column
    std::vector<std::uint32_t> sums_;  // change of the winding area from one column to the next
};

inline void RowAccumulator::Add(const RowPiece& piece) {
    const std::int32_t height = piece.winding * (piece.y_bottom - piece.y_top);
    const std::int32_t low = std::min(piece.x_top, piece.x_bottom);
    const std::int32_t high = std::max(piece.x_top, piece.x_bottom);
    const std::int32_t column = low >> kSubBits;
    const std::int32_t left = column << kSubBits;
    if (high <= left + kSubOne) {
        AddCell(&sums_[static_cast<std::size_t>(column)], height, (low - left) + (high - left));
        written_ = std::max(written_, column + 2);
    } else {
        AddAcross(low, high, height);
    }
}

/// A piece inside one column covers the part of the pixel right of it and, with its whole height, every pixel after that.
inline void RowAccumulator::AddCell(std::uint32_t* sum, std::int32_t height, std::int32_t twice_from_left) {
    const std::int32_t passed_on = height * twice_from_left;
    sum[0] += static_cast<std::uint32_t>(height * 2 * kSubOne - passed_on);
    sum[1] += static_cast<std::uint32_t>(passed_on);
}

/// Works on copies of the members: bytes that `span` writes could otherwise be theirs, as far as the compiler can tell.
template <class Span>
void RowAccumulator::DrainBefore(std::int32_t column, Span span) {
    std::uint32_t* const sums = sums_.data();
    const std::int32_t written = written_;
    std::int32_t drained = drained_;
    std::uint32_t area = area_;
    while (drained < column) {
        if (drained < written) area += std::exchange(sums[drained], 0);
        drained = drained + 1 < written ? drained + 1 : column;
        span(static_cast<std::int32_t>(area), drained);
    }
    drained_ = drained;
    area_ = area;
}

}  // namespace refhost
