#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "refhost/engine/arrangement.h"

namespace refhost {

/// A box of grid points, all four edges included.
struct GridBox {
    std::int32_t left, top, right, bottom;

    bool Overlaps(const GridBox& other) const {
        return left <= other.right && other.left <= right && top <= other.bottom && other.top <= bottom;
    }
    GridBox With(const GridBox& other) const {
        return {std::min(left, other.left), std::min(top, other.top), std::max(right, other.right),
                std::max(bottom, other.bottom)};
    }
};

inline GridBox BoxOf(GridPoint a, GridPoint b) {
    return {std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x), std::max(a.y, b.y)};
}

/// A static hierarchy over boxes in the order given: each node covers `kFanOut` consecutive nodes below it. Consecutive segments
/// of an outline lie side by side, so this order needs no sorting to be a good one, and it adapts to any mixture of sizes.
class BoxTree {
 public:
    explicit BoxTree(std::span<const GridBox> boxes) {
        levels_.push_back(Packed(boxes));
        while (levels_.back().size() > 1) levels_.push_back(Packed(Parents(levels_.back())));
    }

    /// Calls visit(i, j), i < j, for every pair of overlapping boxes, once each.
    template <class Visit>
    void ForEachPair(const Visit& visit) const {
        PairsAmong(levels_.size() - 1, 0, visit);
    }

    /// Calls visit(i) for every box that overlaps `query`.
    template <class Visit>
    void ForEachIn(const GridBox& query, const Visit& visit) const {
        VisitIn(query, levels_.size() - 1, 0, visit);
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
        /// Bit i is set when box i overlaps `box`.
        unsigned Overlapping(const GridBox& box) const {
            const auto all = [](std::int32_t value) { return Four{value, value, value, value}; };
            const Four overlap = (left <= all(box.right)) & (right >= all(box.left)) & (top <= all(box.bottom)) &
                                 (bottom >= all(box.top)) & Four{1, 2, 4, 8};
            return static_cast<unsigned>(overlap[0] | overlap[1] | overlap[2] | overlap[3]);
        }
    };

    static std::vector<Siblings> Packed(std::span<const GridBox> boxes) {
        std::vector<Siblings> packed(std::max<std::size_t>((boxes.size() + kFanOut - 1) / kFanOut, 1));
        for (std::size_t i = 0; i < packed.size() * kFanOut; ++i) {
            const GridBox box = i < boxes.size() ? boxes[i] : GridBox{kMost, kMost, -kMost, -kMost};
            Siblings& siblings = packed[i / kFanOut];
            siblings.left[i % kFanOut] = box.left;
            siblings.top[i % kFanOut] = box.top;
            siblings.right[i % kFanOut] = box.right;
            siblings.bottom[i % kFanOut] = box.bottom;
        }
        return packed;
    }

    static std::vector<GridBox> Parents(const std::vector<Siblings>& children) {
        std::vector<GridBox> parents;
        parents.reserve(children.size());
        for (const Siblings& s : children) parents.push_back(s.Box(0).With(s.Box(1)).With(s.Box(2).With(s.Box(3))));
        return parents;
    }

    /// Calls visit(index) for the set bits of `places`, given the number of the siblings they belong to.
    template <class Visit>
    static void ForEachPlace(unsigned places, std::size_t siblings, const Visit& visit) {
        for (; places != 0; places &= places - 1) visit(siblings * kFanOut + static_cast<std::size_t>(std::countr_zero(places)));
    }

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

    template <class Visit>
    void VisitIn(const GridBox& query, std::size_t level, std::size_t siblings, const Visit& visit) const {
        ForEachPlace(levels_[level][siblings].Overlapping(query), siblings, [&](std::size_t node) {
            if (level == 0) {
                visit(node);
            } else {
                VisitIn(query, level - 1, node, visit);
            }
        });
    }

    std::vector<std::vector<Siblings>> levels_;  // the given boxes first
};

}  // namespace refhost
