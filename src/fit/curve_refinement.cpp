#include "fit/curve_refinement.h"

#include <algorithm>
#include <cmath>

#include "fit/lanes.h"

namespace {

constexpr float kNoValue = 1e-6F;    // a value this near to 0 is a root
constexpr float kShortStep = 1e-4F;  // of a parameter: the last one of a search
constexpr int kMostSteps = 5;
constexpr std::int32_t kFewestPoints = 4;   // that are refined, and different inner parameters that must remain
constexpr std::int32_t kGridSteps = 4;      // of the final grid, in an even spacing
constexpr float kFinestGrid = 16777216.0F;  // steps; floats below 1 lie no finer, so that a finer grid moves nothing

// Four points are searched side by side, every step for all of them until the last has ended. A point's steps and their
// rounding are those of a search on its own.

/// What FindRoot gives for targets the curve's start lies at (x, y) from, within `reach` of `t` and 0 to 1.
Lanes FindRoots(const CurvePowers& curve, Lanes x, Lanes y, float reach, Lanes t);

/// f and its derivative for a curve that starts at (x, y) from the target. `Value` is one number or lanes of them.
template <class Value>
inline void EvaluateAt(const CurvePowers& c, Value x, Value y, Value t, Value& f, Value& df) {
    const Value ex = ((c.x[2] * t + c.x[1]) * t + c.x[0]) * t + x, ey = ((c.y[2] * t + c.y[1]) * t + c.y[0]) * t + y;
    const Value dx = (3.0F * c.x[2] * t + 2.0F * c.x[1]) * t + c.x[0], dy = (3.0F * c.y[2] * t + 2.0F * c.y[1]) * t + c.y[0];
    const Value ddx = 6.0F * c.x[2] * t + 2.0F * c.x[1], ddy = 6.0F * c.y[2] * t + 2.0F * c.y[1];
    f = ex * dx + ey * dy;
    df = dx * dx + dy * dy + (ex * ddx + ey * ddy);
}

/// Moves every parameter to the root of its point. There are `kLanes` points at least.
void SearchAll(const CFBezier3& curve, const CFWindow& window, float* ts);
void KeepOrder(float* ts, std::int32_t count);
void SnapToGrid(float* ts, std::int32_t count);
bool TooFewInnerValues(const CFTVals& parameters);

}  // namespace

CurvePowers::CurvePowers(const CFBezier3& curve) {
    const auto set = [](const float* p, float* powers) {
        const float to_first = p[1] - p[0], to_second = p[2] - p[1], to_last = p[3] - p[2];
        powers[0] = 3.0F * to_first;
        powers[1] = 3.0F * (to_second - to_first);
        powers[2] = to_last - 2.0F * to_second + to_first;
    };
    set(curve.x, x);
    set(curve.y, y);
}

CFRefineFunc::CFRefineFunc(const CFBezier3& curve, CFPoint target) : powers_(curve), start_(curve.Control(0) - target) {}

void CFRefineFunc::Evaluate(float t, float& f, float& df) const { EvaluateAt(powers_, start_.x, start_.y, t, f, df); }

float FindRoot(const CFNewtonFunc& function, float lo, float hi, float t) {
    float f_lo, f_hi, f, df, unused;
    function.Evaluate(lo, f_lo, unused);
    function.Evaluate(hi, f_hi, unused);
    function.Evaluate(t, f, df);
    if ((f_lo > 0.0F && f_hi > 0.0F) || (f_lo < 0.0F && f_hi < 0.0F)) {
        const bool lo_is_less = std::abs(f_lo) < std::abs(f_hi);
        if (std::abs(f) < std::abs(lo_is_less ? f_lo : f_hi)) return t;
        return lo_is_less ? lo : hi;
    }
    if (std::abs(f_lo) < kNoValue) return lo;
    if (std::abs(f_hi) < kNoValue) return hi;

    float negative = f_lo < 0.0F ? lo : hi, positive = f_lo < 0.0F ? hi : lo;
    float last_step = hi - lo, step_before = last_step;
    for (int steps = 0; steps < kMostSteps; ++steps) {
        const bool leaves = ((t - positive) * df - f) * ((t - negative) * df - f) > 0.0F;
        const bool slow = std::abs(2.0F * f) > std::abs(step_before * df);
        step_before = last_step;
        if (leaves || slow) {
            last_step = 0.5F * (positive - negative);
            t = negative + last_step;
        } else {
            last_step = f == 0.0F ? 0.0F : f / df;  // exactly at a root the derivative may be 0 as well
            t -= last_step;
        }
        if (std::abs(last_step) < kShortStep) break;
        function.Evaluate(t, f, df);
        (f < 0.0F ? negative : positive) = t;
    }
    return std::min(std::max(lo, t), hi);
}

void RefineParameters(const CFBezier3& curve, const CFWindow& window, CFTVals& parameters) {
    const std::int32_t count = window.Count();
    if (count < kFewestPoints) return;
    if (count - 2 >= kFewestPoints) {  // fewer inner points cannot end up with enough different parameters
        SearchAll(curve, window, &parameters[0]);
        KeepOrder(&parameters[0], count);
        SnapToGrid(&parameters[0], count);
    }
    if (TooFewInnerValues(parameters)) parameters = CFTVals(window.X(), window.Y(), count, kSpacingGeneral);
}

