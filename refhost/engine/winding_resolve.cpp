#include "refhost/engine/winding_resolve.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <tuple>

namespace refhost {
namespace {

constexpr std::int32_t kSampleHeight = kSubOne / 32;  // 32 lines to a sampled row
constexpr std::size_t kMostStrands = 1024;            // side by side, before a group is sampled
constexpr std::size_t kMostWork = 20000;              // in one group, likewise; some 0.2 ms

}  // namespace

void WindingResolver::Resolve(std::span<RowPiece> pieces, std::int32_t left_winding, std::vector<RowPiece>& border) {
    border_ = &border;
    border_->clear();
    pieces = MergeEqual(pieces);
    if (Follow(pieces, left_winding)) return;
    border_->clear();
    Sample(pieces, left_winding);
}

/// The pieces from the top down, equal ones as one that winds as often: outlines may be run round thousands of times.
std::span<RowPiece> WindingResolver::MergeEqual(std::span<RowPiece> pieces) {
    const auto place = [](const RowPiece& piece) { return std::tie(piece.y_top, piece.x_top, piece.y_bottom, piece.x_bottom); };
    std::sort(pieces.begin(), pieces.end(), [&](const RowPiece& a, const RowPiece& b) { return place(a) < place(b); });
    std::size_t kept = 0;
    for (std::size_t i = 1; i < pieces.size(); ++i) {
        if (place(pieces[i]) == place(pieces[kept]))
            pieces[kept].winding += pieces[i].winding;
        else
            pieces[++kept] = pieces[i];
    }
    return pieces.first(kept + 1);
}

/// Sweeps down from stop to stop. In the band between two stops no piece ends; where pieces cross inside the band, stops are
/// added, so that in the end each band has one order from left to right. Stops are whole sub-units: what crosses between two
/// of them is ordered as in the middle.
bool WindingResolver::Follow(std::span<const RowPiece> pieces, std::int32_t left_winding) {
    stops_.fill(0);
    for (const RowPiece& piece : pieces) {
        AddStop(piece.y_top);
        AddStop(piece.y_bottom);
    }
    strands_.clear();
    work_ = 0;
    std::span<const RowPiece> waiting = pieces;
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
        ChooseSides(left_winding, y);
    }
    Retire(kSubOne);
    return true;
}

/// Takes the winding along each line as that of the band around it.
void WindingResolver::Sample(std::span<const RowPiece> pieces, std::int32_t left_winding) {
    for (std::int32_t y = 0; y < kSubOne; y += kSampleHeight) {
        const std::int32_t end = y + kSampleHeight;
        const std::int32_t line = y + kSampleHeight / 2;
        strands_.clear();
        for (const RowPiece& piece : pieces) {
            if (piece.y_top > line || piece.y_bottom <= line) continue;
            const double share = static_cast<double>(line - piece.y_top) / (piece.y_bottom - piece.y_top);
            const auto x = static_cast<std::int32_t>(piece.x_top + share * (piece.x_bottom - piece.x_top) + 0.5);
            const RowPiece upright = {x, x, y, end, piece.winding};
            strands_.push_back({upright, 0, 0, 0, 0, y});
        }
        std::sort(strands_.begin(), strands_.end(),
                  [](const Strand& a, const Strand& b) { return a.piece.x_top < b.piece.x_top; });
        ChooseSides(left_winding, y);
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
    border_->push_back({nearest(strand.since), nearest(y), strand.since, y, strand.side});
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
