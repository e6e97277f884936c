#include "refhost/engine/windings.h"

#include <algorithm>

namespace refhost {
namespace {

class WindingSpreader {
 public:
    explicit WindingSpreader(const PlanarGraph& graph)
        : graph_(graph), left_(graph.EdgeCount()), is_reached_(graph.VertexCount(), false) {
        order_.reserve(graph.VertexCount());
    }

    std::vector<std::int32_t> Spread();

 private:
    /// Vertices of one connected part, as a range of `order_`; the windings there are known up to a common constant.
    struct Component {
        std::size_t end;         // one past its last vertex; it begins where the one before ends
        std::uint32_t leftmost;  // vertex with the smallest x, then y
    };

    void SpreadFrom(std::uint32_t vertex);
    void SpreadAround(HalfEdge known);
    void Reach(HalfEdge arriving);
    void AnchorComponents();
    std::vector<std::int32_t> OuterWindings() const;

    std::int32_t Left(HalfEdge h) const { return h % 2 == 0 ? left_[h / 2] : left_[h / 2] + graph_.Multiplicity(h); }
    void SetLeft(HalfEdge h, std::int32_t winding) { left_[h / 2] = h % 2 == 0 ? winding : winding - graph_.Multiplicity(h); }

    const PlanarGraph& graph_;
    std::vector<std::int32_t> left_;  // of half-edge 2 e
    std::vector<bool> is_reached_;    // per vertex
    std::vector<std::uint32_t> order_;
    std::vector<HalfEdge> waiting_;  // leave vertices reached but not spread around yet; their windings are known
    std::vector<Component> components_;
};

}  // namespace

std::vector<std::int32_t> WindingsOnLeft(const PlanarGraph& graph) { return WindingSpreader(graph).Spread(); }

namespace {

std::vector<std::int32_t> WindingSpreader::Spread() {
    for (std::uint32_t v = 0; v < graph_.VertexCount(); ++v) {
        if (!is_reached_[v]) SpreadFrom(v);
    }
    AnchorComponents();
    return std::move(left_);
}

// Relative to the sector on the left of the first half-edge of `vertex`.
void WindingSpreader::SpreadFrom(std::uint32_t vertex) {
    const std::size_t begin = order_.size();
    SetLeft(graph_.First(vertex), 0);
    Reach(graph_.First(vertex) ^ 1);
    while (!waiting_.empty()) {
        const HalfEdge known = waiting_.back();
        waiting_.pop_back();
        SpreadAround(known);
    }
    std::uint32_t leftmost = vertex;
    for (std::size_t i = begin; i < order_.size(); ++i) {
        if (IsLeftOf(graph_.PointAt(order_[i]), graph_.PointAt(leftmost))) leftmost = order_[i];
    }
    components_.push_back({order_.size(), leftmost});
}

// Between two neighbours of a fan lies one sector: left of the first, right of the second.
void WindingSpreader::SpreadAround(HalfEdge known) {
    std::int32_t winding = Left(known);
    for (HalfEdge h = graph_.After(known); h != known; h = graph_.After(h)) {
        winding += graph_.Multiplicity(h);
        SetLeft(h, winding);
        Reach(h);
    }
    Reach(known);
}

void WindingSpreader::Reach(HalfEdge arriving) {
    const std::uint32_t vertex = graph_.Head(arriving);
    if (is_reached_[vertex]) return;
    is_reached_[vertex] = true;
    order_.push_back(vertex);
    waiting_.push_back(arriving ^ 1);
}

// A component's leftmost vertex has nothing of its own to the left: the sector there has the winding of all the others.
void WindingSpreader::AnchorComponents() {
    const std::vector<std::int32_t> outer = OuterWindings();
    std::size_t i = 0;
    for (std::size_t c = 0; c < components_.size(); ++c) {
        const HalfEdge first = graph_.First(components_[c].leftmost);
        const std::int32_t shift = outer[c] - (Left(first) - graph_.Multiplicity(first));
        for (; i < components_[c].end; ++i) {
            for (const HalfEdge h : graph_.Fan(order_[i])) {
                if (h % 2 == 0) left_[h / 2] += shift;
            }
        }
    }
}

// Per component: counts the edges that a ray from its leftmost vertex towards -x crosses; an edge owns its end of smaller y only.
std::vector<std::int32_t> WindingSpreader::OuterWindings() const {
    std::vector<std::int32_t> windings(components_.size(), 0);
    if (components_.size() == 1) return windings;
    struct Ray {
        GridPoint end;
        std::size_t component;
    };
    std::vector<Ray> rays;
    for (std::size_t c = 0; c < components_.size(); ++c) rays.push_back({graph_.PointAt(components_[c].leftmost), c});
    std::sort(rays.begin(), rays.end(), [](const Ray& a, const Ray& b) { return a.end.y < b.end.y; });
    std::vector<BoundaryEdge> path;
    for (HalfEdge h = 0; h < 2 * graph_.EdgeCount(); h += 2) {
        path.clear();
        graph_.AppendPath(h, path);
        for (std::size_t i = 0; i < path.size(); ++i) {
            const GridPoint from = path[i].from;
            const GridPoint to = i + 1 < path.size() ? path[i + 1].from : graph_.PointAt(graph_.Head(h));
            const auto [low, high] = std::minmax(from.y, to.y);
            auto ray = std::lower_bound(rays.begin(), rays.end(), low, [](const Ray& r, std::int32_t y) { return r.end.y < y; });
            for (; ray != rays.end() && ray->end.y < high; ++ray) {
                const std::int64_t side = Cross(to - from, ray->end - from);
                if (to.y < from.y && side > 0) windings[ray->component] += graph_.Multiplicity(h);
                if (to.y > from.y && side < 0) windings[ray->component] -= graph_.Multiplicity(h);
            }
        }
    }
    return windings;
}

}  // namespace
}  // namespace refhost
