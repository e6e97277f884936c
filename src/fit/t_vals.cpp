#include "fit/t_vals.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "base/errors.h"
#include "base/narrow.h"
#include "fit/segment.h"

namespace {

constexpr std::int32_t kFewestValues = 4;  // a cubic has four control points: fewer different parameters do not fix it
constexpr float kEmptyRange = 1e-6F;       // a range of parameters no wider cannot be stretched to run from 0 to 1

void SetEven(CFPoolVector<float>& values);
/// False, with `values` undefined, when all points coincide.
bool SetChordLengths(CFPoolVector<float>& values, const float* xs, const float* ys);
/// True when `values`, which never decrease, are enough to hold different ones but do not.
bool TooFewDifferent(const CFPoolVector<float>& values);
/// (values[j] - from) / span, or even values where the span is empty.
CFTVals Stretch(CFPoolVector<float> values, float from, float span);
bool RunsFromZeroToOne(const CFTVals& parameters);

}  // namespace

CFTVals::CFTVals(const float* xs, const float* ys, std::int32_t count, std::int32_t spacing)
    : values_(static_cast<std::size_t>(count)) {
    const bool by_chord = spacing != kSpacingUnitSteps && SetChordLengths(values_, xs, ys);
    if (!by_chord || TooFewDifferent(values_)) SetEven(values_);
}

std::pair<CFTVals, CFTVals> CFTVals::Split(std::int32_t k) const {
    const float cut = (*this)[k];
    return {Stretch({values_.begin(), values_.begin() + k + 1}, 0.0F, cut),
            Stretch({values_.begin() + k, values_.end()}, cut, 1.0F - cut)};
}

CFTVals CFTVals::Merge(const CFTVals& first, const CFTVals& second) {
    if (!RunsFromZeroToOne(first) || !RunsFromZeroToOne(second)) throw kBrokenInvariant;
    const std::int32_t count = first.Count() + second.Count() - 1;
    const float share = static_cast<float>(first.Count()) / static_cast<float>(count);  // where the second range starts
    const float rest = 1.0F - share;
    if (share >= 1.0F) throw kBrokenInvariant;  // more points than floats tell apart

    CFPoolVector<float> values;
    values.reserve(static_cast<std::size_t>(count));
    for (const float t : first.values_) values.push_back(share * t);
    for (std::int32_t j = 1; j < second.Count(); ++j) values.push_back(share + rest * second[j]);
    values.front() = 0.0F;
    values.back() = 1.0F;
    if (TooFewDifferent(values)) SetEven(values);
    return CFTVals(std::move(values));
}

namespace {

void SetEven(CFPoolVector<float>& values) {
    const auto count = static_cast<std::int32_t>(values.size());
    for (std::int32_t j = 0; j < count; ++j) values[static_cast<std::size_t>(j)] = EvenParameter(j, count);
}

bool SetChordLengths(CFPoolVector<float>& values, const float* xs, const float* ys) {
    double length = 0.0;  // a float sum of many steps drifts
    values.front() = 0.0F;
    constexpr std::size_t kBlock = 16;
    double steps[kBlock];  // found before they are summed up, so that the compiler takes roots side by side
    for (std::size_t first = 1; first < values.size(); first += kBlock) {
        const std::size_t count = std::min(kBlock, values.size() - first);
        for (std::size_t j = 0; j < count; ++j) {
            const float dx = xs[first + j] - xs[first + j - 1], dy = ys[first + j] - ys[first + j - 1];
            steps[j] = std::sqrt(static_cast<double>(dx * dx + dy * dy));
        }
        for (std::size_t j = 0; j < count; ++j) values[first + j] = NarrowToFloat(length += steps[j]);
    }
    const float total = values.back();
    if (total <= 0.0F) return false;
    for (float& t : values) t /= total;
    return true;
}

bool TooFewDifferent(const CFPoolVector<float>& values) {
    if (values.size() < kFewestValues) return false;
    std::int32_t different = 1;
    for (std::size_t j = 1; j < values.size() && different < kFewestValues; ++j) different += values[j] > values[j - 1] ? 1 : 0;
    return different < kFewestValues;
}

CFTVals Stretch(CFPoolVector<float> values, float from, float span) {
    if (span <= kEmptyRange) {
        SetEven(values);
    } else {
        for (float& t : values) t = (t - from) / span;
    }
    return CFTVals(std::move(values));
}

bool RunsFromZeroToOne(const CFTVals& parameters) {
    // Both ends are set, or divided by themselves, so they are exact.
    return parameters.Count() >= 2 && parameters[0] == 0.0F && parameters[parameters.Count() - 1] == 1.0F;
}

}  // namespace
