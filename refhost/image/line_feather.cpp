#include "refhost/image/line_feather.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <new>
#include <vector>

#include "base/fixed16.h"
#include "base/narrow.h"
#include "base/of_thread.h"
#include "host/image.h"

namespace refhost {
namespace {

// Where the line changes, its samples are summed up from left to right, so that what a box covers is one difference of two sums
// whatever its width. The average is summed up again on the spot for the next box. What lies between two changes too far apart to
// meet is left alone: the filter would give it back as it is.

// Four sums side by side, and the numbers they are averaged in. Sums wrap around at 2^32; a difference is exact all the same.
constexpr std::int64_t kLanes = 4;
using Sums4 = std::uint32_t __attribute__((vector_size(16)));
using Whole4 = std::int32_t __attribute__((vector_size(16)));
using Real4 = float __attribute__((vector_size(16)));

// Averages are taken in single precision with four roundings of 2^-24 each. Up to 2^20 they come out within 1/4 of the true
// value, so that a plateau is rounded back to itself.
constexpr std::int64_t kLargestAverage = std::int64_t{1} << 20;
constexpr std::int64_t kLargestSum = (std::int64_t{1} << 31) - 1;  // of one box: it is converted as a signed number

// From 2^23 to 2^24 the floats are the whole numbers: adding 1.5 * 2^23 rounds to nearest, and leaves the result in the low bits.
constexpr float kRounder = 12582912.0F;
constexpr std::uint32_t kRounderBits = 0x4B400000U;

constexpr std::int64_t kSmallestGap = 64;  // samples; starting a new stretch costs more than filtering a shorter plateau

/// Weight 1 nearer than `reach` samples, `edge` (0 to 1) at `reach`, 0 beyond.
struct Box {
    std::int64_t reach;
    double edge;
};

/// The same box applied `count` times.
struct Kernel {
    int count;
    Box box;
    std::int64_t Reach() const { return count * box.reach; }
};

/// Factors of the sum of the samples nearer than the reach of the box, and of the sum that includes those at its reach.
struct Weights {
    float inside, whole;
};

/// A kernel made ready for one sample type. Averages between two boxes are kept `scale` times as large as the samples.
struct Filter {
    Kernel kernel;
    std::uint32_t scale;
    Weights first, between, last;
};

/// Line positions or array entries; `end` is excluded.
struct Range {
    std::int64_t begin, end;
};

/// A line that goes on with zeros at both ends.
template <class P>
struct Line {
    P* samples;
    std::int64_t length;

