#include "refhost/engine/uncrossed_chains.h"

#include <algorithm>
#include <utility>

namespace refhost {
namespace {

constexpr std::size_t kMostChains = 16;  // beyond it some cross as a rule

double XAt(const RowPiece& piece, std::int32_t y) {
    const double share = static_cast<double>(y - piece.y_top) / (piece.y_bottom - piece.y_top);
    return piece.x_top + share * (piece.x_bottom - piece.x_top);
}

/// Whether `a` is not right of `b` at `y`; exact, since coordinates have 30 bits and heights 10.
bool IsLeftAt(const RowPiece& a, const RowPiece& b, std::int32_t y) {
    const std::int64_t a_height = a.y_bottom - a.y_top;
    const std::int64_t b_height = b.y_bottom - b.y_top;
    const std::int64_t a_x = a.x_top * a_height + std::int64_t{a.x_bottom - a.x_top} * (y - a.y_top);
    const std::int64_t b_x = b.x_top * b_height + std::int64_t{b.x_bottom - b.x_top} * (y - b.y_top);
    return a_x * b_height <= b_x * a_height;
}

}  // namespace

void UncrossedChains::Clear() {
    pieces_.clear();
    chains_.clear();
}

void UncrossedChains::EndChain() {
    const std::size_t first = chains_.empty() ? 0 : chains_.back().end;
    chains_.push_back({first, pieces_.size(), first});
}

bool UncrossedChains::Resolve(std::int32_t left_winding, std::vector<RowPiece>& border) {
    if (chains_.size() > kMostChains) return false;
    const std::size_t border_before = border.size();
    FindHeights();
    for (std::size_t i = 0; i + 1 < heights_.size(); ++i) {
        if (!OrderBand(heights_[i], heights_[i + 1])) {
            border.resize(border_before);
            return false;
        }
        ChooseSides(left_winding, heights_[i], border);
    }
    for (const Chain& chain : chains_) Close(chain, pieces_[chain.end - 1].y_bottom, border);
    return true;
}

void UncrossedChains::FindHeights() {
    heights_.clear();
    for (const Chain& chain : chains_) {
        heights_.push_back(pieces_[chain.first].y_top);
        heights_.push_back(pieces_[chain.end - 1].y_bottom);
    }
    std::sort(heights_.begin(), heights_.end());
    heights_.erase(std::unique(heights_.begin(), heights_.end()), heights_.end());
}

/// False when chains cross in the band. Neighbours that do not cross show that none do.
bool UncrossedChains::OrderBand(std::int32_t y, std::int32_t end) {
    band_.clear();
    for (Chain& chain : chains_) {
        if (pieces_[chain.first].y_top > y || pieces_[chain.end - 1].y_bottom < end) continue;
        Place(chain, y, end);
        band_.push_back(&chain);
    }
    std::sort(band_.begin(), band_.end(), [](const Chain* a, const Chain* b) { return a->middle < b->middle; });
    for (std::size_t i = 1; i < band_.size(); ++i)
        if (!StaysLeft(*band_[i - 1], *band_[i], y, end)) return false;
    return true;
}

void UncrossedChains::Place(Chain& chain, std::int32_t y, std::int32_t end) const {
    while (pieces_[chain.at].y_bottom <= y) ++chain.at;
    std::size_t last = chain.at;
    while (pieces_[last].y_bottom < end) ++last;
    chain.middle = XAt(pieces_[chain.at], y) + XAt(pieces_[last], end);
}

/// Straight pieces side by side are compared where either ends.
bool UncrossedChains::StaysLeft(const Chain& left, const Chain& right, std::int32_t y, std::int32_t end) const {
    const RowPiece* a = &pieces_[left.at];
    const RowPiece* b = &pieces_[right.at];
    while (y < end) {
        const std::int32_t next = std::min({a->y_bottom, b->y_bottom, end});
        const bool is_apart = std::max(a->x_top, a->x_bottom) <= std::min(b->x_top, b->x_bottom);
        if (!is_apart && !(IsLeftAt(*a, *b, y) && IsLeftAt(*a, *b, next))) return false;
        a += a->y_bottom == next ? 1 : 0;
        b += b->y_bottom == next ? 1 : 0;
        y = next;
    }
    return true;
}

void UncrossedChains::ChooseSides(std::int32_t winding, std::int32_t y, std::vector<RowPiece>& border) {
    for (Chain* const chain : band_) {
        const std::int32_t left = std::exchange(winding, winding + pieces_[chain->first].winding);
        const std::int32_t side = SideOf(left, winding);
        if (side == chain->side) continue;
        Close(*chain, y, border);
        chain->side = side;
        chain->since = y;
    }
}

void UncrossedChains::Close(const Chain& chain, std::int32_t y, std::vector<RowPiece>& border) const {
    if (chain.side == 0) return;
    for (std::size_t i = chain.first; i < chain.end && pieces_[i].y_top < y; ++i) {
        const RowPiece& piece = pieces_[i];
        if (piece.y_bottom <= chain.since) continue;
        const std::int32_t top = std::max(piece.y_top, chain.since);
        const std::int32_t bottom = std::min(piece.y_bottom, y);
        const auto nearest = [&](std::int32_t at) { return static_cast<std::int32_t>(XAt(piece, at) + 0.5); };
        border.push_back({top == piece.y_top ? piece.x_top : nearest(top),
                          bottom == piece.y_bottom ? piece.x_bottom : nearest(bottom), top, bottom, chain.side});
    }
}

}  // namespace refhost
