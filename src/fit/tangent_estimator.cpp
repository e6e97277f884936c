#include "fit/tangent_estimator.h"

#include "fit/quad_fit.h"

CFPoint CFQuadEstimator::Estimate(const CFWindow& window, std::int32_t k) const {
    const CF1QuadView view(window, k, half_width_);
    return FitQuadratic(view).DerivativeAt(view.Range().Parameter(view.Centre()));
}
