#pragma once

#include <optional>
#include <vector>

#include "refhost/engine/outline.h"

namespace refhost {

// The parallel of a curve at a signed distance d: c(t) + d n(t), n the normal to the right-hand side. All lengths in pixels;
// curves are regularised (see `Regularised`).
//
// After Tiller & Hanson, "Offsets of two-dimensional profiles" (IEEE CG&A 1984), for the parallel as curves of the same kind, and
// Hoschek, "Spline approximation of offset curves" (CAGD 1988), for end tangents kept and handle lengths found by least squares.

/// Point of the exact parallel at `t`, and its derivative.
Point ParallelPoint(const Cubic& curve, double distance, double t);
Point ParallelDerivative(const Cubic& curve, double distance, double t);

/// Whether a curve turns and changes its speed so little that nothing can hide between a few even samples.
bool IsCalm(const Cubic& curve);

/// A single cubic within `tolerance` of the whole parallel, when the curve is so calm that a direct construction gives one.
std::optional<Cubic> CalmParallel(const Cubic& curve, double distance, double tolerance);

/// A point of the clamped parallel.
struct ParallelSample {
    double t;
    Point position;
    bool is_clamped;  // held back at the centre of curvature
};

/// Appends samples from t = 0 to t = 1 of the clamped parallel, whose chords are within `tolerance` of it
/// and follow its turns. A distance of 0 samples the curve itself.
///
/// Where the curve bends towards the offset side more tightly than the distance, the parallel runs backwards. That stretch can
/// never bound the swept region; there the clamped parallel follows the evolute (the centres of curvature) instead. The strip
/// between it and the curve is then swept without folding over, which is what lets winding numbers count how often a point is
/// covered. The first and the last sample always lie at the full distance.
void SampleClampedParallel(const Cubic& curve, double distance, double tolerance, std::vector<ParallelSample>& out);

/// Appends connected cubics within about `tolerance` of the parallel from parameter `from` to `to`, either of which may be the
/// larger; the parallel does not run backwards in between.
void FitParallel(const Cubic& curve, double distance, double from, double to, double tolerance, std::vector<CurvePiece>& out);

}  // namespace refhost
