#pragma once

#include "trace/trace_options.h"

/// Fills the context's bitmap from its source: blurs it when a radius is given, then sets every pixel whose channel value is
/// not less than the threshold. The bitmap must be at least as large as the source; what lies beyond is cleared. The
/// bitmap's alpha stays as it was.
/// @throws int  kFailedCheck after a report for an unknown channel; the status of a failed blur
/// @throws std::bad_alloc
void VRLp_Preprocess(VRLp_TraceContext& context);
