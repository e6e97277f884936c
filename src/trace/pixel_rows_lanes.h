#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "fit/lanes.h"
#include "trace/pixel_rows.h"

// Pixels are taken side by side. Each unit that includes this has its own functions, for the processor it is compiled for.

namespace {

/// Pixels side by side in `bytes`, as numbers and as their two halves.
template <std::size_t bytes>
struct PackedLanes {
    typedef std::uint32_t Numbers __attribute__((vector_size(bytes)));
    typedef std::uint16_t Halves __attribute__((vector_size(bytes)));
};

/// The luminances of as many pixels as there are lanes: 77 red + 151 green + 28 blue, the upper byte of that. All products and
/// sums fit into the halves of a pixel's number.
template <class Values>
VRL_INLINE Values Luminances(FlagsOf<Values> pixels) {
    using Numbers = typename PackedLanes<sizeof(Values)>::Numbers;
    using Halves = typename PackedLanes<sizeof(Values)>::Halves;
    constexpr bool kLittle = std::endian::native == std::endian::little;
    constexpr std::uint32_t kGreen = kLittle ? 151U << 16 : 151U;  // beside alpha
    constexpr std::uint32_t kRedBlue = kLittle ? 77U | 28U << 16 : 77U << 16 | 28U;
    const auto halves = __builtin_bit_cast(Halves, pixels);
    const Halves lower = halves & 255, upper = halves >> 8;
    const Halves greens = (kLittle ? lower : upper) * __builtin_bit_cast(Halves, Numbers{} + kGreen);
    const Halves others = (kLittle ? upper : lower) * __builtin_bit_cast(Halves, Numbers{} + kRedBlue);
    const auto parts = __builtin_bit_cast(Numbers, greens + others);
    const Numbers sums_on_top = parts + (parts << 16);
    return __builtin_convertvector(__builtin_bit_cast(FlagsOf<Values>, sums_on_top >> 24), Values);
}

template <class Values>
std::int32_t ThresholdLuminanceBy(const std::uint8_t* from, std::uint8_t* to, std::int32_t width, RPPacked flip,
                                  float threshold) {
    using Pixels = FlagsOf<Values>;
    constexpr auto kWidth = static_cast<std::int32_t>(sizeof(Values)) / kPixelBytes;
    const Pixels alpha = Pixels{} + static_cast<std::int32_t>(kAlphaBits), flips = Pixels{} + static_cast<std::int32_t>(flip);
    const std::int32_t done = width / kWidth * kWidth;
    for (std::int32_t x = 0; x < done; x += kWidth) {
        const std::ptrdiff_t byte = std::ptrdiff_t{x} * kPixelBytes;
        Pixels pixels, set;
        std::memcpy(&pixels, from + byte, sizeof pixels);
        std::memcpy(&set, to + byte, sizeof set);
        const Pixels below = Luminances<Values>(pixels ^ flips) < threshold;  // a threshold that is no number sets all
        set = (set & alpha) | (~below & ~alpha);
        std::memcpy(to + byte, &set, sizeof set);
    }
    return done;
}

/// Without branches, so that compilers use wide registers.
bool NumberRow(const std::uint8_t* from, std::uint8_t* numbers, std::int32_t width, const RPTwoColours& colours) {
    const RPPacked first = colours.first, second = colours.second;
    const std::uint32_t second_number = colours.second_number, difference = colours.first_number ^ second_number;
    RPPacked unknown = 0;
    for (std::int32_t x = 0; x < width; ++x) {
        RPPacked pixel;
        std::memcpy(&pixel, from + std::ptrdiff_t{kPixelBytes} * x, sizeof pixel);
        const RPPacked colour = pixel & ~kAlphaBits;
        const RPPacked is_first = colour == first ? ~0U : 0U, is_second = colour == second ? ~0U : 0U;
        unknown |= ~(is_first | is_second);
        numbers[x] = static_cast<std::uint8_t>(second_number ^ (is_first & difference));
    }
    return unknown == 0;
}

}  // namespace
