#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "fit/segment.h"

/// A chain and the direction it is walked in.
struct CFDirectedSegment {
    const CFSegment* segment;
    bool reversed;  // from its last point to its first

    /// Point `j` on the walk, 0 to the last one; not checked.
    CFPoint Point(std::int32_t j) const {
        const std::int32_t k = reversed ? segment->Count() - 1 - j : j;
        return {segment->X()[k], segment->Y()[k]};
    }
};

/// The closed outline made of several open chains of unit steps, each starting where the one before ends. A point where two
/// chains meet is held once.
class CFAggregateSegment : public CFSegment {
 public:
    /// Where one chain lies in the outline.
    struct start {
        std::int32_t first;  // index of the first point on the walk
        std::int32_t count;  // points of the chain; the last ones lie past the outline's end for the closing chain
        bool reversed;
    };

    /// @throws int  kBrokenInvariant without chains, for a chain that is closed, of other spacing or of fewer than 2 points,
    ///              and for chains that do not meet
    explicit CFAggregateSegment(std::span<const CFDirectedSegment> path);

    std::span<const start> Starts() const { return starts_; }

 private:
    std::vector<start> starts_;
};
