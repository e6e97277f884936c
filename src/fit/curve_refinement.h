#pragma once

#include <cstdint>

#include "fit/parameter_search.h"
#include "fit/t_vals.h"
#include "fit/window.h"

/// A function whose root a Newton search looks for.
class CFNewtonFunc {
 public:
    virtual ~CFNewtonFunc() = default;
    /// The value and the derivative at `t`.
    virtual void Evaluate(float t, float& f, float& df) const = 0;
};

/// Zero where the curve is at a right angle to the line from it to a target, as it is at the point nearest to the target:
/// (B(t) - Q) * B'(t).
class CFRefineFunc : public CFNewtonFunc {
 public:
    CFRefineFunc(const CFBezier3& curve, CFPoint target);
    void Evaluate(float t, float& f, float& df) const override;

 private:
    CurvePowers powers_;
    CFPoint start_;  // of the curve, seen from the target
};

/// Searches [lo, hi] for a root from `t` on, by at most five Newton steps that stay between a negative and a positive value;
/// good to about 1e-4. When the function has one sign at both ends: that of the three values at which it is least. Refinement
/// searches like this for four points side by side.
float FindRoot(const CFNewtonFunc& function, float lo, float hi, float t);

/// Moves every parameter towards that of the curve's nearest point, by no more than one even spacing. They keep their order
/// and end on a grid of a quarter of the even spacing; too few different ones give way to those by chord length. Fewer than
/// 4 points stay as they are.
void RefineParameters(const CFBezier3& curve, const CFWindow& window, CFTVals& parameters);