namespace {

void SearchAll(const CFBezier3& curve, const CFWindow& window, float* ts) {
    const std::int32_t count = window.Count();
    const float reach = 1.0F / static_cast<float>(count - 1);
    const CurvePowers powers(curve);
    const CFPoint start = curve.Control(0);
    const auto roots = [&](std::int32_t j) {
        const Lanes x = start.x - Load(window.X() + j), y = start.y - Load(window.Y() + j);
        return FindRoots(powers, x, y, reach, Load(ts + j));
    };
    const Lanes last = roots(count - kLanes);  // may overlap the lanes before: all start from the old parameters
    for (std::int32_t j = 0; j + kLanes < count; j += kLanes) Store(roots(j), ts + j);
    Store(last, ts + count - kLanes);
}

Lanes FindRoots(const CurvePowers& curve, Lanes x, Lanes y, float reach, Lanes t) {
    const Lanes zero = {}, one = zero + 1.0F;
    const Lanes lo = Greatest(t - reach, zero), hi = Least(t + reach, one);
    Lanes f_lo, f_hi, f, df, unused;
    EvaluateAt(curve, x, y, lo, f_lo, unused);
    EvaluateAt(curve, x, y, hi, f_hi, unused);
    EvaluateAt(curve, x, y, t, f, df);

    const Lanes size_lo = Magnitude(f_lo), size_hi = Magnitude(f_hi);
    const LaneFlags lo_is_less = size_lo < size_hi;
    const LaneFlags same_sign = ((f_lo > 0.0F) & (f_hi > 0.0F)) | ((f_lo < 0.0F) & (f_hi < 0.0F));
    const LaneFlags at_lo = size_lo < kNoValue, at_hi = size_hi < kNoValue;
    const LaneFlags t_is_least = Magnitude(f) < Least(size_hi, size_lo);
    const Lanes least = Select(t_is_least, t, Select(lo_is_less, lo, hi));
    LaneFlags done = same_sign | at_lo | at_hi;
    t = Select(same_sign, least, Select(at_lo, lo, Select(at_hi, hi, t)));

    Lanes negative = Select(f_lo < 0.0F, lo, hi), positive = Select(f_lo < 0.0F, hi, lo);
    Lanes last_step = hi - lo, step_before = last_step;
    for (int steps = 0; steps < kMostSteps && !AllSet(done); ++steps) {
        if (steps > 0) {
            EvaluateAt(curve, x, y, t, f, df);
            negative = Select(f < 0.0F, t, negative);
            positive = Select(f < 0.0F, positive, t);
        }
        const LaneFlags leaves = ((t - positive) * df - f) * ((t - negative) * df - f) > 0.0F;
        const LaneFlags slow = Magnitude(2.0F * f) > Magnitude(step_before * df);
        const LaneFlags bisect = leaves | slow;
        const Lanes half = 0.5F * (positive - negative), newton = f == 0.0F ? zero : f / df;
        step_before = last_step;
        last_step = Select(bisect, half, newton);
        t = Select(done, t, Select(bisect, negative + half, t - newton));
        done |= Magnitude(last_step) < kShortStep;
    }
    return Least(Greatest(lo, t), hi);
}

/// A parameter below the one before trades places with it, unless that would put it below the one before that as well: then
/// it is dropped for the one before.
void KeepOrder(float* ts, std::int32_t count) {
    const auto settle = [&](std::int32_t j) {
        const float t = ts[j];
        if (t >= ts[j - 1]) return;
        ts[j] = ts[j - 1];
        if (j == 1 || t >= ts[j - 2]) ts[j - 1] = t;
    };
    std::int32_t j = 1;
    for (; j + kLanes <= count; j += kLanes) {
        if (AllSet(Load(ts + j) >= Load(ts + j - 1))) continue;
        for (std::int32_t lane = 0; lane < kLanes; ++lane) settle(j + lane);
    }
    for (; j < count; ++j) settle(j);
}

void SnapToGrid(float* ts, std::int32_t count) {
    const float steps = static_cast<float>(kGridSteps) * static_cast<float>(count - 1);
    if (steps < kFinestGrid) {
        for (std::int32_t j = 0; j < count; ++j) {
            const float step = static_cast<float>(static_cast<std::int32_t>(ts[j] * steps + 0.5F));
            ts[j] = std::min(step, steps) / steps;
        }
    }
    ts[0] = 0.0F;
    ts[count - 1] = 1.0F;
}

bool TooFewInnerValues(const CFTVals& parameters) {
    std::int32_t different = 1;
    for (std::int32_t j = 2; j + 1 < parameters.Count() && different < kFewestPoints; ++j) {
        different += parameters[j] > parameters[j - 1] ? 1 : 0;
    }
    return different < kFewestPoints;
}

}  // namespace
