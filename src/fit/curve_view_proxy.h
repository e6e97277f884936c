#pragma once

#include <cstdint>

#include "fit/curve_view.h"

/// Stands in for the points of a short span, which are too few to fix a cubic: with points added between those of a span of 2
/// or 3, smoothed, and with even parameters.
class CF1CurveViewProxy {
 public:
    /// Spans of fewer points are fitted by way of a proxy.
    static constexpr std::int32_t kEnoughPoints = 7;

    explicit CF1CurveViewProxy(const CFWindow& window);

    /// Lie in the proxy.
    CFCurvePoints Points() const { return {count_, xs_, ys_, ts_}; }

 private:
    std::int32_t count_;
    float xs_[kEnoughPoints - 1], ys_[kEnoughPoints - 1], ts_[kEnoughPoints - 1];
};
