#pragma once

#include <algorithm>
#include <bit>
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
    static constexpr int kWordBits = 6;  // a word of `dirty_` is for 64 columns, one of `dirty_words_` for 64 such words
    static constexpr std::int32_t kInWord = (1 << kWordBits) - 1;
    static constexpr std::uint64_t kAllColumns = ~std::uint64_t{0};

    static void AddCell(std::uint32_t* sum, std::int32_t height, std::int32_t twice_from_left);
    void AddAcross(std::int32_t low, std::int32_t high, std::int32_t height);
    void Mark(std::int32_t first, std::int32_t last);
    void MarkWord(std::int32_t word, std::uint64_t columns);
    void ForgetBehind();

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
    if (high <= left + kSubOne) {
        AddCell(&sums_[static_cast<std::size_t>(column)], height, (low - left) + (high - left));
        Mark(column, column + 1);
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

inline void RowAccumulator::Mark(std::int32_t first, std::int32_t last) {
    const std::int32_t first_word = first >> kWordBits;
    const std::int32_t last_word = last >> kWordBits;
    const std::uint64_t from_first = kAllColumns << (first & kInWord);
    const std::uint64_t to_last = kAllColumns >> (kInWord - (last & kInWord));
    if (first_word == last_word) {
        MarkWord(first_word, from_first & to_last);
        return;
    }
    MarkWord(first_word, from_first);
    for (std::int32_t word = first_word + 1; word < last_word; ++word) MarkWord(word, kAllColumns);
    MarkWord(last_word, to_last);
}

inline void RowAccumulator::MarkWord(std::int32_t word, std::uint64_t columns) {
    dirty_[static_cast<std::size_t>(word)] |= columns;
    dirty_words_[static_cast<std::size_t>(word >> kWordBits)] |= std::uint64_t{1} << (word & kInWord);
}

/// What the right border passed on to columns that do not exist.
inline void RowAccumulator::ForgetBehind() {
    for (const std::int32_t column : {columns_, columns_ + 1}) {
        sums_[static_cast<std::size_t>(column)] = 0;
        dirty_[static_cast<std::size_t>(column >> kWordBits)] &= ~(std::uint64_t{1} << (column & kInWord));
    }
}

/// Works on copies of the members: bytes that `span` writes could otherwise be theirs, as far as the compiler can tell.
template <class Span>
void RowAccumulator::Drain(Span span) {
    ForgetBehind();
    std::uint32_t* const sums = sums_.data();
    std::uint64_t* const dirty = dirty_.data();
    std::uint32_t area = 0;
    std::int32_t done = 0;
    for (std::size_t group = 0; group < dirty_words_.size(); ++group) {
        for (std::uint64_t words = std::exchange(dirty_words_[group], 0); words != 0; words &= words - 1) {
            const std::int32_t word = (static_cast<std::int32_t>(group) << kWordBits) + std::countr_zero(words);
            for (std::uint64_t bits = std::exchange(dirty[word], 0); bits != 0; bits &= bits - 1) {
                const std::int32_t column = (word << kWordBits) + std::countr_zero(bits);
                if (column > done) span(static_cast<std::int32_t>(area), column);
                done = column;
                area += std::exchange(sums[column], 0);
            }
        }
    }
    if (columns_ > done) span(static_cast<std::int32_t>(area), columns_);
}

}  // namespace refhost
