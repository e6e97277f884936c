#pragma once

#include "refhost/engine/outline.h"

namespace refhost {

inline constexpr double kJoinlessGap = 0.01;  // pixels; parallels that end this close to each other need no join

/// How convex corners of an offset are filled. The values are the line-join codes of PostScript and PDF.
enum class OffsetJoin { kMiter = 0, kRound = 1, kBevel = 2 };

struct JoinStyle {
    OffsetJoin join;
    double miter_limit;  // longest miter as a multiple of the distance; a longer one becomes a bevel
};

/// A piece of an offset chain: a curve, or the clamped parallel of one (see `SampleClampedParallel`).
struct ChainPiece {
    Cubic curve;
    bool straight;
    bool scaffold;    // in the chain only to keep its winding numbers right; no part of a true offset lies on it
    double distance;  // of the parallel; 0: the curve itself

    Point At(double t) const;  // of the curve, or of its exact parallel
};

using OffsetChain = PieceLoops<ChainPiece>;

/// The raw offset of `outline`: for every loop a closed chain of parallels and joins that usually crosses itself.
///
/// The winding number of the chain at a point is that of the outline plus, for a positive distance (minus, for a negative one),
/// the number of times the point is covered by what the outline sweeps: a strip along each piece and a sector at each corner.
/// When the outline winds 0 or 1 times around every point, the chain winds a positive number of times around exactly the points
/// of the grown (shrunk) region. Two things keep every term of that sum from going negative: parallels never fold over (see
/// `SampleClampedParallel`), and where the swept strips of two pieces overlap at a concave corner, the chain runs from one
/// parallel to the corner itself and out again to the next.
///
/// Parallels of neighbouring pieces that end less than a hundredth of a pixel apart follow each other without a join.
/// `outline` is regularised; `distance` and `tolerance` in pixels, the tolerance for parallels and arcs given as cubics.
/// After Chen & McMains, "Polygon offsetting by computing winding numbers" (ASME DETC 2005), here for curves.
OffsetChain BuildOffsetChain(const Outline& outline, double distance, JoinStyle style, double tolerance);

/// An outline as a chain of its own curves: its offset by nothing.
OffsetChain ChainOf(const Outline& outline);

}  // namespace refhost
