// Both directions are one and the same filter over a run of samples: a sample is a pixel of a row, or a strip of pixels of
// neighbouring columns. Narrow kernels are summed up tap by tap, wide ones as a chain of running boxes, whose cost does not
// depend on the radius. All in whole numbers, so that results are the same everywhere.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <new>
#include <vector>

#include "base/narrow.h"
#include "host/world.h"
#include "refhost/services/faults.h"
#include "refhost/services/status.h"

namespace {

constexpr std::int32_t kDepth = 8;
constexpr std::int32_t kPixelBytes = 4;
constexpr std::int32_t kStripBytes = 64;  // of neighbouring columns, filtered together
constexpr double kSigmaOfRadius = 0.577;  // alike to a feather of that radius
constexpr double kSmallestSigma = 0.05;   // pixels; the outer weights are 0 below
constexpr double kWidestSigma = 16384.0;  // pixels; the sums of wider boxes do not fit 32 bits
constexpr double kWidestTaps = 8.0;       // sigma from which running boxes are cheaper
constexpr std::int32_t kWeightBits = 15;  // the weights add up to 2^15
constexpr int kBoxes = 4;
constexpr int kFraction = 8;  // bits kept below a level between boxes

/// Weight of the kernel's samples at distance 0, 1, ... on either side.
std::vector<std::int32_t> GaussianWeights(double sigma) {
    const auto area_to = [&](double x) { return std::erf(x / (sigma * std::sqrt(2.0))) / 2.0; };
    const auto reach = static_cast<std::size_t>(CeilToInt(3.0 * sigma));
    std::vector<std::int32_t> weights(reach + 1);
    std::int32_t rest = 1 << kWeightBits;
    for (std::size_t k = reach; k > 0; --k) {
        const auto distance = static_cast<double>(k);
        weights[k] = FloorToInt((area_to(distance + 0.5) - area_to(distance - 0.5)) * (1 << kWeightBits) + 0.5);
        rest -= 2 * weights[k];
    }
    weights[0] = rest;
    return weights;
}

/// A run of samples of `width` bytes each, with room on either side for what the kernel reads there.
struct Run {
    std::int64_t count, width, reach;
    std::int64_t Bytes() const { return count * width; }
    std::int64_t Margin() const { return reach * width; }
    std::int64_t PaddedBytes() const { return Bytes() + 2 * Margin(); }
};

class Filter {
 public:
    virtual ~Filter() = default;
    virtual std::int64_t Reach() const = 0;  // samples
    /// Filters the run whose samples with both margins are at `padded` into `filtered`.
    virtual void Apply(const Run& run, const std::uint8_t* padded, std::uint8_t* filtered) = 0;
};

class TapFilter final : public Filter {
 public:
    explicit TapFilter(double sigma) : weights_(GaussianWeights(sigma)) {}

    std::int64_t Reach() const override { return static_cast<std::int64_t>(weights_.size()) - 1; }

    void Apply(const Run& run, const std::uint8_t* padded, std::uint8_t* filtered) override {
        const std::uint8_t* centre = padded + run.Margin();
        for (std::int64_t done = 0; done < run.Bytes(); done += kBlock) {
            ApplyBlock(std::min(kBlock, run.Bytes() - done), run.width, centre + done, filtered + done);
        }
    }

 private:
    static constexpr std::int64_t kBlock = 1024;  // bytes; their sums stay in the nearest cache

    void ApplyBlock(std::int64_t count, std::int64_t width, const std::uint8_t* centre, std::uint8_t* filtered) const {
        std::int32_t sums[kBlock];
        for (std::int64_t j = 0; j < count; ++j) sums[j] = (1 << (kWeightBits - 1)) + weights_[0] * centre[j];
        for (std::int64_t k = 1; k <= Reach(); ++k) {
            const std::int32_t weight = weights_[static_cast<std::size_t>(k)];
            const std::uint8_t *before = centre - k * width, *after = centre + k * width;
            for (std::int64_t j = 0; j < count; ++j) sums[j] += weight * (before[j] + after[j]);
        }
        for (std::int64_t j = 0; j < count; ++j) filtered[j] = static_cast<std::uint8_t>(sums[j] >> kWeightBits);
    }

