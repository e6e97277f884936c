#pragma once

#include <complex>
#include <cstdint>
#include <span>
#include <vector>

/// The signed curvature, in radians per pixel, at every point of a closed chain; positive where it turns from x towards y, to
/// the right as seen with y downward.
class CFKVals {
 public:
    /// Takes the points as x + iy; at least 2 of them. Curvatures are computed in double and stored as floats.
    void Fill(std::span<const std::complex<double>> points);

    std::int32_t Count() const { return static_cast<std::int32_t>(values_.size()); }
    std::span<const float> Values() const { return values_; }

 private:
    std::vector<float> values_;
};
