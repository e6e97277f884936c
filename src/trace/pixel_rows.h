#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <span>

/// A pixel's alpha, red, green and blue byte as the machine reads them, so that a row is a plain loop over numbers.
using RPPacked = std::uint32_t;

inline constexpr std::int32_t kPixelBytes = sizeof(RPPacked);
inline constexpr auto kAlphaBits = std::bit_cast<RPPacked>(std::array<std::uint8_t, kPixelBytes>{255, 0, 0, 0});

/// Two colours, alpha bits clear, and the numbers that stand for them.
struct RPTwoColours {
    RPPacked first, second;
    std::uint8_t first_number, second_number;
};

/// The loops over all pixels of nearly every picture.
struct RPPixelRows {
    /// Sets pixels of `to` to white where the luminance of those of `from`, flipped by `flip` first, is not below `threshold`,
    /// and to black elsewhere; their alpha stays. Leaves the last few pixels of the row alone; gives the number of those done.
    std::int32_t (*threshold_luminance)(const std::uint8_t* from, std::uint8_t* to, std::int32_t width, RPPacked flip,
                                        float threshold);
    /// Numbers a row; false when it has another colour, then the numbers mean nothing.
    bool (*number)(const std::uint8_t* from, std::uint8_t* numbers, std::int32_t width, const RPTwoColours& colours);
};

/// The loops that this processor can do, the fastest last. All do the same.
std::span<const RPPixelRows> PixelRows();
