#pragma once

#include "fit/bezier.h"
#include "fit/t_vals.h"
#include "fit/window.h"

/// Decides whether a curve follows the points it was fitted to.
class CFFidelityCheck {
 public:
    virtual ~CFFidelityCheck() = default;
    /// True when the curve is close enough to every point of the window.
    /// @throws int  kBrokenInvariant unless there is one parameter for each point
    virtual bool Check(const CFWindow& window, const CFTVals& parameters, const CFBezier3& curve) const = 0;
};

/// Compares every point with the curve at its parameter.
class CFEvalCheck : public CFFidelityCheck {
 public:
    /// `distance`: the furthest a point may lie from its curve point, in pixels.
    explicit CFEvalCheck(float distance) : squared_distance_(distance * distance) {}
    bool Check(const CFWindow& window, const CFTVals& parameters, const CFBezier3& curve) const override;

 private:
    float squared_distance_;
};
