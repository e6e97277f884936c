#pragma once

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

/// The tolerances of FindRoot: it ends when half the bracket is at most `relative` * |root| + `absolute`.
struct RootTolerance {
    double relative, absolute;
    int max_rounds;
};

/// The step from `b` that inverse quadratic interpolation through three points gives, or the secant's when `a` and `c` are one.
/// No value when it would leave the near three quarters of the bracket, whose half is `half`, or not halve the step before
/// last.
inline std::optional<double> InterpolatedStep(double a, double value_a, double b, double value_b, double c, double value_c,
                                              double nearest, double step_before_last) {
    const double half = 0.5 * (c - b), s = value_b / value_a;
    double p = 2.0 * half * s, q = 1.0 - s;
    if (a != c) {  // exactly: they are copies of each other or different points
        const double r = value_b / value_c, t = value_a / value_c;
        p = s * (2.0 * half * t * (t - r) - (b - a) * (r - 1.0));
        q = (t - 1.0) * (r - 1.0) * (s - 1.0);
    }
    if (p > 0.0) q = -q;
    p = std::abs(p);
    if (2.0 * p >= std::min(3.0 * half * q - std::abs(nearest * q), std::abs(step_before_last * q))) return std::nullopt;
    return p / q;
}

/// A root of `function` between `a` and `b`, where it has opposite signs; no value without convergence. Brent's method: inverse
/// quadratic interpolation or a secant step while they close in fast enough, bisection otherwise (R. P. Brent, Algorithms for
/// Minimization without Derivatives, 1973, chapter 4).
template <class Function>
std::optional<double> FindRoot(const Function& function, double a, double value_a, double b, double value_b,
                               RootTolerance tolerance) {
    double c = a, value_c = value_a;  // the other end of the bracket from b, the best point so far
    double last_step = b - a, step_before_last = last_step;
    for (int round = 0; round < tolerance.max_rounds; ++round) {
        if ((value_b > 0.0) == (value_c > 0.0)) {
            c = a;
            value_c = value_a;
            last_step = step_before_last = b - a;
        }
        if (std::abs(value_c) < std::abs(value_b)) {
            a = std::exchange(b, c);
            c = a;
            value_a = std::exchange(value_b, value_c);
            value_c = value_a;
        }
        const double nearest = tolerance.relative * std::abs(b) + tolerance.absolute;
        const double half = 0.5 * (c - b);
        if (std::abs(half) <= nearest || value_b == 0.0) return b;  // exactly 0: nothing left to refine
        std::optional<double> step;
        if (std::abs(step_before_last) >= nearest && std::abs(value_a) > std::abs(value_b)) {
            step = InterpolatedStep(a, value_a, b, value_b, c, value_c, nearest, step_before_last);
        }
        step_before_last = step ? last_step : half;
        last_step = step.value_or(half);
        a = b;
        value_a = value_b;
        b += std::abs(last_step) > nearest ? last_step : std::copysign(nearest, half);
        value_b = function(b);
    }
    return std::nullopt;
}
