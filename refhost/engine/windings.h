#pragma once

#include <cstdint>
#include <vector>

#include "refhost/engine/planar_graph.h"

namespace refhost {

/// The winding number on the left of half-edge 2 e, for every edge e; on its right it is lower by the multiplicity.
///
/// Windings spread from edge to edge round the vertices. What a connected part cannot know, how often the others wind round it,
/// is counted along one ray for each.
std::vector<std::int32_t> WindingsOnLeft(const PlanarGraph& graph);

}  // namespace refhost
