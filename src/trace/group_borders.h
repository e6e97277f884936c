#pragma once

#include <cstdint>
#include <vector>

#include "trace/merge_groups.h"
#include "trace/trace.h"

/// The borders that groups of regions share with each other.
///
/// Every region's rings are unrolled into a list when they are first walked. A walk drops from the lists what can never be
/// wanted again: borders inside a group, which only grows, and all but the first of the borders with one neighbour. What a
/// walk costs is then about the number of neighbours, not of edges.
class RPGroupBorders {
 public:
    /// Borrows both.
    RPGroupBorders(const RPTrace& trace, RPMergeGroups& groups);

    /// Calls `visit(neighbour, edge)` for every group that borders on `group`, with the first edge between them: member by
    /// member, along the outer ring and then each hole.
    template <class Visit>
    void ForEachNeighbour(std::int32_t group, Visit&& visit);

 private:
    struct Border {
        std::int32_t edge, region;  // the region across
    };
    static constexpr std::uint32_t kNotUnrolled = ~std::uint32_t{0};
    struct Run {
        std::uint32_t begin = kNotUnrolled, end = 0;  // in `borders_`
    };

    void Unroll(std::int32_t region);
    void UnrollRing(std::int32_t first_edge, std::int32_t region);

    const RPTrace& trace_;
    RPMergeGroups& groups_;
    std::vector<Run> runs_;  // of the regions
    std::vector<Border> borders_;
    std::uint32_t visit_ = 0;
};

template <class Visit>
void RPGroupBorders::ForEachNeighbour(std::int32_t group, Visit&& visit) {
    RPMergeGroup::Chain& chain = groups_.Group(group).borders;
    groups_.Group(group).visit = ++visit_;
    std::int32_t kept = kNone;  // the latest region that still has borders
    for (std::int32_t region = chain.first; region != kNone; region = groups_.NextBorder(region)) {
        Unroll(region);
        Run& run = runs_[static_cast<std::size_t>(region)];
        std::uint32_t end = run.begin;
        for (std::uint32_t i = run.begin; i < run.end; ++i) {
            const Border border = {borders_[i].edge, groups_.Find(borders_[i].region)};
            std::uint32_t& latest_visit = groups_.Group(border.region).visit;
            if (latest_visit == visit_) continue;
            latest_visit = visit_;
            borders_[end++] = border;
            visit(border.region, border.edge);
        }
        run.end = end;
        if (run.begin == run.end) continue;
        (kept == kNone ? chain.first : groups_.NextBorder(kept)) = region;
        kept = region;
    }
    (kept == kNone ? chain.first : groups_.NextBorder(kept)) = kNone;
    chain.last = kept;
}
