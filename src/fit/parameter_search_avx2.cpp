#include "fit/parameter_search_avx2.h"

#if defined(__AVX2__)  // as this unit alone is compiled, where it can be

#include "fit/parameter_search_lanes.h"

void SearchWithAvx2(const CurvePowers& curve, const CFCurvePoints& points, float* found) {
    if (points.count < kWideLanes) return SearchBy<Lanes>(curve, points, found);
    SearchBy<WideLanes>(curve, points, found);
}

#endif
