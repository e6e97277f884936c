#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
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
    explicit BoxTree(std::vector<GridBox> boxes) {
        levels_.push_back(std::move(boxes));
        while (levels_.back().size() > kFanOut) levels_.push_back(Parents(levels_.back()));
    }

    /// Calls visit(i, j), i < j, for every pair of overlapping boxes, once each.
    template <class Visit>
    void ForEachPair(const Visit& visit) const {
        const std::size_t top = levels_.size() - 1;
        PairsAmong(top, 0, levels_[top].size(), visit);
    }

    /// Calls visit(i) for every box that overlaps `query`.
    template <class Visit>
    void ForEachIn(const GridBox& query, const Visit& visit) const {
        const std::size_t top = levels_.size() - 1;
        VisitIn(query, top, 0, levels_[top].size(), visit);
    }

 private:
    static constexpr std::size_t kFanOut = 4;

    static std::vector<GridBox> Parents(const std::vector<GridBox>& children) {
        std::vector<GridBox> parents;
        parents.reserve(children.size() / kFanOut + 1);
        for (std::size_t i = 0; i < children.size(); ++i) {
            if (i % kFanOut == 0) {
                parents.push_back(children[i]);
            } else {
                parents.back() = parents.back().With(children[i]);
            }
        }
        return parents;
    }

    std::size_t ChildEnd(std::size_t level, std::size_t node) const {
        return std::min((node + 1) * kFanOut, levels_[level - 1].size());
    }

    template <class Visit>
    void PairsAmong(std::size_t level, std::size_t begin, std::size_t end, const Visit& visit) const {
        const std::vector<GridBox>& boxes = levels_[level];
        for (std::size_t i = begin; i < end; ++i) {
            if (level > 0) PairsAmong(level - 1, i * kFanOut, ChildEnd(level, i), visit);
            for (std::size_t j = i + 1; j < end; ++j) {
                if (boxes[i].Overlaps(boxes[j])) PairsBetween(level, i, j, visit);
            }
        }
    }

    template <class Visit>
    void PairsBetween(std::size_t level, std::size_t i, std::size_t j, const Visit& visit) const {
        if (level == 0) return visit(i, j);
        const std::vector<GridBox>& below = levels_[level - 1];
        for (std::size_t a = i * kFanOut; a < ChildEnd(level, i); ++a) {
            if (!below[a].Overlaps(levels_[level][j])) continue;
            for (std::size_t b = j * kFanOut; b < ChildEnd(level, j); ++b) {
                if (below[a].Overlaps(below[b])) PairsBetween(level - 1, a, b, visit);
            }
        }
    }

    template <class Visit>
    void VisitIn(const GridBox& query, std::size_t level, std::size_t begin, std::size_t end, const Visit& visit) const {
        for (std::size_t i = begin; i < end; ++i) {
            if (!levels_[level][i].Overlaps(query)) continue;
            if (level == 0) {
                visit(i);
            } else {
                VisitIn(query, level - 1, i * kFanOut, ChildEnd(level, i), visit);
            }
        }
    }

    std::vector<std::vector<GridBox>> levels_;  // the given boxes first
};

}  // namespace refhost
