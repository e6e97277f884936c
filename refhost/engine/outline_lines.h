#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "refhost/engine/flatten.h"
#include "refhost/engine/path_view.h"
#include "refhost/engine/row_accumulator.h"

namespace refhost {

/// The pixels a fill is worked out for: those of the device rectangle that the path can touch.
struct FillArea {
    std::int64_t left, top, right, bottom;

    bool IsEmpty() const { return left >= right || top >= bottom; }
    std::int32_t Columns() const { return static_cast<std::int32_t>(right - left); }
    std::int32_t Rows() const { return static_cast<std::int32_t>(bottom - top); }
};

/// A line of the flattened outline, in sub-units from the area's left top corner, upper end first. x stays inside the area, y
/// may leave it at both ends.
struct OutlineLine {
    std::int64_t slope;  // x per y, kSlopeBits of fraction, cut off towards zero
    std::int32_t x_top, y_top, x_bottom, y_bottom;
    std::int32_t winding;  // 1 when the outline runs down, -1 when it runs up
    std::int32_t next;     // free for the user of the line

    std::int32_t XAt(std::int32_t y) const;
    /// `row` is one the line passes.
    RowPiece PieceIn(std::int32_t row) const;
};
inline constexpr int kSlopeBits = 30;  // a line as tall as the largest area is off by a sub-unit at its foot

/// Flattens the outline and cuts it into lines, in outline order. Parts above, below and right of the area are left out; parts
/// left of it become lines on its left border, for they wind round every pixel of their rows. Rounding does not depend on
/// `area.top` and `area.bottom`.
/// `operators` make a path, one for each of the finite `points`; `area` measures a million columns and rows at most.
void AppendOutlineLines(std::span<const PIVPointType> operators, std::span<const Point> points, double tolerance,
                        const FillArea& area, std::vector<OutlineLine>& lines);

/// Rounding the product keeps x between the ends of the line, because the slope is never too steep.
inline std::int32_t OutlineLine::XAt(std::int32_t y) const {
    const std::int64_t run = slope * (y - y_top) + (std::int64_t{1} << (kSlopeBits - 1));
    return x_top + static_cast<std::int32_t>(run >> kSlopeBits);
}

inline RowPiece OutlineLine::PieceIn(std::int32_t row) const {
    const std::int32_t row_top = row * kSubOne;
    const std::int32_t row_bottom = row_top + kSubOne;
    const bool starts = y_top >= row_top;
    const bool ends = y_bottom <= row_bottom;
    return {starts ? x_top : XAt(row_top), ends ? x_bottom : XAt(row_bottom), starts ? y_top - row_top : 0,
            ends ? y_bottom - row_top : kSubOne, winding};
}

}  // namespace refhost
