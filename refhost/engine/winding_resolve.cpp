#include "refhost/engine/winding_resolve.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace refhost {
namespace {

constexpr std::int32_t kSampleHeight = kSubOne / 32;  // 32 lines to a sampled row
constexpr std::size_t kMostStrands = 1024;            // side by side, before the row is sampled
constexpr std::size_t kMostWork = 20000;              // in one row, likewise; some 0.2 ms

double XAt(const RowPiece& piece, double y) {
    const double slope = static_cast<double>(piece.x_bottom - piece.x_top) / (piece.y_bottom - piece.y_top);
    return piece.x_top + slope * (y - piece.y_top);
}

}  // namespace

std::span<const RowPiece> WindingResolver::Resolve(std::span<RowPiece> pieces) {
    std::sort(pieces.begin(), pieces.end(), [](const RowPiece& a, const RowPiece& b) { return a.y_top < b.y_top; });
    border_.clear();
    if (!Follow(pieces)) {
        border_.clear();
        Sample(pieces);
    }
    return border_;
}

/// Sweeps down from stop to stop. In the band between two stops no piece ends; where pieces cross inside the band, stops are
/// added, so that in the end each band has one order from left to right. Stops are whole sub-units: what crosses between two
/// of them is ordered as in the middle.
bool WindingResolver::Follow(std::span<const RowPiece> pieces) {
    stops_.fill(0);
    for (const RowPiece& piece : pieces) {
        AddStop(piece.y_top);
        AddStop(piece.y_bottom);
    }
    strands_.clear();
    work_ = 0;
    std::int32_t searched = 0;  // crossings above are known
    for (std::int32_t y = NextStop(-1); y < kSubOne;) {
        Retire(y);
        Admit(pieces, y);
        if (strands_.size() > kMostStrands || work_ > kMostWork) return false;
        std::int32_t end = NextStop(y);
        if (y >= searched) {
            FindCrossings(y, end);
            searched = end;
            end = NextStop(y);
        }
        Place(y, end);
        SortStrands([](const Strand& a, const Strand& b) { return a.top + a.bottom < b.top + b.bottom; },
                    [](const Strand&, const Strand&) {});
        ChooseSides(y);
        y = end;
    }
    Retire(kSubOne);
    return true;
}

/// Takes the winding along each line as that of the band around it.
void WindingResolver::Sample(std::span<const RowPiece> pieces) {
    for (std::int32_t y = 0; y < kSubOne; y += kSampleHeight) {
        const std::int32_t end = y + kSampleHeight;
        const std::int32_t line = y + kSampleHeight / 2;
        strands_.clear();
        for (const RowPiece& piece : pieces) {
            if (piece.y_top > line) break;
            if (piece.y_bottom <= line) continue;
            const double x = XAt(piece, line);
            const auto nearest = static_cast<std::int32_t>(x + 0.5);
            strands_.push_back({{nearest, nearest, y, end, piece.winding}, 0, y, x, x});
        }
        std::sort(strands_.begin(), strands_.end(), [](const Strand& a, const Strand& b) { return a.top < b.top; });
        ChooseSides(y);
        Retire(end);
    }
}

void WindingResolver::Retire(std::int32_t y) {
    std::erase_if(strands_, [&](const Strand& strand) {
        if (strand.piece.y_bottom > y) return false;
        Close(strand, y);
        return true;
    });
}

void WindingResolver::Admit(std::span<const RowPiece>& waiting, std::int32_t y) {
    for (; !waiting.empty() && waiting.front().y_top <= y; waiting = waiting.subspan(1))
        strands_.push_back({waiting.front(), 0, y, 0, 0});
}

void WindingResolver::Place(std::int32_t y, std::int32_t end) {
    for (Strand& strand : strands_) {
        strand.top = XAt(strand.piece, y);
        strand.bottom = XAt(strand.piece, end);
    }
    work_ += strands_.size();
}

/// Two pieces cross in the band when their order at its end is not that at its start.
void WindingResolver::FindCrossings(std::int32_t y, std::int32_t end) {
    if (end - y == 1) return;
    Place(y, end);
    SortStrands([](const Strand& a, const Strand& b) { return a.top != b.top ? a.top < b.top : a.bottom < b.bottom; },
                [](const Strand&, const Strand&) {});
    SortStrands([](const Strand& a, const Strand& b) { return a.bottom < b.bottom; },
                [&](const Strand& left, const Strand& right) {
                    const double before = right.top - left.top;
                    const double after = left.bottom - right.bottom;
                    AddStop(y + static_cast<std::int32_t>(std::lround((end - y) * before / (before + after))));
                });
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

void WindingResolver::ChooseSides(std::int32_t y) {
    std::int32_t winding = 0;
    for (Strand& strand : strands_) {
        const bool was_inside = winding != 0;
        winding += strand.piece.winding;
        const std::int32_t side = static_cast<std::int32_t>(winding != 0) - static_cast<std::int32_t>(was_inside);
        if (side == strand.side) continue;
        Close(strand, y);
        strand.side = side;
        strand.since = y;
    }
}

void WindingResolver::Close(const Strand& strand, std::int32_t y) {
    if (strand.side == 0 || strand.since == y) return;
    const auto nearest = [&](std::int32_t at) { return static_cast<std::int32_t>(XAt(strand.piece, at) + 0.5); };
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
