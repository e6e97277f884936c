#pragma once

#include <cstddef>
#include <span>

#include "host/engine.h"

namespace refhost {

/// Points and operators of a path, borrowed: entry k is point k with operator k.
struct PathView {
    std::span<const M_Vector2T<float>> points;
    std::span<const PIVPointType> operators;

    std::size_t Size() const { return points.size(); }
};

/// Makes sure that curves come in threes and that nothing is drawn before the first move.
/// @throws EngineError  kErrorBadPath
void CheckOperators(const PathView& path);

/// A point in the engine's working precision, pixels, x right, y down.
struct Point {
    double x, y;
    friend bool operator==(const Point&, const Point&) = default;
};

inline Point Map(const PIVMatrix& m, M_Vector2T<float> p) {
    const double x = static_cast<double>(p.x);
    const double y = static_cast<double>(p.y);
    return {static_cast<double>(m.a) * x + static_cast<double>(m.c) * y + static_cast<double>(m.tx),
            static_cast<double>(m.b) * x + static_cast<double>(m.d) * y + static_cast<double>(m.ty)};
}

}  // namespace refhost
