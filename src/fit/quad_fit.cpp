#include "fit/quad_fit.h"

#include <array>
#include <cstddef>
#include <vector>

#include "base/narrow.h"
#include "fit/linear_factors.h"

// The normal equations of the unknown control points, the same for x and y, are summed up in double.

namespace {

constexpr std::int32_t kFewestPointsForCurve = 3;

CFBezier2 StraightLine(CFPoint from, CFPoint to) { return {from, (from + to) * 0.5F, to}; }

/// Of the unknown control points in one point of the curve.
template <std::size_t kUnknowns>
using Weights = std::array<double, kUnknowns>;

/// The weights of all three control points at a parameter.
Weights<3> Bernstein(float parameter) {
    const auto t = static_cast<double>(parameter);
    const double s = 1.0 - t;
    return {s * s, 2.0 * t * s, t * t};
}

template <std::size_t kUnknowns>
class NormalMatrix {
 public:
    void Add(const Weights<kUnknowns>& weights) {
        for (std::size_t i = 0; i < kUnknowns; ++i) {
            for (std::size_t j = 0; j <= i; ++j) sums_[i][j] += weights[i] * weights[j];
        }
    }

    /// False when the points leave the unknowns open.
    bool Decompose(CFLinearFactors<kUnknowns>& factors) const {
        float matrix[kUnknowns][kUnknowns];
        for (std::size_t i = 0; i < kUnknowns; ++i) {
            for (std::size_t j = 0; j <= i; ++j) matrix[i][j] = matrix[j][i] = NarrowToFloat(sums_[i][j]);
        }
        return factors.Decompose(matrix[0]);
    }

 private:
    double sums_[kUnknowns][kUnknowns] = {};  // on and below the diagonal: it is symmetric
};

template <std::size_t kUnknowns>
class RightHandSides {
 public:
    void Add(const Weights<kUnknowns>& weights, CFPoint point) {
        const Pair position{static_cast<double>(point.x), static_cast<double>(point.y)};
        for (std::size_t i = 0; i < kUnknowns; ++i) sums_[i] += weights[i] * position;
    }

    /// The control points.
    std::array<CFPoint, kUnknowns> Solution(const CFLinearFactors<kUnknowns>& factors) const {
        float xs[kUnknowns], ys[kUnknowns];
        for (std::size_t i = 0; i < kUnknowns; ++i) {
            xs[i] = NarrowToFloat(sums_[i][0]);
            ys[i] = NarrowToFloat(sums_[i][1]);
        }
        factors.Substitute(xs);
        factors.Substitute(ys);
        std::array<CFPoint, kUnknowns> points;
        for (std::size_t i = 0; i < kUnknowns; ++i) points[i] = {xs[i], ys[i]};
        return points;
    }

 private:
    using Pair = double __attribute__((vector_size(2 * sizeof(double))));  // for x and y, computed side by side

    Pair sums_[kUnknowns] = {};
};

/// What all ranges of `count` even parameters have in common.
struct EvenRange {
    explicit EvenRange(std::int32_t count) {
        NormalMatrix<3> matrix;
        for (std::int32_t j = 0; j < count; ++j) {
            weights.push_back(Bernstein(EvenParameter(j, count)));
            matrix.Add(weights.back());
        }
        is_solvable = matrix.Decompose(factors);
    }

    std::vector<Weights<3>> weights;  // by point
    CFLinearFactors<3> factors;
    bool is_solvable;
};

constexpr std::int32_t kMostEven = 33;  // points that ranges are kept ready for: 16 on either side of one

const EvenRange& EvenRangeOf(std::int32_t count) {
    static const std::vector<EvenRange> ranges = [] {
        std::vector<EvenRange> made;
        for (std::int32_t i = 0; i <= kMostEven; ++i) made.emplace_back(i);
        return made;
    }();
    return ranges[static_cast<std::size_t>(count)];
}

/// The control points of the curve nearest to a range, seen from `origin`; no value when the points leave them open.
std::optional<std::array<CFPoint, 3>> FitEven(const CFQuadRange& range, CFPoint origin) {
    const EvenRange& even = EvenRangeOf(range.Count());
    if (!even.is_solvable) return std::nullopt;
    RightHandSides<3> sides;
    std::int32_t j = 0;
    for (const Weights<3>& weights : even.weights) sides.Add(weights, range.Point(j++) - origin);
    return sides.Solution(even.factors);
}

std::optional<std::array<CFPoint, 3>> FitAny(const CFQuadRange& range, CFPoint origin) {
    NormalMatrix<3> matrix;
    RightHandSides<3> sides;
    for (std::int32_t j = 0; j < range.Count(); ++j) {
        const Weights<3> weights = Bernstein(range.Parameter(j));
        matrix.Add(weights);
        sides.Add(weights, range.Point(j) - origin);
    }
    CFLinearFactors<3> factors;
    if (!matrix.Decompose(factors)) return std::nullopt;
    return sides.Solution(factors);
}

/// The curve of one side that ends at its last point (or starts at its first one with `from_start`). Coordinates are taken
/// from that point, so its own term drops out and far-off outlines keep their digits.
std::optional<CFBezier2> FitSide(const CFQuadRange& range, bool from_start) {
    const CFPoint first = range.Point(0), last = range.Point(range.Count() - 1);
    if (range.Count() < kFewestPointsForCurve) return StraightLine(first, last);
    const CFPoint fixed = from_start ? first : last;
    NormalMatrix<2> matrix;
    RightHandSides<2> sides;
    for (std::int32_t j = 0; j < range.Count(); ++j) {
        const auto [w0, w1, w2] = Bernstein(range.Parameter(j));
        const Weights<2> weights = {from_start ? w1 : w0, from_start ? w2 : w1};
        matrix.Add(weights);
        sides.Add(weights, range.Point(j) - fixed);
    }
    CFLinearFactors<2> factors;
    if (!matrix.Decompose(factors)) return std::nullopt;
    const auto free = sides.Solution(factors);
    const CFPoint a = fixed + free[0], b = fixed + free[1];
    return from_start ? CFBezier2(fixed, a, b) : CFBezier2(a, b, fixed);
}

}  // namespace

CFBezier2 FitQuadratic(const CF1QuadView& view) {
    const CFQuadRange& range = view.Range();
    const CFPoint origin = range.Point(view.Centre());  // far-off outlines keep their digits
    const bool is_kept = range.IsEven() && range.Count() <= kMostEven;
    const auto points = is_kept ? FitEven(range, origin) : FitAny(range, origin);
    if (!points) return StraightLine(range.Point(0), range.Point(range.Count() - 1));
    return {origin + (*points)[0], origin + (*points)[1], origin + (*points)[2]};
}

std::optional<CFQuadPair> FitQuadratics(const CF2QuadView& view) {
    const std::optional<CFBezier2> left = FitSide(view.Left(), false);
    const std::optional<CFBezier2> right = FitSide(view.Right(), true);
    if (!left || !right) return std::nullopt;
    return CFQuadPair{*left, *right};
}