    std::vector<std::int32_t> weights_;
};

/// Boxes of `inner_` whole samples on either side of the centre and a part of one more, so that their variances add up to
/// that of the Gaussian (Wells, Efficient Synthesis of Gaussian Filters by Cascaded Uniform Filters, 1986).
class BoxFilter final : public Filter {
 public:
    explicit BoxFilter(double sigma) {
        const double half_width = (std::sqrt(1.0 + 12.0 * sigma * sigma / kBoxes) - 1.0) / 2.0;
        inner_ = FloorToInt(half_width);
        edge_ = NarrowToFloat(half_width - static_cast<double>(inner_));
        whole_ = NarrowToFloat(1.0 / (2.0 * half_width + 1.0));
    }

    std::int64_t Reach() const override { return kBoxes * BoxReach(); }

    void Apply(const Run& run, const std::uint8_t* padded, std::uint8_t* filtered) override {
        levels_.resize(static_cast<std::size_t>(run.PaddedBytes()));
        next_.resize(levels_.size());
        for (std::size_t j = 0; j < levels_.size(); ++j) levels_[j] = static_cast<std::uint16_t>(padded[j] << kFraction);
        std::int64_t count = run.count + 2 * run.reach;
        for (int i = 0; i < kBoxes; ++i) {
            count -= 2 * BoxReach();
            ApplyBox(count, run.width);
            levels_.swap(next_);
        }
        constexpr int kHalf = 1 << (kFraction - 1);
        for (std::int64_t j = 0; j < run.Bytes(); ++j) {
            filtered[j] = static_cast<std::uint8_t>((levels_[static_cast<std::size_t>(j)] + kHalf) >> kFraction);
        }
    }

 private:
    std::int64_t BoxReach() const { return inner_ + 1; }

    /// The first `count` samples of `next_` become the boxes of `levels_` that start there.
    void ApplyBox(std::int64_t count, std::int64_t width) {
        sums_.assign(static_cast<std::size_t>(width), 0);
        for (std::int64_t j = 0; j < 2 * inner_ * width; j += width) AddSample(levels_.data() + width + j, width);
        for (std::int64_t i = 0; i < count; ++i) {
            const std::uint16_t* first = levels_.data() + i * width;     // before the whole samples
            const std::uint16_t* last = first + 2 * BoxReach() * width;  // after them
            const std::uint16_t* newest = last - width;                  // the last of the whole ones
            std::uint16_t* to = next_.data() + i * width;
            std::int32_t* sums = sums_.data();
            for (std::int64_t b = 0; b < width; ++b) {
                sums[b] += newest[b];
                const float total = static_cast<float>(sums[b]) + edge_ * static_cast<float>(first[b] + last[b]);
                to[b] = static_cast<std::uint16_t>(static_cast<std::int32_t>(total * whole_ + 0.5F));
                sums[b] -= first[width + b];
            }
        }
    }

    void AddSample(const std::uint16_t* sample, std::int64_t width) {
        for (std::int64_t b = 0; b < width; ++b) sums_[static_cast<std::size_t>(b)] += sample[b];
    }

