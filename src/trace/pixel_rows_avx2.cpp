#include "trace/pixel_rows_avx2.h"

#if defined(__AVX2__)  // as this unit is compiled, where it can be

#include "trace/pixel_rows_lanes.h"

std::int32_t ThresholdLuminanceWithAvx2(const std::uint8_t* from, std::uint8_t* to, std::int32_t width, RPPacked flip,
                                        float threshold) {
    return ThresholdLuminanceBy<WideLanes>(from, to, width, flip, threshold);
}

bool NumberRowWithAvx2(const std::uint8_t* from, std::uint8_t* numbers, std::int32_t width, const RPTwoColours& colours) {
    return NumberRow(from, numbers, width, colours);
}

#endif
