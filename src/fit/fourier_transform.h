#pragma once

#include <complex>
#include <cstddef>
#include <vector>

/// The discrete Fourier transform of one length, a power of two; holds its tables. In double, for outlines of any number of
/// points: most have a few dozen, for which general libraries spend most of their time beside the sums.
class CFFourierTransform {
 public:
    /// `longer`: a longer transform to copy sines from, or null.
    explicit CFFourierTransform(std::size_t length, const CFFourierTransform* longer = nullptr);

    /// Sets `to`[k] to the sum over j of `from`[j] exp(-2 pi i j k / length). `spare` is working storage. All three are
    /// different and as long as the transform.
    void Apply(const std::complex<double>* from, std::complex<double>* to, std::complex<double>* spare) const;

    /// sin(pi m / length) for m from 0 to 2 length - 1.
    double Sine(std::size_t m) const;

 private:
    std::size_t length_;
    std::vector<double> sines_;                    // of m from 0 to length / 2
    std::vector<std::complex<double>> rotations_;  // exp(-2 pi i k / length) for k below 3/4 length
};
