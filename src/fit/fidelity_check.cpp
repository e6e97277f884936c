#include "fit/fidelity_check.h"

#include <algorithm>

#include "base/errors.h"
#include "fit/lanes.h"

namespace {

constexpr std::int32_t kBlock = 64;  // points compared before asking whether one was too far

/// Which of four points lie further from their curve points than the root of `squared`: none when that is no number.
LaneFlags Far(const CFBezier3& curve, Lanes x, Lanes y, Lanes t, float squared) {
    const Lanes s = 1.0F - t;  // as CFBezier3::At computes
    const Lanes w0 = s * s * s, w1 = 3.0F * t * s * s, w2 = 3.0F * t * t * s, w3 = t * t * t;
    const Lanes dx = x - (curve.x[0] * w0 + curve.x[1] * w1 + curve.x[2] * w2 + curve.x[3] * w3);
    const Lanes dy = y - (curve.y[0] * w0 + curve.y[1] * w1 + curve.y[2] * w2 + curve.y[3] * w3);
    return dx * dx + dy * dy > squared;
}

}  // namespace

bool CFEvalCheck::Check(const CFWindow& window, const CFTVals& parameters, const CFBezier3& curve) const {
    const std::int32_t count = window.Count();
    if (parameters.Count() != count) throw kBrokenInvariant;
    const float* const xs = window.X();
    const float* const ys = window.Y();
    const float* const ts = parameters.Data();
    const auto far_from = [&](std::int32_t j) { return Far(curve, Load(xs + j), Load(ys + j), Load(ts + j), squared_distance_); };
    if (count < kLanes) {
        for (std::int32_t j = 0; j < count; ++j) {
            if (AnySet(Far(curve, Lanes{} + xs[j], Lanes{} + ys[j], Lanes{} + ts[j], squared_distance_))) return false;
        }
        return true;
    }
    LaneFlags far = far_from(count - kLanes);  // looks at some points twice
    for (std::int32_t j = 0; j + kLanes < count && !AnySet(far);) {
        for (const std::int32_t end = std::min(j + kBlock, count - kLanes); j < end; j += kLanes) far |= far_from(j);
    }
    return !AnySet(far);
}
