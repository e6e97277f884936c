#include "refhost/engine/winding_resolve.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>

namespace refhost {
namespace {

constexpr std::int32_t kSampleHeight = kSubOne / 32;  // 32 lines to a sampled row
constexpr std::size_t kMostStrands = 1024;            // side by side, before a group is sampled
constexpr std::size_t kMostWork = 20000;              // in one group, likewise; some 0.2 ms

std::int32_t LeftOf(const RowPiece& piece) { return std::min(piece.x_top, piece.x_bottom); }
std::int32_t RightOf(const RowPiece& piece) { return std::max(piece.x_top, piece.x_bottom); }

/// What a line does to the filled area when the winding number goes from `left` to `right` there.
std::int32_t SideOf(std::int32_t left, std::int32_t right) {
    return static_cast<std::int32_t>(right != 0) - static_cast<std::int32_t>(left != 0);
}

}  // namespace

std::span<const RowPiece> WindingResolver::Resolve(std::span<RowPiece> pieces) {
    std::sort(pieces.begin(), pieces.end(), [](const RowPiece& a, const RowPiece& b) { return LeftOf(a) < LeftOf(b); });
    border_.clear();
    std::int32_t winding = 0;
    while (!pieces.empty()) {
        const Group group = TakeGroup(pieces, winding);
        winding = group.right_winding;
        if (group.is_chain) {
            AddChain(group);
            continue;
        }
        const std::size_t border_before = border_.size();
        if (Follow(group)) continue;
        border_.resize(border_before);
        Sample(group);
    }
    return border_;
}

/// Takes pieces from the left until a gap follows and as many lines begin as end at every y inside the row. Only the last group
/// may miss that.
WindingResolver::Group WindingResolver::TakeGroup(std::span<RowPiece>& pieces, std::int32_t left_winding) {
    std::int32_t right = LeftOf(pieces.front());
    std::int32_t height = 0;
    std::int32_t winding_height = 0;
    std::size_t count = 0;
    for (; count < pieces.size() && (open_ends_ != 0 || LeftOf(pieces[count]) <= right); ++count) {
        const RowPiece& piece = pieces[count];
        right = std::max(right, RightOf(piece));
        CountEnd(piece.y_top, piece.winding);
        CountEnd(piece.y_bottom, -piece.winding);
        height += piece.y_bottom - piece.y_top;
        winding_height += piece.winding * (piece.y_bottom - piece.y_top);
    }
    const bool is_chain = open_ends_ == 0 && height == kSubOne && std::abs(winding_height) == kSubOne;
    const Group group = {pieces.first(count), left_winding, left_winding + winding_height / kSubOne, is_chain};
    pieces = pieces.subspan(count);
    if (open_ends_ != 0) {
        ends_.fill(0);
        open_ends_ = 0;
    }
    return group;
}

void WindingResolver::CountEnd(std::int32_t y, std::int32_t winding) {
    if (y == 0 || y == kSubOne) return;
    std::int32_t& ends = ends_[static_cast<std::size_t>(y)];
    open_ends_ -= ends != 0 ? 1 : 0;
    ends += winding;
    open_ends_ += ends != 0 ? 1 : 0;
}

void WindingResolver::AddChain(const Group& group) {
    const std::int32_t side = SideOf(group.left_winding, group.right_winding);
    if (side == 0) return;
    for (const RowPiece& piece : group.pieces) {
        border_.push_back(piece);
        border_.back().winding = side;
    }
}

/// Sweeps down from stop to stop. In the band between two stops no piece ends; where pieces cross inside the band, stops are
/// added, so that in the end each band has one order from left to right. Stops are whole sub-units: what crosses between two
/// of them is ordered as in the middle.
bool WindingResolver::Follow(const Group& group) {
    std::sort(group.pieces.begin(), group.pieces.end(), [](const RowPiece& a, const RowPiece& b) { return a.y_top < b.y_top; });
    stops_.fill(0);
    for (const RowPiece& piece : group.pieces) {
        AddStop(piece.y_top);
        AddStop(piece.y_bottom);
    }
    strands_.clear();
    work_ = 0;
    std::span<const RowPiece> waiting = group.pieces;
    std::int32_t searched = 0;  // crossings above are known
    for (std::int32_t y = NextStop(-1), end = 0; y < kSubOne; y = end) {
        Retire(y);
        Admit(waiting, y);
        if (strands_.size() > kMostStrands || work_ > kMostWork) return false;
        end = NextStop(y);
        const bool is_searched = y < searched;
        searched = std::max(searched, end);
        if (is_searched || FindCrossings(y, end)) {
            end = NextStop(y);
            Place(y, end);
            SortStrands([](const Strand& a, const Strand& b) { return a.top + a.bottom < b.top + b.bottom; },
                        [](const Strand&, const Strand&) {});
        }
        ChooseSides(group.left_winding, y);
    }
    Retire(kSubOne);
    return true;
}

/// Takes the winding along each line as that of the band around it.
void WindingResolver::Sample(const Group& group) {
    for (std::int32_t y = 0; y < kSubOne; y += kSampleHeight) {
        const std::int32_t end = y + kSampleHeight;
        const std::int32_t line = y + kSampleHeight / 2;
        strands_.clear();
        for (const RowPiece& piece : group.pieces) {
            if (piece.y_top > line || piece.y_bottom <= line) continue;
            const double share = static_cast<double>(line - piece.y_top) / (piece.y_bottom - piece.y_top);
            const auto x = static_cast<std::int32_t>(piece.x_top + share * (piece.x_bottom - piece.x_top) + 0.5);
            const RowPiece upright = {x, x, y, end, piece.winding};
            strands_.push_back({upright, 0, 0, 0, 0, y});
        }
        std::sort(strands_.begin(), strands_.end(),
                  [](const Strand& a, const Strand& b) { return a.piece.x_top < b.piece.x_top; });
        ChooseSides(group.left_winding, y);
        Retire(end);
    }
}

void WindingResolver::Admit(std::span<const RowPiece>& waiting, std::int32_t y) {
    for (; !waiting.empty() && waiting.front().y_top <= y; waiting = waiting.subspan(1)) {
        const RowPiece& piece = waiting.front();
        const double slope = static_cast<double>(piece.x_bottom - piece.x_top) / (piece.y_bottom - piece.y_top);
        strands_.push_back({piece, slope, 0, 0, 0, y});
    }
}

void WindingResolver::Retire(std::int32_t y) {
    std::erase_if(strands_, [&](const Strand& strand) {
        if (strand.piece.y_bottom > y) return false;
        Close(strand, y);
        return true;
    });
}

void WindingResolver::Place(std::int32_t y, std::int32_t end) {
    for (Strand& strand : strands_) {
        strand.top = strand.XAt(y);
        strand.bottom = strand.XAt(end);
    }
    work_ += strands_.size();
}

/// Two pieces cross in the band when their order at its end is not that at its start. Without crossings the strands are in order.
bool WindingResolver::FindCrossings(std::int32_t y, std::int32_t end) {
    Place(y, end);
    SortStrands([](const Strand& a, const Strand& b) { return a.top != b.top ? a.top < b.top : a.bottom < b.bottom; },
                [](const Strand&, const Strand&) {});
    bool found = false;
    SortStrands([](const Strand& a, const Strand& b) { return a.bottom < b.bottom; },
                [&](const Strand& left, const Strand& right) {
                    const double before = right.top - left.top;
                    const double after = left.bottom - right.bottom;
                    AddStop(y + static_cast<std::int32_t>(std::lround((end - y) * before / (before + after))));
                    found = true;
                });
    return found;
}

/// An insertion sort, since the order hardly changes from band to band; `swapped(left, right)` hears of each exchange.
template <class Before, class Swapped>
void WindingResolver::SortStrands(Before before, Swapped swapped) {
    for (std::size_t sorted = 1; sorted < strands_.size(); ++sorted) {
        for (std::size_t at = sorted; at > 0 && before(strands_[at], strands_[at - 1]); --at) {
            swapped(strands_[at - 1], strands_[at]);
            std::swap(strands_[at - 1], strands_[at]);
            ++work_;
        }
    }
}

/// `winding` is the number left of all strands.
void WindingResolver::ChooseSides(std::int32_t winding, std::int32_t y) {
    for (Strand& strand : strands_) {
        const std::int32_t left = winding;
        winding += strand.piece.winding;
        const std::int32_t side = SideOf(left, winding);
        if (side == strand.side) continue;
        Close(strand, y);
        strand.side = side;
        strand.since = y;
    }
}

void WindingResolver::Close(const Strand& strand, std::int32_t y) {
    if (strand.side == 0 || strand.since == y) return;
    const auto nearest = [&](std::int32_t at) { return static_cast<std::int32_t>(strand.XAt(at) + 0.5); };
    border_.push_back({nearest(strand.since), nearest(y), strand.since, y, strand.side});
}

void WindingResolver::AddStop(std::int32_t y) { stops_[static_cast<std::size_t>(y / 64)] |= std::uint64_t{1} << (y % 64); }

/// The first stop below `y`, the row's lower end at the latest.
std::int32_t WindingResolver::NextStop(std::int32_t y) const {
    const std::int32_t from = y + 1;
    auto word = static_cast<std::size_t>(from / 64);
    std::uint64_t bits = stops_[word] >> (from % 64) << (from % 64);
    while (bits == 0 && ++word < stops_.size()) bits = stops_[word];
    return bits == 0 ? kSubOne : static_cast<std::int32_t>(word) * 64 + std::countr_zero(bits);
}

}  // namespace refhost
