#include "fit/fidelity_check.h"

#include <algorithm>

#include "base/errors.h"

namespace {

constexpr std::int32_t kBlock = 64;  // points compared before asking whether one was too far

bool AllNear(const CFBezier3& curve, const float* xs, const float* ys, const float* ts, std::int32_t count, float squared) {
    std::int32_t far = 0;
    for (std::int32_t j = 0; j < count; ++j) {
        const CFPoint on_curve = curve.At(ts[j]);
        const float dx = xs[j] - on_curve.x, dy = ys[j] - on_curve.y;
        far += dx * dx + dy * dy <= squared ? 0 : 1;
    }
    return far == 0;
}

}  // namespace

bool CFEvalCheck::Check(const CFWindow& window, const CFTVals& parameters, const CFBezier3& curve) const {
    const std::int32_t count = window.Count();
    if (parameters.Count() != count) throw kBrokenInvariant;
    for (std::int32_t j = 0; j < count; j += kBlock) {
        const std::int32_t block = std::min(kBlock, count - j);
        if (!AllNear(curve, window.X() + j, window.Y() + j, parameters.Data() + j, block, squared_distance_)) return false;
    }
    return true;
}
