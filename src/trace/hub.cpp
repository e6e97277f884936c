#include "trace/hub.h"

#include <iterator>
#include <limits>
#include <tuple>

#include "trace/merge_groups.h"

namespace {

using Ranks = std::numeric_limits<std::int64_t>;

float SquaredDifference(float a, float b) { return (a - b) * (a - b); }

}  // namespace

std::int64_t RPHub::MakeRanks(std::size_t count, bool at_end) {
    const auto added = static_cast<std::int64_t>(count);
    if (!at_end) return first_rank_ -= added;
    end_rank_ += added;
    return end_rank_ - added;
}

void RPHub::Put(RPFirstBorder border, const RPLab& colour) {
    const std::optional<RPFirstBorder> known = Take(border.neighbour);
    if (known && known->rank < border.rank) border = *known;
    places_[border.neighbour] = entries_.insert({colour, border}).first;
}

std::optional<RPFirstBorder> RPHub::Take(std::int32_t neighbour) {
    const auto place = places_.find(neighbour);
    if (place == places_.end()) return std::nullopt;
    const RPFirstBorder border = place->second->border;
    entries_.erase(place->second);
    places_.erase(place);
    return border;
}

void RPHub::Absorb(RPHub& other, bool at_end) {
    const std::int64_t first = MakeRanks(static_cast<std::size_t>(other.end_rank_ - other.first_rank_), at_end);
    const auto moved = [&](RPFirstBorder border) {
        border.rank += first - other.first_rank_;
        return border;
    };
    for (const Entry& entry : other.entries_) Put(moved(entry.border), entry.colour);
    for (const RPFirstBorder& border : other.hubs) hubs.push_back(moved(border));
}

// The distance is at least the part that lightness has in it, in rounded numbers too: it only adds to that.
void RPHub::FindNearest(const RPLab& colour, std::optional<Found>& best) const {
    const auto is_too_far = [&](const Entry& entry) {
        return best && SquaredDifference(entry.colour.l, colour.l) > best->distance;
    };
    const auto look_at = [&](const Entry& entry) {
        const Found found = {entry.border, Distance(colour, entry.colour)};
        if (!best || found < *best) best = found;
    };
    const auto first_of = [&](const RPLab& same) { return entries_.lower_bound({same, {kNone, kNone, Ranks::min()}}); };
    const auto start = first_of({colour.l, std::numeric_limits<float>::lowest(), std::numeric_limits<float>::lowest()});
    for (auto up = start; up != entries_.end() && !is_too_far(*up);) {
        look_at(*up);
        up = entries_.upper_bound({up->colour, {kNone, kNone, Ranks::max()}});
    }
    for (auto down = start; down != entries_.begin() && !is_too_far(*std::prev(down));) {
        down = first_of(std::prev(down)->colour);
        look_at(*down);
    }
}

bool RPHub::ByColour::operator()(const Entry& a, const Entry& b) const {
    return std::tie(a.colour.l, a.colour.a, a.colour.b, a.border.rank) <
           std::tie(b.colour.l, b.colour.a, b.colour.b, b.border.rank);
}
