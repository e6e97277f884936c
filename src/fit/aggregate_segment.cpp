#include "fit/aggregate_segment.h"

#include "base/errors.h"

namespace {

/// Points of the outline: every chain but its last point, which the next one starts with. Checks each chain by itself.
std::int32_t OutlineCount(std::span<const CFDirectedSegment> path) {
    std::int32_t count = 0;
    for (const CFDirectedSegment& piece : path) {
        const CFSegment& chain = *piece.segment;
        if (chain.IsClosed() || chain.Kind() != kSpacingUnitSteps || chain.Count() < 2) throw kBrokenInvariant;
        count += chain.Count() - 1;
    }
    return count;
}

}  // namespace

CFAggregateSegment::CFAggregateSegment(std::span<const CFDirectedSegment> path)
    : CFSegment(Unset(), OutlineCount(path), kSpacingUnitSteps, kChainClosed, 0) {
    starts_.reserve(path.size());
    std::int32_t first = 0;
    CFPoint reached = path.back().Point(path.back().segment->Count() - 1);
    for (const CFDirectedSegment& piece : path) {
        const std::int32_t steps = piece.segment->Count() - 1;
        if (!IsSamePoint(piece.Point(0), reached)) throw kBrokenInvariant;
        SetPoints(first, steps, [&, j = 0]() mutable { return piece.Point(j++); });
        // The shared point stays as the chain before left it, at the very start as the first chain has it.
        if (first > 0) SetPoint(first, reached);
        reached = piece.Point(steps);
        starts_.push_back({first, steps + 1, piece.reversed});
        first += steps;
    }
}
