#pragma once

#include <cstdint>
#include <vector>

#include "refhost/engine/offset_chain.h"

namespace refhost {

/// A part of a chain's piece.
struct Arc {
    std::uint32_t piece;
    double from, to;  // parameters
    bool lone;
};

/// Cuts the pieces of a chain into arcs, few and long where nothing is near. An arc is lone when no other arc comes
/// near, but for its neighbours at the common ends, which lead well away there. Where crossings are looked for, the chord of such
/// an arc does as well as the arc itself: between the two there is nothing. Other arcs are straight or so short that a few chords
/// are within `tolerance` pixels of them. In the order of the chain.
std::vector<Arc> CutIntoArcs(const OffsetChain& chain, double tolerance);

/// Every piece as one arc that is not lone: where most of them cross others there is nothing to gain.
std::vector<Arc> WholePieces(const OffsetChain& chain);

}  // namespace refhost
