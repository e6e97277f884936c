#include "fit/curve_equations.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "base/narrow.h"
#include "fit/lanes.h"
#include "fit/linear_solver.h"

// In Hermite form the curve is B = P0 + h01 (P3 - P0) + h10 D0 + h11 D3 with the end derivatives D0 and D3 and
// h01 = 3t^2 - 2t^3, h10 = t^3 - 2t^2 + t, h11 = t^3 - t^2. Each derivative is a sum of unknown multiples of directions: of both
// axes where it is free, of the tangent where it is constrained. Setting the derivatives of the sum of |B(t_j) - Q_j|^2 by
// the multiples to 0 gives one equation for each; its factors are sums of products of h10 and h11 times products of directions.

namespace {

using HermiteSums = CFCurveEquations::HermiteSums;

constexpr float kControlFactor = 1.0F / 3.0F;  // of an end derivative: the way from the end to its handle

/// The sums over a run of points, few enough to add up in float: each lane adds four products, by which its sum is off by no more
/// than 3 * 2^-24 times their sizes, about as much as the products themselves are and whatever the number of runs; the equations
/// keep the sums as floats anyway. Added in double, whole traces take 1 % more instructions and fitting 2 to 5 % more time.
struct RunSums {
    /// Adds points at parameters `t` that lie (x, y) from P0.
    void Add(Lanes t, Lanes x, Lanes y, CFPoint chord);
    void AddTo(HermiteSums& sums) const;

    Lanes start_start = {}, start_end = {}, end_end = {};
    Lanes start_x = {}, start_y = {}, end_x = {}, end_y = {};
};

constexpr std::int32_t kRun = 4 * kLanes;

/// For a curve from `start` along `chord`.
HermiteSums SumOver(const CFCurvePoints& points, CFPoint start, CFPoint chord);

CFBezier3 CurveOf(CFPoint start, CFPoint end, const CFCurveEquations::EndDerivatives& derivatives);
bool IsFinite(const CFBezier3& curve);

void Set(CFVectorX<float>& numbers, std::initializer_list<double> values) {
    numbers.Resize(values.size());
    std::transform(values.begin(), values.end(), &numbers[0], [](double value) { return NarrowToFloat(value); });
}

double Dot(CFPoint a, CFPoint b) {
    return static_cast<double>(a.x) * static_cast<double>(b.x) + static_cast<double>(a.y) * static_cast<double>(b.y);
}

}  // namespace

CFBezier3 CFCurveEquations::Fit(const CFCurvePoints& points, const CF1CurveViewConstraints& constraints) {
    const CFPoint start = constraints.start.value, end = constraints.end.value;
    const HermiteSums sums = SumOver(points, start, end - start);
    EndDerivatives derivatives;
    if (SolveFor(sums, constraints, derivatives)) {
        const CFBezier3 curve = CurveOf(start, end, derivatives);
        if (IsFinite(curve)) return curve;
    }
    return CurveOf(start, end, {end - start, end - start});
}

bool CFCurveEquations::SolveFor(const HermiteSums& sums, const CF1CurveViewConstraints& constraints,
                                EndDerivatives& derivatives) {
    const CFTangentConstraint& start = constraints.start_tangent;
    const CFTangentConstraint& end = constraints.end_tangent;
    constexpr CFPoint kX{1.0F, 0.0F}, kY{0.0F, 1.0F};
    if (!start.active && !end.active) return SolveForFreeEnds(sums, derivatives);
    if (start.active && end.active) return SolveFor(sums, {{false, start.value}, {true, end.value}}, derivatives);
    if (start.active) return SolveFor(sums, {{false, start.value}, {true, kX}, {true, kY}}, derivatives);
    return SolveFor(sums, {{false, kX}, {false, kY}, {true, end.value}}, derivatives);
}

