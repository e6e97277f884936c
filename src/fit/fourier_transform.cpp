#include "fit/fourier_transform.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <numbers>

// Stockham's form of the fast transform, which needs no bit reversal (P. N. Swarztrauber, "FFT algorithms for vector computers",
// 1984). A pass takes `stride` interleaved transforms of length n apart into four times as many of length n / 4.

namespace {

using Complex = std::complex<double>;
using Pair = double __attribute__((vector_size(2 * sizeof(double))));  // real and imaginary part, computed side by side

Pair Load(const Complex* value) {
    Pair pair;
    std::memcpy(&pair, value, sizeof pair);
    return pair;
}

void Store(Pair pair, Complex* value) { std::memcpy(static_cast<void*>(value), &pair, sizeof pair); }

Pair Exchanged(Pair a) { return Pair{a[1], a[0]}; }
Pair TimesMinusI(Pair a) { return Exchanged(a) * Pair{1.0, -1.0}; }

/// A factor made ready for multiplying many numbers.
struct Rotation {
    explicit Rotation(Complex factor) : real{factor.real(), factor.real()}, imag{-factor.imag(), factor.imag()} {}
    Pair operator()(Pair a) const { return a * real + Exchanged(a) * imag; }

    Pair real, imag;
};

struct NoRotation {
    Pair operator()(Pair a) const { return a; }
};

/// Transforms of four samples, `apart` from each other, for `count` neighbours; the results lie `count` apart.
template <class Factor>
void Quarter(const Complex* from, std::size_t apart, Complex* to, std::size_t count, const Factor& once, const Factor& twice,
             const Factor& thrice) {
    for (std::size_t q = 0; q < count; ++q) {
        const Pair a = Load(from + q), b = Load(from + q + apart);
        const Pair c = Load(from + q + 2 * apart), d = Load(from + q + 3 * apart);
        const Pair even = a + c, odd = a - c, other_even = b + d, other_odd = TimesMinusI(b - d);
        Store(even + other_even, to + q);
        Store(once(odd + other_odd), to + q + count);
        Store(twice(even - other_even), to + q + 2 * count);
        Store(thrice(odd - other_odd), to + q + 3 * count);
    }
}

/// Transforms of two samples, `count` apart, for `count` neighbours.
void Halve(const Complex* from, Complex* to, std::size_t count) {
    for (std::size_t q = 0; q < count; ++q) {
        const Pair a = Load(from + q), b = Load(from + q + count);
        Store(a + b, to + q);
        Store(a - b, to + q + count);
    }
}

}  // namespace

/// A quarter of a turn of sines gives all others, so that they have the symmetries of the circle. Those of a longer transform
/// are the same bit by bit, as lengths are powers of two.
CFFourierTransform::CFFourierTransform(std::size_t length, const CFFourierTransform* longer)
    : length_(length), sines_(length / 2 + 1), rotations_(length - length / 4) {
    for (std::size_t m = 0; m < sines_.size(); ++m) {
        sines_[m] = longer != nullptr ? longer->sines_[m * (longer->length_ / length)]
                                      : std::sin(std::numbers::pi * static_cast<double>(m) / static_cast<double>(length));
    }
    for (std::size_t k = 0; k < rotations_.size(); ++k) rotations_[k] = {Sine(2 * k + length / 2), -Sine(2 * k)};
}

double CFFourierTransform::Sine(std::size_t m) const {
    if (m >= length_) return -Sine(m - length_);
    return sines_[m <= length_ / 2 ? m : length_ - m];
}

void CFFourierTransform::Apply(const Complex* from, Complex* to, Complex* spare) const {
    const std::size_t apart = length_ / 4;
    const int passes = (std::countr_zero(length_) + 1) / 2;
    Complex* next = passes % 2 == 0 ? spare : to;  // so that the last pass writes where it should
    for (std::size_t n = length_, stride = 1; n > 1; n /= 4, stride *= 4) {
        if (n == 2) return Halve(from, next, stride);
        Quarter(from, apart, next, stride, NoRotation(), NoRotation(), NoRotation());
        for (std::size_t p = stride; p < apart; p += stride) {
            const Rotation once(rotations_[p]), twice(rotations_[2 * p]), thrice(rotations_[3 * p]);
            Quarter(from + p, apart, next + 4 * p, stride, once, twice, thrice);
        }
        from = next;
        next = next == to ? spare : to;
    }
}
