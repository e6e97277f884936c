#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "trace/graph.h"

/// A stretch of a boundary from one junction to the next, along which the region has one neighbour. It ends where the
/// chain's next piece starts.
struct RPPiece {
    std::int32_t edge;       // the edge that the neighbour's boundary made of it, or kNone
    std::int16_t x, y;       // first corner
    std::size_t first_step;  // in the chain's steps; a piece that is an edge already has none there
    std::int32_t step_count;
};

/// The boundary of a region in the order of travel, the region on the right on screen.
struct RPChain {
    std::vector<RPPiece> pieces;
    std::vector<std::uint8_t> steps;  // RPDirection of every step
    bool is_loop = false;             // meets no junction: then it has one piece, which starts somewhere
};

/// Puts a boundary of `region` into the graph: new edges for the pieces that have none, and the ring of all of them.
/// Returns the ring's first edge; the pieces then name theirs.
/// @throws int  kBrokenInvariant for an empty chain, or one that does not fit what is there
std::int32_t AddChain(RPGraph& graph, std::int32_t region, RPChain& chain, bool is_outer);

/// Releases the dictionary and links the ring of edges round the outside of the image. A graph without edges stays so.
/// @throws int  kBrokenInvariant when the edges do not form such a ring
void FinishGraph(RPGraph& graph);
