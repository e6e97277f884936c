#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "fit/segment.h"

/// Smooths closed chains just so far that their points move, on average, by the noise of the pixel grid. One smoother serves
/// many chains; it keeps its tables and working storage.
///
/// The chain is taken as a periodic signal of power-of-two length and every frequency k multiplied by 1 / (1 + scale * w_k)
/// with w_k = (2 - 2 cos(2 pi k / L))^2: the least-squares trade-off between staying at the samples and having small second
/// differences. All in double: symmetric shapes must keep symmetric curvatures, or the order of equal corners is left to
/// rounding.
class CFNoiseSmoother {
 public:
    CFNoiseSmoother();
    ~CFNoiseSmoother();

    /// Smooths `chain`; a chain too close to straight noise for the scale to be found stays as it is.
    /// @throws int  kBrokenInvariant for a spacing other than general and bridged
    void Smooth(const CFSegment& chain);

    /// The smoothed points, relative to the first point of the chain.
    std::span<const std::complex<double>> Points() const { return {samples_.data(), count_}; }
    double Scale() const { return scale_; }  // that was used, 0 when the points stayed as they are

 private:
    class Transform;

    void LoadSamples(const CFSegment& chain);
    void FillSpectrum();
    const std::vector<double>& Weights();
    double FindScale(double target);
    double SquaredDisplacement(double scale) const;
    void ApplyScale();

    std::unique_ptr<Transform> transform_;
    std::vector<std::vector<double>> weights_;    // w_k for k from 1 to L / 2, by the logarithm of L
    std::vector<std::complex<double>> samples_;   // x + iy
    std::vector<std::complex<double>> spectrum_;  // of the samples
    std::vector<double> powers_;                  // of the frequency pairs k and L - k from k = 1, divided by L
    std::size_t count_ = 0;                       // points of the chain
    std::size_t length_ = 0;                      // L, with the padding
    double scale_ = 0.0;
};
