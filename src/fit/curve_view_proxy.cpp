#include "fit/curve_view_proxy.h"

#include <array>
#include <cstddef>

namespace {

// A pass with the first factor shrinks the chain, the next with the second lets it swell again, so that detail is lost but
// size is kept (Taubin 1995, "Curve and surface smoothing without shrinkage").
constexpr float kShrink = 0.47464985F;
constexpr float kSwell = -0.48618832F;
constexpr std::array kSweeps = {kShrink, kSwell, kShrink, kSwell, kShrink};

/// The points of the window with `pieces` - 1 points added evenly in every step.
void Subdivide(const CFWindow& window, std::int32_t pieces, CFPoint* points);
/// The number of points is known at compile time, so that they stay in registers from sweep to sweep.
template <std::size_t kCount>
void Smooth(CFPoint* chain);

}  // namespace

CF1CurveViewProxy::CF1CurveViewProxy(const CFWindow& window) {
    const std::int32_t count = window.Count();
    const std::int32_t pieces = count == 2 ? 3 : count == 3 ? 2 : 1;
    count_ = (count - 1) * pieces + 1;
    CFPoint points[kEnoughPoints - 1];
    Subdivide(window, pieces, points);
    if (count_ == 4) Smooth<4>(points);
    if (count_ == 5) Smooth<5>(points);
    if (count_ == 6) Smooth<6>(points);
    for (std::int32_t j = 0; j < count_; ++j) {
        xs_[j] = points[j].x;
        ys_[j] = points[j].y;
        ts_[j] = static_cast<float>(j) / static_cast<float>(count_ - 1);
    }
}

namespace {

void Subdivide(const CFWindow& window, std::int32_t pieces, CFPoint* points) {
    const std::int32_t last = window.Count() - 1;
    for (std::int32_t step = 0; step < last; ++step) {
        const CFPoint from = window.Point(step), way = window.Point(step + 1) - from;
        *points++ = from;
        for (std::int32_t part = 1; part < pieces; ++part) {
            *points++ = from + way * (static_cast<float>(part) / static_cast<float>(pieces));
        }
    }
    *points = window.Point(last);
}

template <std::size_t kCount>
void Smooth(CFPoint* chain) {
    CFPoint points[kCount];
    for (std::size_t j = 0; j < kCount; ++j) points[j] = chain[j];
    for (const float factor : kSweeps) {
        for (std::size_t j = 1; j + 1 < kCount; ++j) {
            const CFPoint middle = (points[j - 1] + points[j + 1]) * 0.5F;
            points[j] = points[j] - (points[j] - middle) * factor;
        }
    }
    for (std::size_t j = 0; j < kCount; ++j) chain[j] = points[j];
}

}  // namespace
