#include "trace/pixel_rows.h"

#include "trace/pixel_rows_avx2.h"
#include "trace/pixel_rows_lanes.h"

std::span<const RPPixelRows> PixelRows() {
#if defined(VRL_AVX2)
    static constexpr RPPixelRows kRows[] = {{ThresholdLuminanceBy<Lanes>, NumberRow},
                                            {ThresholdLuminanceWithAvx2, NumberRowWithAvx2}};
    return std::span(kRows).first(__builtin_cpu_supports("avx2") ? 2 : 1);
#else
    static constexpr RPPixelRows kRows[] = {{ThresholdLuminanceBy<Lanes>, NumberRow}};
    return kRows;
#endif
}
