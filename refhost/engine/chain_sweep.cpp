#include "refhost/engine/chain_sweep.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace refhost {
namespace {

constexpr std::int32_t kNone = -1;          // no chain
constexpr std::size_t kMovesPerChain = 16;  // by insertion, before a full sort is faster

/// The order does not depend on how the chains were ordered before.
bool LiesBefore(const RowChain& a, const RowChain& b) {
    if (a.left != b.left) return a.left < b.left;
    return std::tie(a.right, a.index) < std::tie(b.right, b.index);
}

std::int64_t SlopeBetween(const OutlineVertex& upper, const OutlineVertex& lower) {
    constexpr double kSlopeOne = std::int64_t{1} << kSlopeBits;
    return static_cast<std::int64_t>(kSlopeOne * (lower.x - upper.x) / (lower.y - upper.y));
}

/// Rounding the product keeps x between the ends of the line, because the slope is never too steep.
std::int32_t XAt(std::int32_t y, const OutlineVertex& upper, std::int64_t slope) {
    const std::int64_t run = slope * (y - upper.y) + (std::int64_t{1} << (kSlopeBits - 1));
    return upper.x + static_cast<std::int32_t>(run >> kSlopeBits);
}

}  // namespace

void ChainSweep::Begin(OutlineLines& outline, std::int32_t rows) {
    outline_ = &outline;
    starting_.assign(static_cast<std::size_t>(rows), kNone);
    for (std::size_t i = 0; i < outline.chains.size(); ++i) {
        OutlineChain& chain = outline.chains[i];
        const std::int32_t top = outline.vertices[static_cast<std::size_t>(chain.first)].y;
        std::int32_t& first = starting_[static_cast<std::size_t>(std::max(top, 0) / kSubOne)];
        chain.next = std::exchange(first, static_cast<std::int32_t>(i));
    }
    active_.clear();
    row_top_ = -kSubOne;
}

void ChainSweep::NextRow() {
    row_top_ += kSubOne;
    std::size_t kept = 0;
    for (const RowChain& chain : active_) {
        if (chain.vertices_below == 0) continue;
        RowChain& now = active_[kept++];
        if (&now != &chain) now = chain;
        now.vertex += chain.vertices * chain.winding;
        now.x_top = chain.x_bottom;
        now.y_top = 0;
        Cut(now, false);
    }
    active_.resize(kept);
    for (std::int32_t chain = starting_[static_cast<std::size_t>(row_top_ / kSubOne)]; chain != kNone;
         chain = outline_->chains[static_cast<std::size_t>(chain)].next)
        Admit(chain);
    Sort();
}

void ChainSweep::Admit(std::int32_t index) {
    const OutlineChain& chain = outline_->chains[static_cast<std::size_t>(index)];
    const OutlineVertex* const start = &outline_->vertices[static_cast<std::size_t>(chain.first)];
    const bool is_above = start->y < row_top_;
    const std::int32_t x = is_above ? XAt(row_top_, start[0], SlopeBetween(start[0], start[chain.winding])) : start->x;
    RowChain& now = active_.emplace_back();
    now.winding = chain.winding;
    now.index = index;
    now.vertex = chain.first + chain.winding;
    now.vertices_below = (chain.last - chain.first) * chain.winding;
    now.x_top = x;
    now.y_top = is_above ? 0 : start->y - row_top_;
    Cut(now, true);
}

/// Finds how far the chain comes in the row.
void ChainSweep::Cut(RowChain& chain, bool starts) const {
    const OutlineVertex* vertex = outline_->vertices.data() + chain.vertex;
    std::int32_t left = chain.x_top;
    std::int32_t right = chain.x_top;
    std::int32_t passed = 0;
    for (; passed < chain.vertices_below && vertex->y <= row_top_ + kSubOne; ++passed, vertex += chain.winding) {
        left = std::min(left, vertex->x);
        right = std::max(right, vertex->x);
    }
    const OutlineVertex& before = vertex[-chain.winding];
    if (passed == chain.vertices_below) {
        chain.x_bottom = before.x;
        chain.y_bottom = before.y - row_top_;
    } else {
        if (starts || passed > 0) chain.slope = SlopeBetween(before, *vertex);
        chain.x_bottom = XAt(row_top_ + kSubOne, before, chain.slope);
        chain.y_bottom = kSubOne;
    }
    chain.vertices = passed;
    chain.vertices_below -= passed;
    chain.left = std::min(left, chain.x_bottom);
    chain.right = std::max(right, chain.x_bottom);
}

/// By insertion: from row to row the order hardly changes.
void ChainSweep::Sort() {
    std::size_t moves = kMovesPerChain * active_.size();
    for (std::size_t sorted = 1; sorted < active_.size(); ++sorted) {
        if (!LiesBefore(active_[sorted], active_[sorted - 1])) continue;
        const RowChain chain = active_[sorted];
        std::size_t at = sorted;
        for (; at > 0 && LiesBefore(chain, active_[at - 1]); --at) active_[at] = active_[at - 1];
        active_[at] = chain;
        if (moves < sorted - at) return std::sort(active_.begin(), active_.end(), LiesBefore);
        moves -= sorted - at;
    }
}

}  // namespace refhost
