#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

// Four numbers computed side by side, by the compilers' vector types: the results are those of one by one.

inline constexpr std::int32_t kLanes = 4;
using Lanes = float __attribute__((vector_size(kLanes * sizeof(float))));
using LaneFlags = std::int32_t __attribute__((vector_size(kLanes * sizeof(float))));  // all bits of a lane are set or none

inline Lanes Load(const float* values) {
    Lanes lanes;
    std::memcpy(&lanes, values, sizeof lanes);
    return lanes;
}

/// The first `count` lanes, 1 to 3, from `values`, 0 in the others.
inline Lanes LoadPart(const float* values, std::int32_t count) {
    return Lanes{values[0], count > 1 ? values[1] : 0.0F, count > 2 ? values[2] : 0.0F, 0.0F};
}

inline void Store(Lanes lanes, float* values) { std::memcpy(values, &lanes, sizeof lanes); }

inline bool AnySet(LaneFlags flags) {
    std::uint64_t halves[2];
    std::memcpy(halves, &flags, sizeof halves);
    return (halves[0] | halves[1]) != 0;
}

inline bool AllSet(LaneFlags flags) {
    std::uint64_t halves[2];
    std::memcpy(halves, &flags, sizeof halves);
    return (halves[0] & halves[1]) == ~std::uint64_t{0};
}

/// `a` where the flags are set, `b` elsewhere.
inline Lanes Select(LaneFlags flags, Lanes a, Lanes b) {
    const auto bits = std::bit_cast<LaneFlags>(b);
    return std::bit_cast<Lanes>(bits ^ (flags & (bits ^ std::bit_cast<LaneFlags>(a))));
}

inline Lanes Magnitude(Lanes x) { return std::bit_cast<Lanes>(std::bit_cast<LaneFlags>(x) & 0x7FFFFFFF); }
inline Lanes Least(Lanes a, Lanes b) { return b < a ? b : a; }
inline Lanes Greatest(Lanes a, Lanes b) { return a < b ? b : a; }
