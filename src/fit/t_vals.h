#pragma once

#include <cstdint>
#include <utility>

#include "fit/pool.h"

/// Parameter `j` of `count` even ones.
inline float EvenParameter(std::int32_t j, std::int32_t count) {
    return static_cast<float>(j) / static_cast<float>(count > 1 ? count - 1 : 1);
}

/// The curve parameter of every point of a range: from 0 to 1, never decreasing.
class CFTVals {
 public:
    /// Parameters of `count` points with coordinates `xs`, `ys` on a chain of the given spacing: even for unit steps, by
    /// chord length for any other. Chords that add up to 0, or that give fewer than 4 different values to 4 or more points,
    /// give even parameters too.
    CFTVals(const float* xs, const float* ys, std::int32_t count, std::int32_t spacing);
    /// None.
    CFTVals() = default;
    /// Takes ready values.
    explicit CFTVals(CFPoolVector<float> values) : values_(std::move(values)) {}

    std::int32_t Count() const { return static_cast<std::int32_t>(values_.size()); }
    float operator[](std::int32_t j) const { return values_[static_cast<std::size_t>(j)]; }
    float& operator[](std::int32_t j) { return values_[static_cast<std::size_t>(j)]; }
    const float* Data() const { return values_.data(); }

    /// The parameters of both halves when the range is cut at point `k`, which belongs to both; each again runs from 0 to 1.
    std::pair<CFTVals, CFTVals> Split(std::int32_t k) const;
    /// The parameters of two neighbouring ranges as one; their shared point counts once.
    /// @throws int  kBrokenInvariant when either has fewer than 2 values or does not run from 0 to 1
    static CFTVals Merge(const CFTVals& first, const CFTVals& second);

 private:
    CFPoolVector<float> values_;
};
