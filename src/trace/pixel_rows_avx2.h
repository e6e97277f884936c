#pragma once

#include "trace/pixel_rows.h"

// The loops of RPPixelRows over eight pixels side by side, for processors with AVX2.

std::int32_t ThresholdLuminanceWithAvx2(const std::uint8_t* from, std::uint8_t* to, std::int32_t width, RPPacked flip,
                                        float threshold);
bool NumberRowWithAvx2(const std::uint8_t* from, std::uint8_t* numbers, std::int32_t width, const RPTwoColours& colours);
