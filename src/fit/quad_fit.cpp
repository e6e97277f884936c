#include "fit/quad_fit.h"

#include <array>
#include <cstddef>

#include "base/narrow.h"
#include "fit/linear_solver.h"

namespace {

constexpr std::int32_t kFewestPointsForCurve = 3;

CFBezier2 StraightLine(CFPoint from, CFPoint to) { return {from, (from + to) * 0.5F, to}; }

/// The normal equations of `kUnknowns` control points, the same for x and y, summed up in double.
template <std::size_t kUnknowns>
class NormalEquations {
 public:
    using Weights = std::array<double, kUnknowns>;  // of the unknown control points in one point of the curve

    void Add(const Weights& weights, CFPoint point) {
        const auto x = static_cast<double>(point.x), y = static_cast<double>(point.y);
        for (std::size_t i = 0; i < kUnknowns; ++i) {
            for (std::size_t j = 0; j <= i; ++j) matrix_[i * kUnknowns + j] += weights[i] * weights[j];
            xs_[i] += weights[i] * x;
            ys_[i] += weights[i] * y;
        }
    }

    /// The control points; no value when the equations are singular.
    std::optional<std::array<CFPoint, kUnknowns>> Solution() const {
        CFVectorX<float> matrix(kUnknowns * kUnknowns), rhs(2 * kUnknowns);
        for (std::size_t i = 0; i < kUnknowns; ++i) {
            for (std::size_t j = 0; j <= i; ++j) {
                matrix[i * kUnknowns + j] = matrix[j * kUnknowns + i] = NarrowToFloat(matrix_[i * kUnknowns + j]);
            }
            rhs[i] = NarrowToFloat(xs_[i]);
            rhs[kUnknowns + i] = NarrowToFloat(ys_[i]);
        }
        if (!Solve(matrix, rhs)) return std::nullopt;
        std::array<CFPoint, kUnknowns> points;
        for (std::size_t i = 0; i < kUnknowns; ++i) points[i] = {rhs[i], rhs[kUnknowns + i]};
        return points;
    }

 private:
    std::array<double, kUnknowns * kUnknowns> matrix_{};  // on and below the diagonal: it is symmetric
    Weights xs_{}, ys_{};
};

/// The weights of the three control points at parameter `t`.
std::array<double, 3> Bernstein(float parameter) {
    const auto t = static_cast<double>(parameter);
    const double s = 1.0 - t;
    return {s * s, 2.0 * t * s, t * t};
}

/// The curve of one side that ends at its last point (or starts at its first one with `from_start`). Coordinates are taken
/// from that point, so its own term drops out and far-off outlines keep their digits.
std::optional<CFBezier2> FitSide(const CFQuadRange& range, bool from_start) {
    const CFPoint first = range.Point(0), last = range.Point(range.Count() - 1);
    if (range.Count() < kFewestPointsForCurve) return StraightLine(first, last);
    const CFPoint fixed = from_start ? first : last;
    NormalEquations<2> equations;
    for (std::int32_t j = 0; j < range.Count(); ++j) {
        const auto [w0, w1, w2] = Bernstein(range.Parameter(j));
        equations.Add({from_start ? w1 : w0, from_start ? w2 : w1}, range.Point(j) - fixed);
    }
    const auto free = equations.Solution();
    if (!free) return std::nullopt;
    const CFPoint a = fixed + (*free)[0], b = fixed + (*free)[1];
    return from_start ? CFBezier2(fixed, a, b) : CFBezier2(a, b, fixed);
}

}  // namespace

CFBezier2 FitQuadratic(const CF1QuadView& view) {
    const CFQuadRange& range = view.Range();
    const CFPoint origin = range.Point(view.Centre());  // far-off outlines keep their digits
    NormalEquations<3> equations;
    for (std::int32_t j = 0; j < range.Count(); ++j) {
        equations.Add(Bernstein(range.Parameter(j)), range.Point(j) - origin);
    }
    const auto points = equations.Solution();
    if (!points) return StraightLine(range.Point(0), range.Point(range.Count() - 1));
    return {origin + (*points)[0], origin + (*points)[1], origin + (*points)[2]};
}

std::optional<CFQuadPair> FitQuadratics(const CF2QuadView& view) {
    const std::optional<CFBezier2> left = FitSide(view.Left(), false);
    const std::optional<CFBezier2> right = FitSide(view.Right(), true);
    if (!left || !right) return std::nullopt;
    return CFQuadPair{*left, *right};
}
