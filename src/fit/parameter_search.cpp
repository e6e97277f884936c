#include "fit/parameter_search.h"

#include "fit/parameter_search_avx2.h"
#include "fit/parameter_search_lanes.h"

CurvePowers::CurvePowers(const CFBezier3& curve) : start(curve.Control(0)) {
    const auto set = [](const float* p, float* powers) {
        const float to_first = p[1] - p[0], to_second = p[2] - p[1], to_last = p[3] - p[2];
        powers[0] = 3.0F * to_first;
        powers[1] = 3.0F * (to_second - to_first);
        powers[2] = to_last - 2.0F * to_second + to_first;
    };
    set(curve.x, x);
    set(curve.y, y);
}

std::span<const CFParameterSearch> ParameterSearches() {
#if defined(VRL_AVX2)
    static constexpr CFParameterSearch kSearches[] = {SearchBy<Lanes>, SearchWithAvx2};
    return std::span(kSearches).first(__builtin_cpu_supports("avx2") ? 2 : 1);
#else
    static constexpr CFParameterSearch kSearches[] = {SearchBy<Lanes>};
    return kSearches;
#endif
}