    std::int64_t inner_;
    float edge_, whole_;
    std::vector<std::uint16_t> levels_, next_;
    std::vector<std::int32_t> sums_;
};

std::uint8_t* At(const GW_World& world, std::int64_t y, std::int64_t byte) {
    return static_cast<std::uint8_t*>(world.data) + y * world.row_bytes + byte;
}

/// Repeats the first and the last sample through the margins.
void FillMargins(const Run& run, std::uint8_t* padded) {
    const auto width = static_cast<std::size_t>(run.width);
    std::uint8_t* first = padded + run.Margin();
    std::uint8_t* last = first + run.Bytes() - run.width;
    for (std::int64_t k = 1; k <= run.reach; ++k) {
        std::memcpy(first - k * run.width, first, width);
        std::memcpy(last + k * run.width, last, width);
    }
}

void BlurRows(const GW_World& source, Filter& filter, GW_World& destination) {
    const Run run = {source.width, kPixelBytes, filter.Reach()};
    std::vector<std::uint8_t> padded(static_cast<std::size_t>(run.PaddedBytes()));
    for (std::int32_t y = 0; y < source.height; ++y) {
        std::memcpy(padded.data() + run.Margin(), At(source, y, 0), static_cast<std::size_t>(run.Bytes()));
        FillMargins(run, padded.data());
        filter.Apply(run, padded.data(), At(destination, y, 0));
    }
}

void BlurColumns(const GW_World& source, Filter& filter, GW_World& destination) {
    std::vector<std::uint8_t> padded, filtered;
    const std::int64_t row_bytes = std::int64_t{source.width} * kPixelBytes;
    for (std::int64_t left = 0; left < row_bytes; left += kStripBytes) {
        const Run run = {source.height, std::min<std::int64_t>(kStripBytes, row_bytes - left), filter.Reach()};
        const auto width = static_cast<std::size_t>(run.width);
        padded.resize(static_cast<std::size_t>(run.PaddedBytes()));
        filtered.resize(static_cast<std::size_t>(run.Bytes()));
        for (std::int32_t y = 0; y < source.height; ++y) {
            std::memcpy(padded.data() + run.Margin() + y * run.width, At(source, y, left), width);
        }
        FillMargins(run, padded.data());
        filter.Apply(run, padded.data(), filtered.data());
        for (std::int32_t y = 0; y < source.height; ++y) {
            std::memcpy(At(destination, y, left), filtered.data() + y * run.width, width);
        }
    }
}

void Copy(const GW_World& source, GW_World& destination) {
    if (&source == &destination) return;
    for (std::int32_t y = 0; y < source.height; ++y) {
        std::memcpy(At(destination, y, 0), At(source, y, 0), static_cast<std::size_t>(source.width) * kPixelBytes);
    }
}

void BlurAlong(bool down, const GW_World& source, Filter& filter, GW_World& destination) {
    if (down) {
        BlurColumns(source, filter, destination);
    } else {
        BlurRows(source, filter, destination);
    }
}

}  // namespace

int GW_GaussianBlur1D(const GW_ProgressInfo*, const GW_World* source, float radius, int, int down, int, int, int, int,
                      GW_World* destination) {
    if (const int status = refhost::InjectedStatus(refhost::HostCall::kGaussianBlur)) return status;
    if (source->Depth() != kDepth || destination->Depth() != kDepth) return refhost::kStatusBadArgument;
    if (source->width != destination->width || source->height != destination->height) return refhost::kStatusBadArgument;
    if (std::isnan(radius) || radius < 0.0F) return refhost::kStatusBadArgument;
    const std::int32_t length = down != 0 ? source->height : source->width;
    if (source->width <= 0 || source->height <= 0) return 0;
    // Beyond the world nothing changes, so that a wider blur than the world would only take longer.
    const double sigma = std::min({static_cast<double>(radius) * kSigmaOfRadius, static_cast<double>(length), kWidestSigma});
    try {
        if (sigma < kSmallestSigma) {
            Copy(*source, *destination);
        } else if (sigma < kWidestTaps) {
            TapFilter filter(sigma);
            BlurAlong(down != 0, *source, filter, *destination);
        } else {
            BoxFilter filter(sigma);
            BlurAlong(down != 0, *source, filter, *destination);
        }
    } catch (const std::bad_alloc&) {
        return refhost::kStatusNoMemory;
    }
    return 0;
}
