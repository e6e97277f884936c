#include "fit/outline_preparation.h"

#include <algorithm>
#include <utility>

#include "base/errors.h"

namespace {

bool IsPrepared(const CFOutlineEdge& edge) { return edge.slots->derived && edge.slots->ranking; }

void FillSlots(CFPreparedChain& slots, CFPreparedChain prepared) {
    if (!slots.derived) slots.derived = std::move(prepared.derived);
    if (!slots.ranking) slots.ranking = std::move(prepared.ranking);
}

/// The part of a prepared outline that belongs to the chain at `start`, in the chain's own direction. The closing chain ends
/// at the outline's first point.
CFPreparedChain CutBack(const CFPreparedChain& outline, const CFAggregateSegment::start& start) {
    const std::int32_t outline_count = outline.derived->Count();
    CFPreparedChain piece{ts::make_auto<CFSegment>(start.count, kSpacingDerived, kChainOpen),
                          ts::make_auto<CFRanking>(start.count)};
    for (std::int32_t j = 0; j < start.count; ++j) {
        const std::int32_t from = RoundLoop(start.first + j, outline_count);
        const std::int32_t to = start.reversed ? start.count - 1 - j : j;
        piece.derived->SetPoint(to, {outline.derived->X()[from], outline.derived->Y()[from]});
        piece.ranking->values[static_cast<std::size_t>(to)] = outline.ranking->values[static_cast<std::size_t>(from)];
    }
    return piece;
}

}  // namespace

void CFOutlinePreparer::Prepare(std::span<const CFOutlineEdge> edges) {
    if (edges.empty()) throw kBrokenInvariant;
    if (std::all_of(edges.begin(), edges.end(), IsPrepared)) return;
    if (edges.size() == 1 && edges[0].raw->IsClosed()) {
        FillSlots(*edges[0].slots, PrepareClosed(*edges[0].raw));
    } else {
        PrepareJoined(edges);
    }
}

CFPreparedChain CFOutlinePreparer::PrepareClosed(const CFSegment& outline) {
    const CFMappedSegment centres(outline);
    CFPreparedChain prepared{derived_builder_.Build(centres), ranking_builder_.Build(centres)};
    if (prepared.derived->Count() != prepared.ranking->Count()) throw kBrokenInvariant;
    return prepared;
}

void CFOutlinePreparer::PrepareJoined(std::span<const CFOutlineEdge> edges) {
    path_.clear();
    for (const CFOutlineEdge& edge : edges) path_.push_back({edge.raw, edge.reversed});
    const CFAggregateSegment outline(path_);
    const CFPreparedChain prepared = PrepareClosed(outline);
    for (std::size_t i = 0; i < edges.size(); ++i) {
        if (!IsPrepared(edges[i])) FillSlots(*edges[i].slots, CutBack(prepared, outline.Starts()[i]));
    }
}
