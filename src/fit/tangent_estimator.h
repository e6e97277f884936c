#pragma once

#include <cstdint>

#include "fit/window.h"

/// Gives the direction of a chain at one of its points.
class CFTangentEstimator {
 public:
    virtual ~CFTangentEstimator() = default;
    /// The tangent at point `k` of the window, in the direction of increasing index; its length means nothing.
    /// @throws int  kBrokenInvariant when `k` is outside the window
    virtual CFPoint Estimate(const CFWindow& window, std::int32_t k) const = 0;
};

/// Differentiates the least-squares quadratic through the neighbourhood of the point.
class CFQuadEstimator : public CFTangentEstimator {
 public:
    /// `half_width`: points looked at on either side.
    explicit CFQuadEstimator(std::int32_t half_width) : half_width_(half_width) {}
    CFPoint Estimate(const CFWindow& window, std::int32_t k) const override;

 private:
    std::int32_t half_width_;
};
