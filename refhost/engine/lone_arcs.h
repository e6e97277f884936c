#pragma once

#include <cstdint>
#include <vector>

#include "refhost/engine/outline.h"

namespace refhost {

/// A part of an outline's piece.
struct Arc {
    std::uint32_t piece;
    double from, to;  // parameters
    bool lone;
};

/// Cuts the pieces of a regularised outline into arcs, few and long where nothing is near. An arc is lone when no other arc comes
/// near, but for its neighbours at the common ends, which lead well away there. Where crossings are looked for, the chord of such
/// an arc does as well as the arc itself: between the two there is nothing. Other arcs are straight or so short that a few chords
/// are within `tolerance` pixels of them. In the order of the outline.
std::vector<Arc> CutIntoArcs(const Outline& outline, double tolerance);

}  // namespace refhost
