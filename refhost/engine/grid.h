#pragma once

#include <algorithm>
#include <cstdint>

namespace refhost {

/// A point of the integer grid on which everything is intersected.
struct GridPoint {
    std::int32_t x, y;
    friend bool operator==(GridPoint, GridPoint) = default;
};

inline constexpr std::int32_t kLargestGridCoordinate = 1 << 29;  // either sign; products of differences stay within 64 bits

/// A directed segment between two different grid points.
struct GridSegment {
    GridPoint from, to;
};

/// From one grid point to another.
struct GridVector {
    std::int64_t x, y;
};

inline GridVector operator-(GridPoint a, GridPoint b) {
    return {std::int64_t{a.x} - std::int64_t{b.x}, std::int64_t{a.y} - std::int64_t{b.y}};
}
inline std::int64_t Cross(GridVector a, GridVector b) { return a.x * b.y - a.y * b.x; }
inline std::int64_t Dot(GridVector a, GridVector b) { return a.x * b.x + a.y * b.y; }
inline bool IsLeftOf(GridPoint a, GridPoint b) { return a.x < b.x || (a.x == b.x && a.y < b.y); }

/// A box of grid points, all four edges included.
struct GridBox {
    std::int32_t left, top, right, bottom;

    bool Overlaps(const GridBox& other) const {
        return left <= other.right && other.left <= right && top <= other.bottom && other.top <= bottom;
    }
    GridBox With(const GridBox& other) const {
        return {std::min(left, other.left), std::min(top, other.top), std::max(right, other.right),
                std::max(bottom, other.bottom)};
    }
    /// Width and height together.
    std::int64_t Extent() const { return std::int64_t{right} - left + bottom - top; }
};

inline GridBox BoxOf(GridPoint a, GridPoint b) {
    return {std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x), std::max(a.y, b.y)};
}

}  // namespace refhost
