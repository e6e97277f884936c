#pragma once

#include "refhost/engine/arrangement.h"
#include "refhost/engine/flat_chain.h"
#include "refhost/engine/offset_chain.h"
#include "refhost/engine/outline.h"

namespace refhost {

/// Turns the boundary found among the segments of `flat` back into curves. Consecutive boundary edges that follow one piece of
/// `chain` become one exact sub-curve of it, or the cubics fitted to that part of a parallel; where two pieces cross, their ends
/// are moved to the crossing of the curves themselves. `tolerance` is the one `flat` was made with, in pixels, and that of the
/// fit.
Outline RebuildCurves(const OffsetChain& chain, const FlatChain& flat, const Boundary& boundary, double tolerance);

}  // namespace refhost
