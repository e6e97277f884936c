#pragma once

#include <cstdint>

#include "fit/newton_step.h"

// Points are searched side by side, every step for all of them until the last has ended. A point's steps and their rounding are
// those of a search on its own. Each unit that includes this has its own functions, for the processor it is compiled for.

namespace {

/// What FindRoot gives for targets the curve's start lies at (x, y) from, within `reach` of `t` and 0 to 1.
template <class Values>
Values FindRoots(const CurvePowers& curve, Values x, Values y, float reach, Values t) {
    using Flags = FlagsOf<Values>;
    const Values zero = {}, one = zero + 1.0F;
    const Values lo = Greatest(t - reach, zero), hi = Least(t + reach, one);
    Values f_lo, f_hi, f, df, unused;
    EvaluateAt(curve, x, y, lo, f_lo, unused);
    EvaluateAt(curve, x, y, hi, f_hi, unused);
    EvaluateAt(curve, x, y, t, f, df);

    const Values size_lo = Magnitude(f_lo), size_hi = Magnitude(f_hi);
    const Flags lo_is_less = size_lo < size_hi;
    const Flags same_sign = ((f_lo > 0.0F) & (f_hi > 0.0F)) | ((f_lo < 0.0F) & (f_hi < 0.0F));
    const Flags at_lo = size_lo < kNoValue, at_hi = size_hi < kNoValue;
    const Flags t_is_least = Magnitude(f) < Least(size_hi, size_lo);
    const Values least = Select(t_is_least, t, Select(lo_is_less, lo, hi));
    Flags done = same_sign | at_lo | at_hi;
    t = Select(same_sign, least, Select(at_lo, lo, Select(at_hi, hi, t)));

    Values negative = Select(f_lo < 0.0F, lo, hi), positive = Select(f_lo < 0.0F, hi, lo);
    Values last_step = hi - lo, step_before = last_step;
    for (int steps = 0; steps < kMostSteps && !AllSet(done); ++steps) {
        if (steps > 0) {
            EvaluateAt(curve, x, y, t, f, df);
            negative = Select(f < 0.0F, t, negative);
            positive = Select(f < 0.0F, positive, t);
        }
        const Flags leaves = ((t - positive) * df - f) * ((t - negative) * df - f) > 0.0F;
        const Flags slow = Magnitude(2.0F * f) > Magnitude(step_before * df);
        const Flags bisect = leaves | slow;
        const Values half = 0.5F * (positive - negative), newton = f == 0.0F ? zero : f / df;
        step_before = last_step;
        last_step = Select(bisect, half, newton);
        t = Select(done, t, Select(bisect, negative + half, t - newton));
        done |= Magnitude(last_step) < kShortStep;
    }
    return Least(Greatest(lo, t), hi);
}

/// A CFParameterSearch for as many points as there are lanes, or more.
template <class Values>
void SearchBy(const CurvePowers& curve, const CFCurvePoints& points, float* found) {
    constexpr auto kWidth = static_cast<std::int32_t>(sizeof(Values) / sizeof(float));
    const float reach = 1.0F / static_cast<float>(points.count - 1);
    const std::int32_t last = points.count - kWidth;
    const Values last_ts = Load<Values>(points.ts + last);  // the last lanes may overlap those before, which are stored first
    for (std::int32_t j = 0; j < points.count; j += kWidth) {
        const std::int32_t at = j < last ? j : last;
        const Values x = curve.start.x - Load<Values>(points.xs + at), y = curve.start.y - Load<Values>(points.ys + at);
        Store(FindRoots<Values>(curve, x, y, reach, j < last ? Load<Values>(points.ts + at) : last_ts), found + at);
    }
}

}  // namespace
