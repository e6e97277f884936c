#pragma once

#include "fit/parameter_search.h"

/// A CFParameterSearch of eight points side by side, for processors with AVX2.
void SearchWithAvx2(const CurvePowers& curve, const CFCurvePoints& points, float* found);
