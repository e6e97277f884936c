#include "fit/noise_smoother.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <optional>

#include "base/errors.h"
#include "fit/root_search.h"

namespace {

constexpr double kNoise =
    static_cast<double>(0.28867513F);  // pixels: 1 / (2 sqrt 3), the deviation of a position rounded to the pixel grid
constexpr double kSearchStep = 50.0;   // of the scale
constexpr int kSearchSteps = 10000;
constexpr RootTolerance kScaleTolerance{6e-8, 5e-5, 100};
constexpr std::size_t kLanes = 4;  // partial sums, for the compiler to keep in vector registers

/// The first step count whose multiple of kSearchStep makes the never-falling `function` positive. No value, without one up
/// to kSearchSteps. Doubles the count until it is enough, then halves the interval.
template <class Function>
std::optional<int> FirstPositiveStep(const Function& function) {
    int low = 0, high = 1;
    while (!(function(high * kSearchStep) > 0.0)) {
        if (high == kSearchSteps) return std::nullopt;
        low = high;
        high = std::min(2 * high, kSearchSteps);
    }
    while (high - low > 1) {
        const int middle = (low + high) / 2;
        (function(middle * kSearchStep) > 0.0 ? high : low) = middle;
    }
    return high;
}

}  // namespace

/// 2 - 2 cos(2a) is 4 sin(a)^2, which keeps its digits at low frequencies.
CFNoiseSmoother::Tables::Tables(std::size_t length, const CFFourierTransform* longer)
    : transform(length, longer), weights((length / 2 + kLanes - 1) / kLanes * kLanes) {
    for (std::size_t k = 1; k <= length / 2; ++k) {
        const double sine = transform.Sine(k);
        weights[k - 1] = 16.0 * sine * sine * sine * sine;
    }
}

void CFNoiseSmoother::Smooth(const CFSegment& chain) {
    if (chain.Kind() != kSpacingGeneral && chain.Kind() != kSpacingBridged) throw kBrokenInvariant;
    scale_ = 0.0;
    LoadSamples(chain);
    if (length_ == 1) return;  // a single point has no other frequency than 0
    const Tables& tables = TablesOfLength();
    FillSpectrum(tables);
    const double noise = chain.Kind() == kSpacingBridged ? kNoise / 2.0 : kNoise;
    scale_ = FindScale(tables, static_cast<double>(count_ - 1) * noise * noise);
    if (scale_ > 0.0) ApplyScale(tables);
}

/// Fills the gap between the last and the first point up to the next power of two: evenly along the chord as far as a bridged
/// chain's unit spacing asks for, and with the middle of the chord otherwise.
void CFNoiseSmoother::LoadSamples(const CFSegment& chain) {
    count_ = static_cast<std::size_t>(chain.Count());
    const CFPoint origin{chain.X()[0], chain.Y()[0]};
    const auto sample = [&](std::size_t i) {
        const CFPoint offset = CFPoint{chain.X()[i], chain.Y()[i]} - origin;  // exact on the half-pixel grid
        return std::complex<double>{static_cast<double>(offset.x), static_cast<double>(offset.y)};
    };
    const std::complex<double> last = sample(count_ - 1);
    std::size_t bridge = 0;
    if (chain.Kind() == kSpacingBridged) bridge = static_cast<std::size_t>(std::max(std::ceil(std::abs(last)) - 1.0, 0.0));
    length_ = std::bit_ceil(count_ + bridge);
    samples_.resize(length_);
    for (std::size_t i = 0; i < count_; ++i) samples_[i] = sample(i);
    for (std::size_t k = 1; k <= bridge; ++k) {
        samples_[count_ + k - 1] = last * (1.0 - static_cast<double>(k) / static_cast<double>(bridge + 1));
    }
    std::fill(samples_.begin() + static_cast<std::ptrdiff_t>(count_ + bridge), samples_.end(), last * 0.5);
}

/// Each coordinate is real, so the powers of x and y at frequencies k and L - k together are those of x + iy at both.
void CFNoiseSmoother::FillSpectrum(const Tables& tables) {
    spectrum_.resize(length_);
    spare_.resize(length_);
    tables.transform.Apply(samples_.data(), spectrum_.data(), spare_.data());
    powers_.assign(tables.weights.size(), 0.0);
    const double norm = 1.0 / static_cast<double>(length_);
    for (std::size_t k = 1; k <= length_ / 2; ++k) {
        powers_[k - 1] = std::norm(spectrum_[k]) * norm;
        if (k < length_ - k) powers_[k - 1] += std::norm(spectrum_[length_ - k]) * norm;
    }
}

const CFNoiseSmoother::Tables& CFNoiseSmoother::TablesOfLength() {
    const auto log = static_cast<std::size_t>(std::countr_zero(length_));
    if (tables_.size() <= log) tables_.resize(log + 1);
    std::optional<Tables>& tables = tables_[log];
    if (!tables) tables.emplace(length_, tables_.back() ? &tables_.back()->transform : nullptr);
    return *tables;
}

/// The scale at which the samples move by `target` in summed squares, 0 when there is none.
double CFNoiseSmoother::FindScale(const Tables& tables, double target) const {
    const auto excess = [&](double scale) { return SquaredDisplacement(tables, scale) - target; };
    const std::optional<int> steps = FirstPositiveStep(excess);
    if (!steps) return 0.0;
    const double high = *steps * kSearchStep;
    return FindRoot(excess, 0.0, -target, high, excess(high), kScaleTolerance).value_or(0.0);
}

double CFNoiseSmoother::SquaredDisplacement(const Tables& tables, double scale) const {
    const double* weights = tables.weights.data();
    const double* powers = powers_.data();
    double sums[kLanes] = {};
    for (std::size_t k = 0; k < powers_.size(); k += kLanes) {
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            const double pull = scale * weights[k + lane];
            const double moved = pull / (1.0 + pull);
            sums[lane] += powers[k + lane] * moved * moved;
        }
    }
    return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

/// Transforms back. With real and imaginary part exchanged, before and after, the forward transform is the inverse one; so one
/// set of tables does.
void CFNoiseSmoother::ApplyScale(const Tables& tables) {
    const double* weights = tables.weights.data();
    const double norm = 1.0 / static_cast<double>(length_);
    const auto swap = [](std::complex<double> value, double factor) {
        return std::complex<double>{value.imag() * factor, value.real() * factor};
    };
    spectrum_[0] = swap(spectrum_[0], norm);
    for (std::size_t k = 1; k <= length_ / 2; ++k) {
        const double factor = norm / (1.0 + scale_ * weights[k - 1]);
        spectrum_[k] = swap(spectrum_[k], factor);
        if (k < length_ - k) spectrum_[length_ - k] = swap(spectrum_[length_ - k], factor);
    }
    tables.transform.Apply(spectrum_.data(), samples_.data(), spare_.data());
    for (std::size_t i = 0; i < count_; ++i) samples_[i] = swap(samples_[i], 1.0);
}
