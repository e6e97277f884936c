#include "refhost/engine/planar_graph.h"

#include <algorithm>
#include <utility>

#include "refhost/engine/group_by.h"
#include "refhost/engine/vertex_table.h"

namespace refhost {

PlanarGraph::PlanarGraph(std::span<const GridSegment> segments, Nodes nodes) : segments_(segments) {
    CutSegments(nodes);
    nodes = {};  // makes room for the rest
    MergeEqual();
    BuildFans();
}

void PlanarGraph::AppendPath(HalfEdge h, std::vector<BoundaryEdge>& out) const {
    const Edge& e = edges_[h / 2];
    const Stretch along = h % 2 == 0 ? e.up : e.down;
    const Stretch against = h % 2 == 0 ? e.down : e.up;
    if (along.first != kNone) {
        out.push_back({points_[Tail(h)], along.first, false});
        for (std::uint32_t i = along.first + 1; i <= along.last; ++i) out.push_back({segments_[i].from, i, false});
    } else {
        out.push_back({points_[Tail(h)], against.last, true});
        for (std::uint32_t i = against.last; i-- > against.first;) out.push_back({segments_[i].to, i, true});
    }
}

// Most vertices are crossings, with two cuts each.
void PlanarGraph::CutSegments(const Nodes& nodes) {
    const auto starts = static_cast<std::size_t>(std::count(nodes.is_at_start.begin(), nodes.is_at_start.end(), true));
    VertexTable vertices((nodes.cuts.size() + starts) / 2);
    edges_.reserve(nodes.cuts.size() + starts);
    auto cut = nodes.cuts.begin();
    std::uint32_t last = kNone;
    Stretch stretch = kNoStretch;
    const auto end_stretch_at = [&](GridPoint p) {
        const std::uint32_t vertex = vertices.IdOf(p);
        if (last < vertex) {
            edges_.push_back({last, vertex, 1, stretch, kNoStretch});
        } else {
            edges_.push_back({vertex, last, -1, kNoStretch, stretch});
        }
        last = vertex;
    };
    for (std::uint32_t i = 0; i < segments_.size(); ++i) {
        if (i == 0 || segments_[i].from != segments_[i - 1].to) last = vertices.IdOf(segments_[i].from);
        if (nodes.is_at_start[i]) stretch.first = i;
        stretch.last = i;
        for (; cut != nodes.cuts.end() && cut->segment == i; ++cut) {
            end_stretch_at(cut->at);
            stretch.first = i;
        }
        const bool ends_loop = i + 1 == segments_.size() || segments_[i + 1].from != segments_[i].to;
        if (ends_loop || nodes.is_at_start[i + 1]) end_stretch_at(segments_[i].to);
    }
    points_ = std::move(vertices).TakePoints();
}

// Groups the edges by their low vertex, then merges inside each group. Edges whose multiplicity cancels stay: they connect.
void PlanarGraph::MergeEqual() {
    const std::vector<std::uint32_t> group_begin = GroupBy(
        points_.size(), [](const Edge& e) { return e.low; }, edges_);
    const auto is_plain = [](const Edge& e) { return e.up.first == e.up.last && e.down.first == e.down.last; };
    const auto less = [&](const Edge& a, const Edge& b) {
        return a.high != b.high ? a.high < b.high : is_plain(a) < is_plain(b);
    };
    std::size_t kept = 0;
    for (std::size_t v = 0; v < points_.size(); ++v) {
        const std::span<Edge> group = std::span(edges_).subspan(group_begin[v], group_begin[v + 1] - group_begin[v]);
        if (group.size() > 1) std::sort(group.begin(), group.end(), less);
        for (const Edge& e : group) {
            Edge* const last = kept == 0 ? nullptr : &edges_[kept - 1];
            if (last == nullptr || last->low != e.low || last->high != e.high || !is_plain(*last) || !is_plain(e)) {
                edges_[kept++] = e;
                continue;
            }
            last->multiplicity += e.multiplicity;
            if (last->up.first == kNone) last->up = e.up;
            if (last->down.first == kNone) last->down = e.down;
        }
    }
    edges_.resize(kept);
}

void PlanarGraph::BuildFans() {
    fan_begin_.assign(points_.size() + 1, 0);
    for (const Edge& e : edges_) ++fan_begin_[e.low], ++fan_begin_[e.high];
    for (std::uint32_t v = 0, sum = 0; v < fan_begin_.size(); ++v) sum += std::exchange(fan_begin_[v], sum);
    fans_.resize(2 * edges_.size());
    std::vector<std::uint32_t> next(fan_begin_.begin(), fan_begin_.end() - 1);
    for (HalfEdge h = 0; h < fans_.size(); ++h) fans_[next[Tail(h)]++] = h;
    fan_position_.resize(fans_.size());
    std::vector<Spoke> spokes;
    for (std::uint32_t v = 0; v < points_.size(); ++v) {
        SortFan(std::span(fans_).subspan(fan_begin_[v], fan_begin_[v + 1] - fan_begin_[v]), spokes);
        for (std::uint32_t i = fan_begin_[v]; i < fan_begin_[v + 1]; ++i) fan_position_[fans_[i]] = i;
    }
}

// By increasing angle in (-pi, pi]. No two directions in a fan are equal, or the edges would overlap.
void PlanarGraph::SortFan(std::span<HalfEdge> fan, std::vector<Spoke>& spokes) const {
    spokes.clear();
    for (const HalfEdge h : fan) spokes.push_back({NeighbourOnEdge(h) - points_[Tail(h)], h});
    const auto is_upper = [](GridVector d) { return d.y >= 0; };
    std::sort(spokes.begin(), spokes.end(), [&](const Spoke& a, const Spoke& b) {
        const GridVector u = a.direction;
        const GridVector v = b.direction;
        if (is_upper(u) != is_upper(v)) return is_upper(v);
        const std::int64_t turn = Cross(u, v);
        return turn > 0 || (turn == 0 && u.x > 0 && v.x < 0);
    });
    for (std::size_t i = 0; i < fan.size(); ++i) fan[i] = spokes[i].half_edge;
}

// The next point along a half-edge: a vertex of the segments, or the other end.
GridPoint PlanarGraph::NeighbourOnEdge(HalfEdge h) const {
    const Edge& e = edges_[h / 2];
    const Stretch along = h % 2 == 0 ? e.up : e.down;
    const Stretch against = h % 2 == 0 ? e.down : e.up;
    if (along.first != along.last) return segments_[along.first].to;
    if (against.first != against.last) return segments_[against.last].from;
    return points_[Head(h)];
}

}  // namespace refhost
