#pragma once

#include <cstdint>

#include "fit/pool.h"

/// A corner score for every point of a chain: the total turning in radians around it; 0 is no candidate.
class CFRanking : public CFPooled {
 public:
    explicit CFRanking(std::int32_t count) : values(static_cast<std::size_t>(count), 0.0F) {}

    std::int32_t Count() const { return static_cast<std::int32_t>(values.size()); }

    CFPoolVector<float> values;
};
