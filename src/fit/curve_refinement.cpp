#include "fit/curve_refinement.h"

#include <algorithm>
#include <cmath>

#include "fit/lanes.h"
#include "fit/newton_step.h"

namespace {

constexpr std::int32_t kFewestPoints = 4;   // that are refined, and different inner parameters that must remain
constexpr std::int32_t kGridSteps = 4;      // of the final grid, in an even spacing
constexpr float kFinestGrid = 16777216.0F;  // steps; floats below 1 lie no finer, so that a finer grid moves nothing

void KeepOrder(float* ts, std::int32_t count);
void SnapToGrid(float* ts, std::int32_t count);
bool TooFewInnerValues(const CFTVals& parameters);

}  // namespace

CFRefineFunc::CFRefineFunc(const CFBezier3& curve, CFPoint target) : powers_(curve), start_(powers_.start - target) {}

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
        ParameterSearches().back()(CurvePowers(curve), {count, window.X(), window.Y(), parameters.Data()}, &parameters[0]);
        KeepOrder(&parameters[0], count);
        SnapToGrid(&parameters[0], count);
    }
    if (TooFewInnerValues(parameters)) parameters = CFTVals(window.X(), window.Y(), count, kSpacingGeneral);
}

namespace {

/// A parameter below the one before trades places with it, unless that would put it below the one before that as well: then
/// it is dropped for the one before.
void KeepOrder(float* ts, std::int32_t count) {
    const auto settle = [&](std::int32_t j) {
        const float t = ts[j];
        if (t >= ts[j - 1]) return;
        ts[j] = ts[j - 1];
        if (j == 1 || t >= ts[j - 2]) ts[j - 1] = t;
    };
    for (std::int32_t j = 1; j < count; j += kLanes) {
        const std::int32_t end = std::min(j + kLanes, count), looked_at = end - kLanes;  // some points of the last lanes twice
        if (AllSet(Load(ts + looked_at) >= Load(ts + looked_at - 1))) continue;
        for (std::int32_t k = j; k < end; ++k) settle(k);
    }
}

void SnapToGrid(float* ts, std::int32_t count) {
    const float steps = static_cast<float>(kGridSteps) * static_cast<float>(count - 1);
    if (steps < kFinestGrid) {
        const Lanes most = Lanes{} + steps;
        const auto snapped = [&](Lanes t) {
            const LaneFlags step = __builtin_convertvector(t * steps + 0.5F, LaneFlags);
            return Least(__builtin_convertvector(step, Lanes), most) / steps;
        };
        const std::int32_t last = count - kLanes;
        const Lanes snapped_last = snapped(Load(ts + last));  // they may overlap those before
        for (std::int32_t j = 0; j < last; j += kLanes) Store(snapped(Load(ts + j)), ts + j);
        Store(snapped_last, ts + last);
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
