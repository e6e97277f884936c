#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <unordered_map>
#include <vector>

#include "trace/color_table.h"

/// The first of a group's borders with one of its neighbours.
struct RPFirstBorder {
    std::int32_t neighbour;  // the group's number, now or once
    std::int32_t edge;
    std::int64_t rank;  // its place in the walk round the group
};

/// The neighbours of a group that has many, in the order of their colours, so that the nearest is found without a look at all
/// of them. Neighbours that have many themselves stand aside: their colours may change without notice.
class RPHub {
 public:
    struct Found {
        RPFirstBorder border;
        float distance;  // of the colours, squared
        bool operator<(const Found& other) const {
            return distance < other.distance || (distance == other.distance && border.rank < other.border.rank);
        }
    };

    /// The first of `count` new ranks: after all others, or before them.
    std::int64_t MakeRanks(std::size_t count, bool at_end);
    /// Adds a border with a neighbour of this colour. Of two with the same neighbour the first in rank counts.
    void Put(RPFirstBorder border, const RPLab& colour);
    /// Takes a neighbour out. No value when it is none.
    std::optional<RPFirstBorder> Take(std::int32_t neighbour);
    /// Takes over all of `other`, whose borders are walked after all of these, or before.
    void Absorb(RPHub& other, bool at_end);

    /// Makes `best` the border with the neighbour nearest to `colour`, of equally near ones the first in rank, unless it comes
    /// before that already. Looks at the colours of nearest lightness, as the others only can be further away.
    void FindNearest(const RPLab& colour, std::optional<Found>& best) const;

    std::size_t Size() const { return places_.size() + hubs.size(); }

    std::vector<RPFirstBorder> hubs;  // the borders with neighbours that have many themselves

 private:
    struct Entry {
        RPLab colour;
        RPFirstBorder border;
    };
    struct ByColour {
        bool operator()(const Entry& a, const Entry& b) const;
    };
    using Entries = std::set<Entry, ByColour>;

    Entries entries_;
    std::unordered_map<std::int32_t, Entries::iterator> places_;  // of the neighbours
    std::int64_t first_rank_ = 0, end_rank_ = 0;
};
