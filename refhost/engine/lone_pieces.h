#pragma once

#include <vector>

#include "refhost/engine/outline.h"

namespace refhost {

/// Marks the pieces of a regularised outline that no other piece comes near, but for their neighbours at the common ends, which
/// lead well away there. Where crossings are looked for, the chord of such a piece does as well as the piece itself: between the
/// two there is nothing.
std::vector<bool> FindLonePieces(const Outline& outline);

}  // namespace refhost
