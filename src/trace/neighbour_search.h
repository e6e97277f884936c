#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "trace/candidate_queue.h"
#include "trace/group_borders.h"
#include "trace/hub.h"
#include "trace/merge_groups.h"

/// Finds the neighbour of nearest colour of small groups, while groups unite.
///
/// Most groups have few neighbours: all of them are looked at. A group with many would have to be looked at all over after each
/// of its merges, which takes time that grows with the square of its neighbours. Such a group is made a hub, whose neighbours
/// are kept in the order of their colours, and a neighbour that changes tells its hubs, which it has few of. Hubs do not tell
/// each other: a hub looks at all of those.
class RPNeighbourSearch {
 public:
    /// Borrows the groups and borders. Groups of `minimum_area` pixels and more are never searched. A group with more
    /// neighbours than `most_neighbours` is made a hub; what is found does not depend on it.
    RPNeighbourSearch(RPMergeGroups& groups, RPGroupBorders& borders, std::int32_t minimum_area,
                      std::size_t most_neighbours = kMostNeighbours);

    /// The first edge to a neighbour of the nearest colour; kNone for the group that is the whole image.
    RPCandidate Nearest(std::int32_t group);
    /// Makes one group of two, as RPMergeGroups::Unite does.
    std::int32_t Unite(std::int32_t a, std::int32_t b);

 private:
    static constexpr std::size_t kMostNeighbours = 64;  // with 16 to 256 merges take about the same time

    bool IsHub(std::int32_t group) const { return is_hub_[static_cast<std::size_t>(group)] != 0; }
    RPHub* Hub(std::int32_t group);  // none for plain groups and for those that are not searched any more
    RPCandidate NearestOfAll(std::int32_t group);
    RPCandidate NearestOfHub(std::int32_t group, RPHub& hub);
    void MakeHub(std::int32_t group);
    void AddBorders(std::int32_t hub, std::int32_t plain, bool at_end);
    void AddBorder(RPHub& hub, const RPFirstBorder& border);
    void UniteHubs(std::int32_t a, std::int32_t b);
    void Rename(std::int32_t a, std::int32_t b, std::int32_t united);
    void TellHubs(std::int32_t a, std::int32_t b, std::int32_t united);

    RPMergeGroups& groups_;
    RPGroupBorders& borders_;
    std::int32_t minimum_area_;
    std::size_t most_neighbours_;
    std::vector<std::uint8_t> is_hub_;  // of the groups
    std::unordered_map<std::int32_t, RPHub> hubs_;
    std::vector<RPFirstBorder> found_;  // kept for its storage
};
