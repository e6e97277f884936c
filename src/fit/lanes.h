#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>

// Numbers computed side by side, by the compilers' vector types: the results are those of one by one. Everything is inlined
// even without optimisation: units compiled for different processors share no function.

inline constexpr std::int32_t kLanes = 4;  // as many as every processor has room for
using Lanes = float __attribute__((vector_size(kLanes * sizeof(float))));
using LaneFlags = std::int32_t __attribute__((vector_size(kLanes * sizeof(float))));  // all bits of a lane are set or none

inline constexpr std::int32_t kWideLanes = 8;  // with AVX
using WideLanes = float __attribute__((vector_size(kWideLanes * sizeof(float))));

template <class Values>
using FlagsOf = decltype(Values{} < Values{});

#define VRL_INLINE [[gnu::always_inline]] inline

template <class Values = Lanes>
VRL_INLINE Values Load(const float* values) {
    Values lanes;
    std::memcpy(&lanes, values, sizeof lanes);
    return lanes;
}

/// The first `count` lanes, 1 to 3, from `values`, 0 in the others.
VRL_INLINE Lanes LoadPart(const float* values, std::int32_t count) {
    return Lanes{values[0], count > 1 ? values[1] : 0.0F, count > 2 ? values[2] : 0.0F, 0.0F};
}

template <class Values>
VRL_INLINE void Store(Values lanes, float* values) {
    std::memcpy(values, &lanes, sizeof lanes);
}

template <class Flags>
VRL_INLINE bool AnySet(Flags flags) {
    std::uint64_t parts[sizeof flags / sizeof(std::uint64_t)], any = 0;
    std::memcpy(parts, &flags, sizeof parts);
    for (const std::uint64_t part : parts) any |= part;
    return any != 0;
}

template <class Flags>
VRL_INLINE bool AllSet(Flags flags) {
    return !AnySet(~flags);
}

/// `a` where the flags are set, `b` elsewhere.
template <class Values>
VRL_INLINE Values Select(FlagsOf<Values> flags, Values a, Values b) {
#if defined(__AVX__)
    return flags ? a : b;  // one instruction
#else
    const auto bits = __builtin_bit_cast(FlagsOf<Values>, b);
    return __builtin_bit_cast(Values, bits ^ (flags & (bits ^ __builtin_bit_cast(FlagsOf<Values>, a))));
#endif
}

template <class Values>
VRL_INLINE Values Magnitude(Values x) {
    return __builtin_bit_cast(Values, __builtin_bit_cast(FlagsOf<Values>, x) & 0x7FFFFFFF);
}
VRL_INLINE Lanes SquareRoot(Lanes x) { return Lanes{std::sqrt(x[0]), std::sqrt(x[1]), std::sqrt(x[2]), std::sqrt(x[3])}; }
template <class Values>
VRL_INLINE Values Least(Values a, Values b) {
    return b < a ? b : a;
}
template <class Values>
VRL_INLINE Values Greatest(Values a, Values b) {
    return a < b ? b : a;
}
