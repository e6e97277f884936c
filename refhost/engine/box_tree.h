#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "refhost/engine/grid.h"

namespace refhost {

/// A static hierarchy over boxes in the order given: each node covers `kFanOut` consecutive nodes below it. Consecutive segments
/// of an outline lie side by side, so this order needs no sorting to be a good one, and it adapts to any mixture of sizes.
/// Pairs are found by going down two hierarchies together: Brinkhoff, Kriegel & Seeger, "Efficient processing of spatial joins
/// using R-trees" (SIGMOD 1993).
class BoxTree {
 public:
    /// Of boxes number 0 to `count` - 1, each given by `box_of(i)`.
    template <class BoxOfItem>
    BoxTree(std::size_t count, const BoxOfItem& box_of) {
        levels_.push_back(Packed(count, box_of));
        while (levels_.back().size() > 1) {
            const std::vector<Siblings>& below = levels_.back();
            levels_.push_back(Packed(below.size(), [&](std::size_t i) { return below[i].Hull(); }));
        }
    }

    /// Calls visit(i, j), i < j, for every pair of overlapping boxes, once each.
    template <class Visit>
    void ForEachPair(const Visit& visit) const {
        PairsAmong(levels_.size() - 1, 0, visit);
    }

    /// Calls visit(i, j) for box i of this tree and box j of `other` wherever they overlap. `meets(i, box)` tells whether what
    /// box i stands for comes near a box that overlaps it; pairs below one that it does not come near are left out.
    template <class Meets, class Visit>
    void ForEachPairWith(const BoxTree& other, const Meets& meets, const Visit& visit) const {
        const std::size_t top = levels_.size() - 1, other_top = other.levels_.size() - 1;
        for (std::size_t i = 0; i < kFanOut; ++i) {
            ForEachPlace(other.levels_[other_top][0].Overlapping(BoxAt(top, i)), 0, [&](std::size_t j) {
                PairsWith(other, {top, i}, {other_top, j}, meets, visit);
            });
        }
    }

 private:
    static constexpr std::size_t kFanOut = 4;
    static constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();

    /// Numbers that are compared all at once.
    using Four [[gnu::vector_size(16)]] = std::int32_t;

    /// The nodes below one node.
    struct Siblings {
        Four left, top, right, bottom;  // unused places overlap nothing

        GridBox Box(std::size_t i) const { return {left[i], top[i], right[i], bottom[i]}; }
        GridBox Hull() const { return Box(0).With(Box(1)).With(Box(2).With(Box(3))); }
        /// Bit i is set when box i overlaps `box`.
        unsigned Overlapping(const GridBox& box) const {
            const auto all = [](std::int32_t value) { return Four{value, value, value, value}; };
            const Four overlap = (left <= all(box.right)) & (right >= all(box.left)) & (top <= all(box.bottom)) &
                                 (bottom >= all(box.top)) & Four{1, 2, 4, 8};
            return static_cast<unsigned>(overlap[0] | overlap[1] | overlap[2] | overlap[3]);
        }
    };

    struct Node {
        std::size_t level, index;
    };

    template <class BoxOfItem>
    static std::vector<Siblings> Packed(std::size_t count, const BoxOfItem& box_of) {
        std::vector<Siblings> packed(std::max<std::size_t>((count + kFanOut - 1) / kFanOut, 1));
        for (std::size_t i = 0; i < packed.size() * kFanOut; ++i) {
            const GridBox box = i < count ? box_of(i) : GridBox{kMost, kMost, -kMost, -kMost};
            Siblings& siblings = packed[i / kFanOut];
            siblings.left[i % kFanOut] = box.left;
            siblings.top[i % kFanOut] = box.top;
            siblings.right[i % kFanOut] = box.right;
            siblings.bottom[i % kFanOut] = box.bottom;
        }
        return packed;
    }

    /// Calls visit(index) for the set bits of `places`, given the number of the siblings they belong to.
    template <class Visit>
    static void ForEachPlace(unsigned places, std::size_t siblings, const Visit& visit) {
        for (; places != 0; places &= places - 1) visit(siblings * kFanOut + static_cast<std::size_t>(std::countr_zero(places)));
    }

    const Siblings& Below(Node node) const { return levels_[node.level - 1][node.index]; }
    GridBox BoxAt(std::size_t level, std::size_t node) const { return levels_[level][node / kFanOut].Box(node % kFanOut); }

    template <class Visit>
    void PairsAmong(std::size_t level, std::size_t siblings, const Visit& visit) const {
        const Siblings& boxes = levels_[level][siblings];
        for (std::size_t i = 0; i < kFanOut; ++i) {
            const std::size_t node = siblings * kFanOut + i;
            if (level > 0 && node < levels_[level - 1].size()) PairsAmong(level - 1, node, visit);
            const unsigned later = ~0U << (i + 1);
            ForEachPlace(boxes.Overlapping(boxes.Box(i)) & later, siblings,
                         [&](std::size_t other) { PairsBetween(level, node, other, visit); });
        }
    }

    template <class Visit>
    void PairsBetween(std::size_t level, std::size_t i, std::size_t j, const Visit& visit) const {
        if (level == 0) return visit(i, j);
        const Siblings& below_i = levels_[level - 1][i];
        const Siblings& below_j = levels_[level - 1][j];
        ForEachPlace(below_i.Overlapping(BoxAt(level, j)), i, [&](std::size_t a) {
            ForEachPlace(below_j.Overlapping(below_i.Box(a % kFanOut)), j,
                         [&](std::size_t b) { PairsBetween(level - 1, a, b, visit); });
        });
    }

    /// The larger of the two is divided first.
    template <class Meets, class Visit>
    void PairsWith(const BoxTree& other, Node mine, Node theirs, const Meets& meets, const Visit& visit) const {
        const GridBox my_box = BoxAt(mine.level, mine.index);
        const GridBox their_box = other.BoxAt(theirs.level, theirs.index);
        if (mine.level == 0 && !meets(mine.index, their_box)) return;
        if (mine.level == 0 && theirs.level == 0) return visit(mine.index, theirs.index);
        if (theirs.level == 0 || (mine.level > 0 && my_box.Extent() >= their_box.Extent())) {
            ForEachPlace(Below(mine).Overlapping(their_box), mine.index, [&](std::size_t i) {
                PairsWith(other, {mine.level - 1, i}, theirs, meets, visit);
            });
        } else {
            ForEachPlace(other.Below(theirs).Overlapping(my_box), theirs.index, [&](std::size_t j) {
                PairsWith(other, mine, {theirs.level - 1, j}, meets, visit);
            });
        }
    }

    std::vector<std::vector<Siblings>> levels_;  // the given boxes first
};

}  // namespace refhost
