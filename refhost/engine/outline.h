#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "refhost/engine/cubic.h"
#include "refhost/engine/path_view.h"

namespace refhost {

/// One piece of an outline. A straight piece carries its curve in the form of `LineAsCubic`.
struct CurvePiece {
    Cubic curve;
    bool straight;
};

inline CurvePiece StraightPiece(Point from, Point to) { return {LineAsCubic(from, to), true}; }

/// Moves one end of a piece; a curve keeps the direction it has there.
void MoveStart(CurvePiece& piece, Point start);
void MoveEnd(CurvePiece& piece, Point end);

/// Closed loops of pieces, one after the other: each piece starts where the one before it ends, and the first piece of a loop
/// where the last one ends.
template <class Piece>
struct PieceLoops {
    std::vector<Piece> pieces;
    std::vector<std::size_t> loop_ends;  // one past the last piece of each loop, increasing

    std::size_t LoopCount() const { return loop_ends.size(); }
    std::size_t LoopBegin(std::size_t loop) const { return loop == 0 ? 0 : loop_ends[loop - 1]; }
    std::span<const Piece> Loop(std::size_t loop) const {
        return std::span(pieces).subspan(LoopBegin(loop), loop_ends[loop] - LoopBegin(loop));
    }
    /// Ends the loop under construction; does nothing when it has no pieces.
    void CloseLoop() {
        if (pieces.size() > (loop_ends.empty() ? 0 : loop_ends.back())) loop_ends.push_back(pieces.size());
    }
};

using Outline = PieceLoops<CurvePiece>;

/// Signed area of a loop; positive when it runs clockwise on screen (y down).
double SignedArea(std::span<const CurvePiece> loop);

/// The largest distance of a control point from the origin, in either axis.
double LargestCoordinate(const Outline& outline);

/// The subpaths of `path` as closed loops; open ones get a straight leg back to their start.
/// @throws EngineError  kErrorBadPath when the operators make no path, kErrorNotFinite for a NaN or infinite coordinate
Outline ReadOutline(const PathView& path);

/// `outline` moved by `shift`, then scaled by `scale`.
Outline Transformed(const Outline& outline, Point shift, double scale);

/// The same loops in the form offsetting relies on: no piece is shorter than a noticeable length, control legs are either zero
/// or long enough to give a tangent, pieces that look straight are marked so, and a cusp inside a piece is a corner between two.
/// Loops with no extent disappear.
Outline Regularised(const Outline& outline);

}  // namespace refhost
