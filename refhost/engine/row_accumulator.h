#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
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

/// Sums the signed areas to the right of the pieces of one pixel row, column by column. The sums are whole numbers: they do not
/// depend on the order of the pieces, and pieces that cancel cancel exactly. They wrap silently; results are right while
/// winding numbers stay below 1024.
class RowAccumulator {
 public:
    /// Makes room for pixel columns 0 to `columns` - 1. All sums are zero, as after `Drain`.
    void Reset(std::int32_t columns);

    /// `piece` reaches from x 0 to `columns` * kSubOne at most.
    void Add(const RowPiece& piece);

    /// Calls `span(area, end)` for stretches of equal winding area, left to right up to the last column, and clears the row.
    /// `area` is the mean winding number over each pixel times kFullArea.
    template <class Span>
    void Drain(Span span);

 private:
    static constexpr std::int32_t kWord = 64;  // columns per word of `dirty_`, and its words per word of `dirty_words_`

    void AddCell(std::int32_t column, std::int32_t height, std::int32_t twice_from_left);
    void AddAcross(std::int32_t low, std::int32_t high, std::int32_t height);
    void MarkPair(std::int32_t column);
    void Mark(std::int32_t column);

    std::int32_t columns_ = 0;
    std::vector<std::uint32_t> sums_;         // change of the winding area from one column to the next
    std::vector<std::uint64_t> dirty_;        // a bit per column: its sum was written
    std::vector<std::uint64_t> dirty_words_;  // a bit per word of `dirty_`
};

inline void RowAccumulator::Add(const RowPiece& piece) {
    const std::int32_t height = piece.winding * (piece.y_bottom - piece.y_top);
    const std::int32_t low = std::min(piece.x_top, piece.x_bottom);
    const std::int32_t high = std::max(piece.x_top, piece.x_bottom);
    const std::int32_t column = low >> kSubBits;
    const std::int32_t left = column << kSubBits;
    if (high <= left + kSubOne)
        AddCell(column, height, (low - left) + (high - left));
    else
        AddAcross(low, high, height);
}

/// A piece inside one column covers the part of the pixel right of it and, with its whole height, every pixel after that.
inline void RowAccumulator::AddCell(std::int32_t column, std::int32_t height, std::int32_t twice_from_left) {
    const std::int32_t passed_on = height * twice_from_left;
    const auto at = static_cast<std::size_t>(column);
    sums_[at] += static_cast<std::uint32_t>(height * 2 * kSubOne - passed_on);
    sums_[at + 1] += static_cast<std::uint32_t>(passed_on);
    MarkPair(column);
}

inline void RowAccumulator::MarkPair(std::int32_t column) {
    const std::int32_t bit = column % kWord;
    const std::int32_t word = column / kWord;
    dirty_[static_cast<std::size_t>(word)] |= std::uint64_t{3} << bit;
    dirty_words_[static_cast<std::size_t>(word / kWord)] |= std::uint64_t{1} << (word % kWord);
    if (bit == kWord - 1) Mark(column + 1);
}

inline void RowAccumulator::Mark(std::int32_t column) {
    const std::int32_t word = column / kWord;
    dirty_[static_cast<std::size_t>(word)] |= std::uint64_t{1} << (column % kWord);
    dirty_words_[static_cast<std::size_t>(word / kWord)] |= std::uint64_t{1} << (word % kWord);
}

template <class Span>
void RowAccumulator::Drain(Span span) {
    std::uint32_t area = 0;
    std::int32_t done = 0;
    const auto advance = [&](std::int32_t column) {
        if (column > done) span(static_cast<std::int32_t>(area), column);
        done = column;
    };
    for (std::size_t group = 0; group < dirty_words_.size(); ++group) {
        for (; dirty_words_[group] != 0; dirty_words_[group] &= dirty_words_[group] - 1) {
            const std::size_t word = group * kWord + static_cast<std::size_t>(std::countr_zero(dirty_words_[group]));
            for (std::uint64_t bits = dirty_[word]; bits != 0; bits &= bits - 1) {
                const std::size_t column = word * kWord + static_cast<std::size_t>(std::countr_zero(bits));
                advance(std::min(static_cast<std::int32_t>(column), columns_));
                area += sums_[column];
                sums_[column] = 0;
            }
            dirty_[word] = 0;
        }
    }
    advance(columns_);
}

}  // namespace refhost
