#pragma once

#include <cstdint>

#include "host/image.h"

/// One 8-bit coverage `c` scaled so that 255 becomes `value`, rounded: c * value / 255 for 8-bit samples (only the low
/// 8 bits of `value` count); for 16-bit samples `c` is first widened to 0..32768.
template <class P>
P VRLp_ScaledCoverage(std::uint8_t c, std::uint16_t value);

/// The same for `count` samples. Long runs go 16 samples at a time, with the same results.
template <class P>
void VRLp_ScaleCoverage(const std::uint8_t* coverage, std::int64_t count, std::uint16_t value, P* samples);
