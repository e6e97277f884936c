#pragma once

#include <vector>

#include "refhost/engine/outline.h"

namespace refhost {

/// Appends the parallel of `curve` at signed `distance` (positive to the right-hand side, see `RightNormal`) as connected cubics
/// within about `tolerance` of it. All in pixels.
///
/// Where the curve bends towards the offset side more tightly than the distance, the parallel runs backwards. That stretch can
/// never bound the swept region; it is replaced by chords of the evolute (the centres of curvature). The strip between curve and
/// chain is then swept without folding over, which is what lets winding numbers count how often a point is covered.
///
/// `curve` is regularised (see `Regularised`) and not straight.
///
/// After Tiller & Hanson, "Offsets of two-dimensional profiles" (IEEE CG&A 1984), for the parallel as curves of the same kind, and
/// Hoschek, "Spline approximation of offset curves" (CAGD 1988), for end tangents kept and handle lengths found by least squares.
void AppendParallelCurve(const Cubic& curve, double distance, double tolerance, std::vector<CurvePiece>& out);

}  // namespace refhost
