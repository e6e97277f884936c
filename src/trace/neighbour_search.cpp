#include "trace/neighbour_search.h"

#include <optional>

#include "base/errors.h"

RPNeighbourSearch::RPNeighbourSearch(RPMergeGroups& groups, RPGroupBorders& borders, std::int32_t minimum_area,
                                     std::size_t most_neighbours)
    : groups_(groups),
      borders_(borders),
      minimum_area_(minimum_area),
      most_neighbours_(most_neighbours),
      is_hub_(groups.Count()) {}

RPCandidate RPNeighbourSearch::Nearest(std::int32_t group) {
    RPHub* const hub = Hub(group);
    return hub == nullptr ? NearestOfAll(group) : NearestOfHub(group, *hub);
}

std::int32_t RPNeighbourSearch::Unite(std::int32_t a, std::int32_t b) {
    const bool a_is_hub = IsHub(a), b_is_hub = IsHub(b);
    if (a_is_hub && b_is_hub) {
        UniteHubs(a, b);
    } else if (a_is_hub) {
        AddBorders(a, b, true);
    } else if (b_is_hub) {
        AddBorders(b, a, false);
    }
    const std::int32_t united = groups_.Unite(a, b);
    if (a_is_hub || b_is_hub) {
        Rename(a, b, united);
    } else if (!hubs_.empty()) {
        TellHubs(a, b, united);
    }
    return united;
}

RPHub* RPNeighbourSearch::Hub(std::int32_t group) {
    if (!IsHub(group)) return nullptr;
    const auto found = hubs_.find(group);
    return found == hubs_.end() ? nullptr : &found->second;
}

RPCandidate RPNeighbourSearch::NearestOfAll(std::int32_t group) {
    RPCandidate best = {kNone, 0.0F};
    std::size_t neighbours = 0;
    const RPLab mean = groups_.Group(group).mean;
    borders_.ForEachNeighbour(group, [&](std::int32_t neighbour, std::int32_t edge) {
        const float distance = Distance(mean, groups_.Group(neighbour).mean);
        if (best.edge == kNone || distance < best.distance) best = {edge, distance};
        ++neighbours;
    });
    if (neighbours > most_neighbours_) MakeHub(group);
    return best;
}

RPCandidate RPNeighbourSearch::NearestOfHub(std::int32_t group, RPHub& hub) {
    const RPLab mean = groups_.Group(group).mean;
    std::optional<RPHub::Found> best;
    std::erase_if(hub.hubs, [&](const RPFirstBorder& border) { return groups_.Find(border.neighbour) == group; });
    for (const RPFirstBorder& border : hub.hubs) {
        const RPHub::Found found = {border, Distance(mean, groups_.Group(groups_.Find(border.neighbour)).mean)};
        if (!best || found < *best) best = found;
    }
    hub.FindNearest(mean, best);
    return best ? RPCandidate{best->border.edge, best->distance} : RPCandidate{kNone, 0.0F};
}

void RPNeighbourSearch::MakeHub(std::int32_t group) {
    is_hub_[static_cast<std::size_t>(group)] = 1;
    if (groups_.Group(group).area < minimum_area_) hubs_[group];
    AddBorders(group, group, true);
}

// Adds the borders of `plain`, which becomes part of `hub`, to those of the hub, and makes it one for the hubs around.
void RPNeighbourSearch::AddBorders(std::int32_t hub, std::int32_t plain, bool at_end) {
    found_.clear();
    borders_.ForEachNeighbour(plain, [&](std::int32_t neighbour, std::int32_t edge) {
        if (neighbour != hub) found_.push_back({neighbour, edge, 0});
    });
    for (const RPFirstBorder& border : found_) {
        RPHub* const other = Hub(border.neighbour);
        if (other == nullptr) continue;
        const std::optional<RPFirstBorder> known = other->Take(plain);
        if (!known) throw kBrokenInvariant;
        AddBorder(*other, {hub, known->edge, known->rank});
    }
    RPHub* const own = Hub(hub);
    if (own == nullptr) return;
    own->Take(plain);
    std::int64_t rank = own->MakeRanks(found_.size(), at_end);
    for (const auto& [neighbour, edge, unused] : found_) AddBorder(*own, {neighbour, edge, rank++});
}

void RPNeighbourSearch::AddBorder(RPHub& hub, const RPFirstBorder& border) {
    if (!IsHub(border.neighbour)) return hub.Put(border, groups_.Group(border.neighbour).mean);
    for (RPFirstBorder& known : hub.hubs) {
        if (groups_.Find(known.neighbour) != border.neighbour) continue;
        if (border.rank < known.rank) known = border;
        return;
    }
    hub.hubs.push_back(border);
}

// The smaller goes into the larger, so that a neighbour is moved only when it comes to a hub of at least twice the size.
void RPNeighbourSearch::UniteHubs(std::int32_t a, std::int32_t b) {
    RPHub *const first = Hub(a), *const second = Hub(b);
    if (first == nullptr || second == nullptr) return;
    if (first->Size() < second->Size()) {
        second->Absorb(*first, false);
        hubs_.erase(a);
    } else {
        first->Absorb(*second, true);
        hubs_.erase(b);
    }
}

void RPNeighbourSearch::Rename(std::int32_t a, std::int32_t b, std::int32_t united) {
    is_hub_[static_cast<std::size_t>(united)] = 1;
    for (const std::int32_t old : {a, b}) {
        auto hub = hubs_.extract(old);
        if (!hub || groups_.Group(united).area >= minimum_area_) continue;
        hub.key() = united;
        hubs_.insert(std::move(hub));
    }
}

// Two plain groups have become one, perhaps with many neighbours.
void RPNeighbourSearch::TellHubs(std::int32_t a, std::int32_t b, std::int32_t united) {
    std::size_t neighbours = 0;
    const RPLab mean = groups_.Group(united).mean;
    borders_.ForEachNeighbour(united, [&](std::int32_t neighbour, std::int32_t) {
        ++neighbours;
        RPHub* const hub = Hub(neighbour);
        if (hub == nullptr) return;
        for (const std::int32_t old : {a, b}) {
            if (const auto known = hub->Take(old)) hub->Put({united, known->edge, known->rank}, mean);
        }
    });
    if (neighbours > most_neighbours_) MakeHub(united);
}
