#pragma once

#include "refhost/engine/arrangement.h"
#include "refhost/engine/flat_chain.h"
#include "refhost/engine/outline.h"

namespace refhost {

/// Turns the boundary found among the segments of `flat` back into curves. Consecutive boundary edges that follow one piece of
/// `chain` become one exact sub-curve of it; where two pieces cross, their ends are moved to the crossing of the curves
/// themselves. `tolerance` is the one `flat` was made with, in pixels.
Outline RebuildCurves(const Outline& chain, const FlatChain& flat, const Boundary& boundary, double tolerance);

}  // namespace refhost
