#pragma once

#include <cmath>

/// A point or a vector in pixels, x right, y down.
struct CFPoint {
    float x = 0.0F, y = 0.0F;

    friend bool operator==(const CFPoint&, const CFPoint&) = default;
    friend CFPoint operator+(CFPoint a, CFPoint b) { return {a.x + b.x, a.y + b.y}; }
    friend CFPoint operator-(CFPoint a, CFPoint b) { return {a.x - b.x, a.y - b.y}; }
    friend CFPoint operator*(CFPoint a, float factor) { return {a.x * factor, a.y * factor}; }
};

/// Points no further apart than this in either coordinate count as one. Pixels; from 16 pixels up a float step is larger,
/// so there it means equal.
inline constexpr float kSamePoint = 1e-6F;

inline bool IsSamePoint(CFPoint a, CFPoint b) { return std::abs(a.x - b.x) <= kSamePoint && std::abs(a.y - b.y) <= kSamePoint; }
