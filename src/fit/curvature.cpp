#include "fit/curvature.h"

#include <algorithm>
#include <cmath>

#include "base/narrow.h"

namespace {

constexpr double kSpacing = 1.0;  // pixels between neighbouring points, for the difference quotients
constexpr double kNoSpeed = 1e-6;

using Point = std::complex<double>;

/// From five-point central differences round the middle point.
float Curvature(Point before2, Point before, Point point, Point after, Point after2) {
    const Point first = (8.0 * (after - before) - (after2 - before2)) / (12.0 * kSpacing);
    const Point second = (16.0 * (after + before) - 30.0 * point - (after2 + before2)) / (12.0 * kSpacing * kSpacing);
    const double squared = std::norm(first);
    const double cubed = squared * std::sqrt(squared);
    if (cubed <= kNoSpeed) return 0.0F;
    return NarrowToFloat((first.real() * second.imag() - first.imag() * second.real()) / cubed);
}

}  // namespace

void CFKVals::Fill(std::span<const Point> points) {
    const std::size_t count = points.size();
    values_.resize(count);
    const auto at = [&](std::size_t i) { return points[i % count]; };
    const auto wrapped = [&](std::size_t i) {
        return Curvature(at(i + count - 2), at(i + count - 1), at(i), at(i + 1), at(i + 2));
    };
    for (std::size_t i = 2; i + 2 < count; ++i) {
        values_[i] = Curvature(points[i - 2], points[i - 1], points[i], points[i + 1], points[i + 2]);
    }
    for (std::size_t i = 0; i < std::min<std::size_t>(count, 2); ++i) values_[i] = wrapped(i);
    for (std::size_t i = count < 4 ? 2 : count - 2; i < count; ++i) values_[i] = wrapped(i);
}
