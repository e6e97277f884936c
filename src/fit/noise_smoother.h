#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "fit/fourier_transform.h"
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
    /// Smooths `chain`; a chain too close to straight noise for the scale to be found stays as it is.
    /// @throws int  kBrokenInvariant for a spacing other than general and bridged
    void Smooth(const CFSegment& chain);

    /// The smoothed points, relative to the first point of the chain.
    std::span<const std::complex<double>> Points() const { return {samples_.data(), count_}; }
    double Scale() const { return scale_; }  // that was used, 0 when the points stayed as they are

 private:
    /// What the chains of one length L share.
    struct Tables {
        Tables(std::size_t length, const CFFourierTransform* longer);

        CFFourierTransform transform;
        std::vector<double> weights;  // w_k for k from 1 to L / 2, zeros added up to a whole number of lanes
    };

    void LoadSamples(const CFSegment& chain);
    const Tables& TablesOfLength();
    void FillSpectrum(const Tables& tables);
    double FindScale(const Tables& tables, double target) const;
    double SquaredDisplacement(const Tables& tables, double scale) const;
    void ApplyScale(const Tables& tables);

    std::vector<std::optional<Tables>> tables_;   // by the logarithm of L
    std::vector<std::complex<double>> samples_;   // x + iy
    std::vector<std::complex<double>> spectrum_;  // of the samples
    std::vector<std::complex<double>> spare_;     // of the transform
    std::vector<double> powers_;                  // of the frequency pairs k and L - k from k = 1, divided by L
    std::size_t count_ = 0;                       // points of the chain
    std::size_t length_ = 0;                      // L, with the padding
    double scale_ = 0.0;
};
