#include "fit/outline_preparation.h"

#include <algorithm>
#include <utility>

#include "base/errors.h"

namespace {

bool IsPrepared(const CFOutlineEdge& edge) { return edge.slots == nullptr || (edge.slots->derived && edge.slots->ranking); }

void FillSlots(CFPreparedChain& slots, CFPreparedChain prepared) {
    if (!slots.derived) slots.derived = std::move(prepared.derived);
    if (!slots.ranking) slots.ranking = std::move(prepared.ranking);
}

/// The part of a prepared outline that belongs to the chain at `start`, in the chain's own direction. The closing chain ends
/// at the outline's first point.
CFPreparedChain CutBack(const CFPreparedChain& outline, const CFAggregateSegment::start& start) {
    const std::int32_t from = start.reversed ? start.first + start.count - 1 : start.first, step = start.reversed ? -1 : 1;
    const CFSegment& derived = *outline.derived;
    auto next_point = [&, k = from]() mutable {
        const CFPoint point{derived.X()[k], derived.Y()[k]};
        k += step;
        return point;
    };
    CFPreparedChain piece{ts::make_auto<CFSegment>(start.count, kSpacingDerived, kChainOpen, next_point),
                          ts::make_auto<CFRanking>(start.count)};
    std::int32_t k = from;
    for (float& value : piece.ranking->values) {
        value = outline.ranking->values[static_cast<std::size_t>(RoundLoop(k, derived.Count()))];
        k += step;
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
