#pragma once

#include <cstdint>

/// How the corners of an offset outline are joined. Any other value joins round.
enum VRL_Join : std::uint32_t {
    kVRLJoinMiter = 1,  // to a point, up to four times the distance away; blunter beyond
    kVRLJoinRound = 2,
    kVRLJoinBevel = 3,
};
