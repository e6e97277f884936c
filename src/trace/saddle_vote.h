#pragma once

#include <cstdint>

#include "trace/graph.h"
#include "trace/pixel_map.h"
#include "trace/trace.h"

/// The regions on the four sides of a corner where four boundaries meet.
struct RPSaddle {
    std::int32_t up_right, up_left, down_left, down_right;
};

/// True where an edge leaves in every direction.
bool IsSaddle(const RPVertex& vertex);

/// The regions round vertex `number`, which must be a saddle.
/// @throws int  kBrokenInvariant when one is missing
RPSaddle RegionsRound(const RPGraph& graph, std::int32_t number);

/// The diagonal pair to join at vertex `number`, a saddle between `regions`: the one of equal colours, and when both are,
/// the one that the boundaries near the corner close in on. None without a pair of equal colours.
RPJoin ChooseJoin(const RPTrace& trace, std::int32_t number, const RPSaddle& regions);
