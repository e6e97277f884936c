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

/// A corner of the flattened outline, in sub-units from the area's left top corner. x stays inside the area, y may leave it.
struct OutlineVertex {
    std::int32_t x, y;
};

/// Lines that follow each other downwards, each starting at the height where the one before ends: every height between the ends
/// of the chain meets it once. Two vertices of equal height are a step to the side. It starts above the area's foot and ends
/// below its top.
struct OutlineChain {
    std::int32_t first, last;  // vertices, at least two; `first` is the uppermost
    std::int32_t winding;      // 1 when the outline runs down, -1 when it runs up; also the step from vertex to vertex
    std::int32_t next;         // free for the user of the chain
};

/// The lines of an outline, in outline order.
struct OutlineLines {
    std::vector<OutlineVertex> vertices;
    std::vector<OutlineChain> chains;

    void Clear();
};

/// Flattens the outline and cuts it into lines. Parts above, below and right of the area are left out; parts
/// left of it become lines on its left border, for they wind round every pixel of their rows. Rounding does not depend on
/// `area.top` and `area.bottom`.
/// `operators` make a path, one for each of the finite `points`; `area` measures a million columns and rows at most.
void AppendOutlineLines(std::span<const PIVPointType> operators, std::span<const Point> points, double tolerance,
                        const FillArea& area, OutlineLines& outline);

}  // namespace refhost