/// The axes have nothing to do with each other: two unknowns for each, and the same matrix for both.
bool CFCurveEquations::SolveForFreeEnds(const HermiteSums& sums, EndDerivatives& derivatives) {
    Set(matrix_, {sums.start_start, sums.start_end, sums.start_end, sums.end_end});
    Set(rhs_, {sums.start_x, sums.end_x, sums.start_y, sums.end_y});
    if (!Solve(matrix_, rhs_)) return false;
    derivatives = {{rhs_[0], rhs_[2]}, {rhs_[1], rhs_[3]}};
    return true;
}

template <std::size_t kCount>
bool CFCurveEquations::SolveFor(const HermiteSums& sums, const Unknown (&unknowns)[kCount], EndDerivatives& derivatives) {
    matrix_.Resize(kCount * kCount);
    rhs_.Resize(kCount);
    std::size_t row = 0, entry = 0;
    for (const auto& [at_end, direction] : unknowns) {
        for (const Unknown& other : unknowns) {
            const double factor = at_end != other.at_end ? sums.start_end : at_end ? sums.end_end : sums.start_start;
            matrix_[entry++] = NarrowToFloat(factor * Dot(direction, other.direction));
        }
        const double left_x = at_end ? sums.end_x : sums.start_x, left_y = at_end ? sums.end_y : sums.start_y;
        rhs_[row++] = NarrowToFloat(static_cast<double>(direction.x) * left_x + static_cast<double>(direction.y) * left_y);
    }
    if (!Solve(matrix_, rhs_)) return false;
    row = 0;
    for (const auto& [at_end, direction] : unknowns) {
        CFPoint& derivative = at_end ? derivatives.end : derivatives.start;
        derivative = derivative + direction * rhs_[row++];
    }
    return true;
}

namespace {

HermiteSums SumOver(const CFCurvePoints& points, CFPoint start, CFPoint chord) {
    const auto& [count, xs, ys, ts] = points;

    HermiteSums sums;
    for (std::int32_t first = 0; first < count; first += kRun) {
        RunSums run;
        const std::int32_t end = std::min(first + kRun, count);
        std::int32_t j = first;
        for (; j + kLanes <= end; j += kLanes) run.Add(Load(ts + j), Load(xs + j) - start.x, Load(ys + j) - start.y, chord);
        if (const std::int32_t rest = end - j; rest > 0) {  // a parameter of 0 adds nothing
            run.Add(LoadPart(ts + j, rest), LoadPart(xs + j, rest) - start.x, LoadPart(ys + j, rest) - start.y, chord);
        }
        run.AddTo(sums);
    }
    return sums;
}

void RunSums::Add(Lanes t, Lanes x, Lanes y, CFPoint chord) {
    const Lanes s = 1.0F - t;
    const Lanes h01 = t * t * (3.0F - 2.0F * t), h10 = t * s * s, h11 = -t * t * s;
    const Lanes left_x = x - h01 * chord.x, left_y = y - h01 * chord.y;
    start_start += h10 * h10;
    start_end += h10 * h11;
    end_end += h11 * h11;
    start_x += h10 * left_x;
    start_y += h10 * left_y;
    end_x += h11 * left_x;
    end_y += h11 * left_y;
}

void RunSums::AddTo(HermiteSums& sums) const {
    const auto total = [](Lanes lanes) {
        return (static_cast<double>(lanes[0]) + static_cast<double>(lanes[1])) +
               (static_cast<double>(lanes[2]) + static_cast<double>(lanes[3]));
    };
    sums.start_start += total(start_start);
    sums.start_end += total(start_end);
    sums.end_end += total(end_end);
    sums.start_x += total(start_x);
    sums.start_y += total(start_y);
    sums.end_x += total(end_x);
    sums.end_y += total(end_y);
}

CFBezier3 CurveOf(CFPoint start, CFPoint end, const CFCurveEquations::EndDerivatives& derivatives) {
    return {start, start + derivatives.start * kControlFactor, end - derivatives.end * kControlFactor, end};
}

bool IsFinite(const CFBezier3& curve) {
    const auto finite = [](float value) { return std::isfinite(value); };
    return std::all_of(curve.x, curve.x + 4, finite) && std::all_of(curve.y, curve.y + 4, finite);
}

}  // namespace
