#pragma once

#include <cmath>
#include <string_view>
#include <vector>

#include "fuzz/require.h"
#include "tool/failure.h"
#include "tool/outline.h"
#include "tool/shape_record.h"

namespace fuzz {

inline bool IsFinite(const vrltool::Point& p) { return std::isfinite(p.x) && std::isfinite(p.y); }

/// The shapes that a reader finds in a text, whose points must be finite; none when it refuses the text.
template <class Read>
std::vector<vrltool::ShapeRecord> ShapesIn(const std::uint8_t* data, std::size_t size, Read read) {
    std::vector<vrltool::ShapeRecord> records;
    try {
        records = read(std::string_view(reinterpret_cast<const char*>(data), size));
    } catch (const vrltool::Failure&) {
    }
    for (const vrltool::ShapeRecord& record : records) {
        for (const auto& [in, anchor, out] : vrltool::OutlineOf(*record.shape).vertices) {
            Require(IsFinite(in) && IsFinite(anchor) && IsFinite(out), "points are finite");
        }
    }
    return records;
}

}  // namespace fuzz