    P At(std::int64_t position) const { return position >= 0 && position < length ? samples[position] : P{0}; }
    bool ChangesAt(std::int64_t position) const { return At(position - 1) != At(position); }
};

Kernel KernelFor(bool fine, double radius);
template <class P>
Filter FilterFor(const Kernel& kernel);
template <class P>
Range NextStretch(const Line<P>& line, Range among, std::int64_t gap);  // first and last change; both among.end if there is none
template <class P>
void FeatherStretch(const Filter& filter, const Line<P>& line, Range changes, Range outputs);

template <class P>
void FeatherChanges(const Kernel& kernel, const Line<P>& line, Range outputs) {
    const Filter filter = FilterFor<P>(kernel);
    const std::int64_t reach = kernel.Reach();
    const std::int64_t gap = std::max(2 * reach, kSmallestGap);
    Range among = {std::max(outputs.begin - reach + 1, std::int64_t{0}), std::min(outputs.end + reach, line.length + 1)};
    while (true) {
        const Range changes = NextStretch(line, among, gap);
        if (changes.begin == among.end) return;
        FeatherStretch(filter, line, changes,
                       {std::max(changes.begin - reach, outputs.begin), std::min(changes.end + reach, outputs.end)});
        among.begin = std::min(changes.end + gap, among.end);
    }
}

template <class P>
int FeatherLine(bool fine, std::int32_t length, std::int32_t lo, std::int32_t hi, std::int32_t radius, const void* scratch,
                void* line) {
    if (radius < 0) return kStatusBadArgument;
    if (length <= 0) return 0;
    if (scratch == nullptr || line == nullptr) return kStatusBadArgument;
    if (radius == 0) return 0;
    const Kernel kernel = KernelFor(fine, FixedToDouble(radius));
    const Range outputs = {std::max(lo - kernel.Reach(), std::int64_t{0}), std::min(hi + kernel.Reach(), std::int64_t{length})};
    if (outputs.begin >= outputs.end) return 0;
    try {
        FeatherChanges(kernel, Line<P>{static_cast<P*>(line), length}, outputs);
    } catch (const std::bad_alloc&) {
        return kStatusNoMemory;
    }
    return 0;
}

// ---- Kernel -------------------------------------------------------------------------------------------------------------------

// 2b - 1 whole weights have variance b (b - 1) / 3: b is the first reach at which one more whole weight on each side would do.
// With weight e there, three times the variance is (b (b - 1) (2b - 1) + 6 e b^2) / (2b - 1 + 2e) = v. Solved for e: 0 where one
// less would do, growing to 1.
Box BoxOfVariance(double v) {
    const double b = std::max(std::ceil((std::sqrt(1.0 + 4.0 * v) - 1.0) / 2.0), 1.0);
    const double edge = (2.0 * b - 1.0) * (v - b * (b - 1.0)) / (2.0 * (3.0 * b * b - v));
    return {static_cast<std::int64_t>(b), std::clamp(edge, 0.0, 1.0)};
}

// Variances add up: each of n boxes has r^2 / 3n. Small radii leave no room for four boxes, two always fit.
Kernel KernelFor(bool fine, double radius) {
    const auto furthest = static_cast<std::int64_t>(2.0 * std::ceil(radius));
    int count = fine ? 4 : 2;
    Box box = BoxOfVariance(radius * radius / count);
    while (count * box.reach > furthest) box = BoxOfVariance(radius * radius / --count);
    return {count, box};
}

Weights WeightsOf(const Box& box, double scale) {
    const double unit = scale / (static_cast<double>(2 * box.reach - 1) + 2.0 * box.edge);
    return {NarrowToFloat(unit * (1.0 - box.edge)), NarrowToFloat(unit * box.edge)};
}

template <class P>
Filter FilterFor(const Kernel& kernel) {
    constexpr std::int64_t max = SampleTraits<P>::kMax;
    std::int64_t scale = kLargestAverage / max;
    while (scale * max * (2 * kernel.box.reach + 1) > kLargestSum) scale /= 2;  // never below 1: reaches stay under 2^15
    const auto real_scale = static_cast<double>(scale);
    return {kernel, static_cast<std::uint32_t>(scale), WeightsOf(kernel.box, real_scale), WeightsOf(kernel.box, 1.0),
            WeightsOf(kernel.box, 1.0 / real_scale)};
}

// ---- Stretches ----------------------------------------------------------------------------------------------------------------

/// Whether each of the 16 bytes of samples from here on equals the sample before it.
template <class P>
bool IsConstantBlock(const P* samples) {
    return std::memcmp(samples - 1, samples, 16) == 0;
}

template <class P>
std::int64_t FirstChange(const Line<P>& line, Range range) {
    constexpr std::int64_t block = 16 / sizeof(P);
    std::int64_t at = range.begin;
    if (at == 0 && !line.ChangesAt(at)) ++at;
    if (at > 0) {
        const std::int64_t last_block = std::min(range.end, line.length) - block;
        while (at <= last_block && IsConstantBlock(line.samples + at)) at += block;
    }
    while (at < range.end && !line.ChangesAt(at)) ++at;
    return at;
}

/// Last change in a range that starts after position 0; the position before the range if there is none.
template <class P>
std::int64_t LastChange(const Line<P>& line, Range range) {
    constexpr std::int64_t block = 16 / sizeof(P);
    std::int64_t at = range.end - 1;
    if (at == line.length && !line.ChangesAt(at)) --at;
    if (at < line.length) {
        while (at - block >= range.begin && IsConstantBlock(line.samples + at - block + 1)) at -= block;
    }
    while (at >= range.begin && !line.ChangesAt(at)) --at;
    return at;
}

// Looks back from the far side of the gap: amid changes that finds one at once.
template <class P>
Range NextStretch(const Line<P>& line, Range among, std::int64_t gap) {
    const std::int64_t first = FirstChange(line, among);
    std::int64_t last = first;
    while (last < among.end) {
        const std::int64_t further = LastChange(line, {last + 1, std::min(last + gap, among.end)});
        if (further == last) break;
        last = further;
    }
    return {first, last};
}

// ---- Boxes --------------------------------------------------------------------------------------------------------------------

Sums4 Load(const std::uint32_t* sums) {
    Sums4 four;
    std::memcpy(&four, sums, sizeof four);
    return four;
}

void Store(Sums4 four, std::uint32_t* sums) { std::memcpy(sums, &four, sizeof four); }

/// Four weighted averages. The first box covers the samples from sums[1] on; sums[0] is what came before them.
Sums4 Average(const std::uint32_t* sums, std::int64_t reach, Weights weights) {
    const Sums4 inside = Load(sums + 2 * reach) - Load(sums + 1);
    const Sums4 whole = Load(sums + 2 * reach + 1) - Load(sums);
    const Real4 average = __builtin_convertvector(reinterpret_cast<Whole4>(inside), Real4) * weights.inside +
                          __builtin_convertvector(reinterpret_cast<Whole4>(whole), Real4) * weights.whole;
    return reinterpret_cast<Sums4>(average + kRounder) - kRounderBits;
}

Sums4 RunningSums(Sums4 four) {
    constexpr Sums4 zero = {};
    four += __builtin_shufflevector(four, zero, 4, 0, 1, 2);
    return four + __builtin_shufflevector(four, zero, 4, 5, 0, 1);
}

/// Sums up what `four_at` gives for each four entries, on from `total`. Up to three entries past the range are overwritten.
template <class FourAt>
void SumUp(std::uint32_t* sums, Range range, std::uint32_t total, FourAt four_at) {
    Sums4 before = {total, total, total, total};
    for (std::int64_t i = range.begin; i < range.end; i += kLanes) {
        const Sums4 four = RunningSums(four_at(sums + i)) + before;
        Store(four, sums + i);
        before = __builtin_shufflevector(four, four, 3, 3, 3, 3);
    }
}

void SumUpConstant(std::uint32_t* sums, Range range, std::uint32_t total, std::uint32_t constant) {
    for (std::int64_t i = range.begin; i < range.end; ++i) sums[i] = total += constant;
}

/// The entries in use after some of the boxes, and those among them that the changes have reached; the others lie on plateaus.
struct Extent {
    std::int64_t count;
    Range changed;
};

// An average is stored where its box began, over a sum that no later box needs. So each box takes its reach and one entry on the
// left, its reach on the right.
Extent ExtentAfter(int boxes, const Kernel& kernel, Range changes, Range outputs) {
    const std::int64_t to_come = kernel.count - boxes;
    const std::int64_t first = outputs.begin - to_come * (kernel.box.reach + 1);
    const std::int64_t count = outputs.end - outputs.begin + to_come * (2 * kernel.box.reach + 1);
    const std::int64_t spread = boxes * kernel.box.reach;
    const auto entry = [&](std::int64_t position) { return std::clamp(position - first, std::int64_t{0}, count); };
    return {count, {entry(changes.begin - spread), entry(changes.end + spread)}};
}

template <class FourAt>
void SumUpStretch(std::uint32_t* sums, const Extent& extent, std::uint32_t plateau_before, std::uint32_t plateau_after,
                  FourAt four_at) {
    const auto [begin, end] = extent.changed;
    SumUpConstant(sums, {0, begin}, 0, plateau_before);
    SumUp(sums, extent.changed, static_cast<std::uint32_t>(begin) * plateau_before, four_at);
    SumUpConstant(sums, {end, extent.count}, end > 0 ? sums[end - 1] : 0, plateau_after);
}

struct Workspace {
    std::vector<std::uint32_t> sums;
};

/// At least `count` entries and a few to spare for whole fours, kept by the calling thread.
/// @throws std::bad_alloc
std::uint32_t* WorkingSums(std::int64_t count) {
    std::vector<std::uint32_t>& sums = OfThread<Workspace>().sums;
    const auto needed = static_cast<std::size_t>(count + kLanes);
    if (sums.size() < needed) sums.resize(needed);
    return sums.data();
}

template <class P>
void FeatherStretch(const Filter& filter, const Line<P>& line, Range changes, Range outputs) {
    const Kernel& kernel = filter.kernel;
    const std::int64_t reach = kernel.box.reach;
    const std::uint32_t before = line.At(changes.begin - 1), after = line.At(changes.end);

    const Extent raw = ExtentAfter(0, kernel, changes, outputs);
    std::uint32_t* const sums = WorkingSums(raw.count);
    std::copy(line.samples + changes.begin, line.samples + changes.end, sums + raw.changed.begin);
    SumUpStretch(sums, raw, before, after, Load);

    Weights weights = filter.first;
    for (int boxes = 1; boxes < kernel.count; ++boxes) {
        SumUpStretch(sums, ExtentAfter(boxes, kernel, changes, outputs), before * filter.scale, after * filter.scale,
                     [=](const std::uint32_t* box) { return Average(box, reach, weights); });
        weights = filter.between;
    }
    const std::int64_t count = outputs.end - outputs.begin;
    for (std::int64_t i = 0; i < count; i += kLanes) Store(Average(sums + i, reach, filter.last), sums + i);
    for (std::int64_t i = 0; i < count; ++i) line.samples[outputs.begin + i] = static_cast<P>(sums[i]);
}

}  // namespace

int FeatherLine8(unsigned char quality, std::int32_t length, std::int32_t lo, std::int32_t hi, std::int32_t radius, void* scratch,
                 void* line) {
    return FeatherLine<GW_Pixel8>(quality != 0, length, lo, hi, radius, scratch, line);
}

int FeatherLine16(unsigned char quality, std::int32_t length, std::int32_t lo, std::int32_t hi, std::int32_t radius,
                  void* scratch, void* line) {
    return FeatherLine<GW_Pixel16>(quality != 0, length, lo, hi, radius, scratch, line);
}

}  // namespace refhost
