#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "refhost/shape/feather_points.h"

namespace refhost {

/// A feather point on the outline it belongs to.
struct FeatherKnot {
    double position;  // segment index + parameter
    double radius;    // pixels
};

/// The feather points of an outline of `segments` segments in the order in which it passes them; never empty.
/// Round a closed outline positions count on past its end and back before its start. On an open one they end where it ends, and
/// knots at both ends carry on the nearest radius. Points whose position or radius is not finite are left out; without any the
/// radius is 0.
std::vector<FeatherKnot> KnotsOf(std::span<const FeatherPoint> points, std::size_t segments, bool is_closed);

/// The feather radius along a closed curve: even in arc length from each knot to the next, and from the last one round to the
/// first.
class FeatherRadius {
 public:
    /// `lengths` are the arc lengths, from the curve's start, at which it passes `knots`; not decreasing. `total` is that of the
    /// whole curve.
    FeatherRadius(std::span<const FeatherKnot> knots, std::vector<double> lengths, double total);

    /// At arc length `length`, approached from between knot `passed` - 1 and knot `passed`: knots at one place make a step.
    double At(double length, std::size_t passed) const;

 private:
    std::span<const FeatherKnot> knots_;
    std::vector<double> lengths_;
    double total_;
};

}  // namespace refhost
