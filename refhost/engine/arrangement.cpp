#include "refhost/engine/arrangement.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <new>
#include <utility>

#include "refhost/engine/box_tree.h"

namespace refhost {
namespace {

__extension__ using Int128 = __int128;

constexpr std::size_t kMostCrossings = std::size_t{1} << 25;  // about half a gigabyte of cuts; nothing drawn comes near
constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

struct GridVector {
    std::int64_t x, y;
};

/// Sorts `items` by a key below `keys`, keeping the order of equal ones; returns where each key's items begin, and one past the
/// end.
template <class Item, class Key>
std::vector<std::uint32_t> GroupBy(std::size_t keys, const Key& key_of, std::vector<Item>& items) {
    std::vector<std::uint32_t> begin(keys + 2, 0);
    for (const Item& item : items) ++begin[key_of(item) + 2];
    for (std::size_t key = 2; key < begin.size(); ++key) begin[key] += begin[key - 1];
    std::vector<Item> grouped(items.size());
    for (const Item& item : items) grouped[begin[key_of(item) + 1]++] = item;
    items = std::move(grouped);
    begin.pop_back();
    return begin;
}

GridVector operator-(GridPoint a, GridPoint b) {
    return {std::int64_t{a.x} - std::int64_t{b.x}, std::int64_t{a.y} - std::int64_t{b.y}};
}
std::int64_t Cross(GridVector a, GridVector b) { return a.x * b.y - a.y * b.x; }
std::int64_t Dot(GridVector a, GridVector b) { return a.x * b.x + a.y * b.y; }
std::uint64_t KeyOf(GridPoint p) {
    return std::uint64_t{static_cast<std::uint32_t>(p.x)} << 32 | static_cast<std::uint32_t>(p.y);
}

// ---- Snapping: where each segment is cut.

/// A segment passes through the hot pixel centred on `at`.
struct Cut {
    std::uint32_t segment;
    GridPoint at;
};

/// Where the planar graph has its nodes: at the cuts, and at the marked segment starts. Everything between is left alone.
struct Nodes {
    std::vector<Cut> cuts;          // by segment, then along it
    std::vector<char> is_at_start;  // per segment
};

Nodes FindNodes(std::span<const GridSegment> segments);
void MarkLoopNodes(std::span<const GridSegment> segments, Nodes& nodes);
bool PassesPixel(const GridSegment& s, std::int64_t cross, GridPoint pixel);
GridPoint RoundedCrossing(const GridSegment& s, std::int64_t numerator, std::int64_t denominator);
std::int32_t RoundedStep(std::int64_t extent, std::int64_t numerator, std::int64_t denominator);
void SortCuts(std::span<const GridSegment> segments, std::vector<Cut>& cuts);

// ---- The planar graph of the snapped segments.

/// Consecutive segments, or parts of the first and last, that lead from one vertex to another without meeting anything.
struct Stretch {
    std::uint32_t first, last;
};

/// An edge between two vertices, lower id first. Equal edges are merged; such have no vertices of their segments inside.
/// Half-edge 2 e leaves `low`, half-edge 2 e + 1 leaves `high`.
struct Edge {
    std::uint32_t low, high;
    std::int32_t multiplicity;  // stretches running from low to high less those running back
    Stretch up, down;           // one of those running from low to high, and back; `first` is kNone when there is none
};
constexpr Stretch kNoStretch = {kNone, kNone};

/// Gives grid points consecutive ids in order of first appearance. Open addressing.
class VertexTable {
 public:
    explicit VertexTable(std::size_t expected)
        : slots_(std::bit_ceil(2 * expected + 2), kNone), shift_(64 - std::countr_zero(slots_.size())) {}

    std::uint32_t IdOf(GridPoint p);
    const std::vector<GridPoint>& Points() const { return points_; }

 private:
    void Grow();
    std::size_t SlotOf(GridPoint p) const { return (KeyOf(p) * 0x9E3779B97F4A7C15U) >> shift_; }

    std::vector<std::uint32_t> slots_;
    int shift_;
    std::vector<GridPoint> points_;
};

class PlanarGraph {
 public:
    PlanarGraph(std::span<const GridSegment> segments, const Nodes& nodes);

    void SpreadWindings();
    Boundary Select(WindingRule rule) const;

 private:
    using HalfEdge = std::uint32_t;

    std::vector<Edge> CutSegments(const Nodes& nodes);
    void MergeEqual(std::vector<Edge> edges);
    void BuildFans();
    struct Spoke {
        GridVector direction;
        HalfEdge half_edge;
    };
    void SortFan(std::span<HalfEdge> fan, std::vector<Spoke>& spokes) const;

    void SpreadFrom(std::uint32_t vertex, std::vector<std::uint32_t>& queue);
    void SpreadAround(std::uint32_t vertex, std::vector<std::uint32_t>& queue);
    void AnchorComponents();
    std::vector<std::int32_t> OuterWindings() const;

    HalfEdge NextOnBoundary(HalfEdge arriving, const std::vector<HalfEdge>& boundary) const;
    void AppendBoundaryEdges(HalfEdge h, std::vector<BoundaryEdge>& out) const;

    std::span<const HalfEdge> Fan(std::uint32_t vertex) const {
        return std::span(fans_).subspan(fan_begin_[vertex], fan_begin_[vertex + 1] - fan_begin_[vertex]);
    }
    std::uint32_t Tail(HalfEdge h) const { return h % 2 == 0 ? edges_[h / 2].low : edges_[h / 2].high; }
    std::uint32_t Head(HalfEdge h) const { return Tail(h ^ 1); }
    GridVector DirectionOf(HalfEdge h) const { return NeighbourOnEdge(h) - points_[Tail(h)]; }
    GridPoint NeighbourOnEdge(HalfEdge h) const;
    std::int32_t Multiplicity(HalfEdge h) const { return h % 2 == 0 ? edges_[h / 2].multiplicity : -edges_[h / 2].multiplicity; }

    /// Edges of one connected part, as a range of `spread_order_`, whose windings are known up to a common constant.
    struct Component {
        std::size_t end;         // one past its last edge; it begins where the one before ends
        std::uint32_t leftmost;  // vertex with the smallest x, then y
    };

    std::span<const GridSegment> segments_;
    std::vector<GridPoint> points_;  // of the vertices
    std::vector<Edge> edges_;
    std::vector<HalfEdge> fans_;               // half-edges leaving each vertex, by angle from just past the -x direction
    std::vector<std::uint32_t> fan_begin_;     // per vertex, and one past the end
    std::vector<std::uint32_t> fan_position_;  // of each half-edge in fans_
    std::vector<std::int32_t> left_;           // winding on the left of each half-edge
    std::vector<bool> known_;                  // per edge
    std::vector<std::uint32_t> spread_order_;
    std::vector<Component> components_;
};

bool IsInside(std::int32_t winding, WindingRule rule) { return rule == WindingRule::kPositive ? winding > 0 : winding != 0; }

}  // namespace

Boundary FindBoundary(std::span<const GridSegment> segments, WindingRule rule) {
    if (segments.empty()) return {};
    PlanarGraph graph(segments, FindNodes(segments));
    graph.SpreadWindings();
    return graph.Select(rule);
}

namespace {

// Every segment end is the start of another segment, so testing starts against segments tests all of them.
Nodes FindNodes(std::span<const GridSegment> segments) {
    std::vector<GridBox> boxes;
    boxes.reserve(segments.size());
    for (const GridSegment& s : segments) boxes.push_back(BoxOf(s.from, s.to));
    const BoxTree tree(boxes);

    Nodes nodes = {{}, std::vector<char>(segments.size(), false)};
    std::vector<GridPoint> crossings;
    const auto cut_at_start = [&](std::size_t cut, std::size_t start) {
        nodes.cuts.push_back({static_cast<std::uint32_t>(cut), segments[start].from});
        nodes.is_at_start[start] = true;
    };
    tree.ForEachPair([&](std::size_t i, std::size_t j) {
        const GridSegment& a = segments[i];
        const GridSegment& b = segments[j];
        const GridVector a_span = a.to - a.from;
        const GridVector b_span = b.to - b.from;
        const bool only_touch = j == i + 1 && a.to == b.from && Dot(a_span, b_span) >= 0;
        if (only_touch) return;
        const GridVector apart = b.from - a.from;
        const std::int64_t parallel = Cross(a_span, b_span);
        const std::int64_t b_from_beside_a = Cross(a_span, apart);
        const std::int64_t a_from_beside_b = -Cross(b_span, apart);
        if (a.from == b.from) nodes.is_at_start[i] = nodes.is_at_start[j] = true;
        if (PassesPixel(a, b_from_beside_a, b.from)) cut_at_start(i, j);
        if (PassesPixel(b, a_from_beside_b, a.from)) cut_at_start(j, i);
        const auto straddles = [](std::int64_t one, std::int64_t other) {
            return (one < 0 && other > 0) || (one > 0 && other < 0);
        };
        if (straddles(b_from_beside_a, b_from_beside_a + parallel) && straddles(a_from_beside_b, a_from_beside_b - parallel)) {
            if (crossings.size() + nodes.cuts.size() > kMostCrossings) throw std::bad_alloc();
            crossings.push_back(RoundedCrossing(b, -b_from_beside_a, parallel));
        }
    });

    std::sort(crossings.begin(), crossings.end(), [](GridPoint a, GridPoint b) { return KeyOf(a) < KeyOf(b); });
    crossings.erase(std::unique(crossings.begin(), crossings.end()), crossings.end());
    for (const GridPoint p : crossings) {
        tree.ForEachIn(BoxOf(p, p), [&](std::size_t i) {
            const GridSegment& s = segments[i];
            if (p == s.from) nodes.is_at_start[i] = true;
            if (PassesPixel(s, Cross(s.to - s.from, p - s.from), p)) nodes.cuts.push_back({static_cast<std::uint32_t>(i), p});
        });
    }
    SortCuts(segments, nodes.cuts);
    MarkLoopNodes(segments, nodes);
    return nodes;
}

// A loop starts at a node, so that no stretch runs across its seam, and has one in its leftmost point, where windings are
// anchored. So have sharp turns: the segments of one that turns straight back may cover each other, as edges that have to be
// merged.
void MarkLoopNodes(std::span<const GridSegment> segments, Nodes& nodes) {
    std::size_t leftmost = 0;
    for (std::size_t i = 0; i < segments.size(); ++i) {
        const bool starts_loop = i == 0 || segments[i].from != segments[i - 1].to;
        if (starts_loop) {
            nodes.is_at_start[i] = nodes.is_at_start[leftmost] = true;
        } else if (Dot(segments[i].to - segments[i].from, segments[i - 1].to - segments[i - 1].from) < 0) {
            nodes.is_at_start[i] = true;
        }
        const GridPoint p = segments[i].from;
        const GridPoint best = segments[leftmost].from;
        if (starts_loop || p.x < best.x || (p.x == best.x && p.y < best.y)) leftmost = i;
    }
    nodes.is_at_start[leftmost] = true;
}

// Separating axes of a segment and a unit square: the two sides of the square and the segment's normal. The square is half-open,
// [-1/2, 1/2) both ways; only its lower left corner belongs to it, and only a falling line can touch it there alone. `cross` is
// that of the segment's span with the way from its start to the pixel.
bool PassesPixel(const GridSegment& s, std::int64_t cross, GridPoint pixel) {
    const std::int64_t dx = std::int64_t{s.to.x} - std::int64_t{s.from.x};
    const std::int64_t dy = std::int64_t{s.to.y} - std::int64_t{s.from.y};
    const std::int64_t reach = std::abs(dx) + std::abs(dy);
    if (2 * std::abs(cross) > reach) return false;
    if (!BoxOf(s.from, s.to).Overlaps(BoxOf(pixel, pixel)) || pixel == s.from || pixel == s.to) return false;
    if (2 * std::abs(cross) < reach) return true;
    return (dx > 0) != (dy > 0) && dx != 0 && dy != 0 && (cross > 0) == (dx > 0);
}

GridPoint RoundedCrossing(const GridSegment& s, std::int64_t numerator, std::int64_t denominator) {
    if (denominator < 0) numerator = -numerator, denominator = -denominator;
    const GridVector span = s.to - s.from;
    return {s.from.x + RoundedStep(span.x, numerator, denominator), s.from.y + RoundedStep(span.y, numerator, denominator)};
}

// floor(extent * numerator / denominator + 1/2), exact. Doubles decide unless the value comes close to a half.
std::int32_t RoundedStep(std::int64_t extent, std::int64_t numerator, std::int64_t denominator) {
    constexpr double kDoubtful = 1e-5;  // extent stays below 2^30, so the double's own error is below 1e-6
    const double value = static_cast<double>(extent) * (static_cast<double>(numerator) / static_cast<double>(denominator)) + 0.5;
    const double rounded = std::floor(value);
    if (value - rounded > kDoubtful && value - rounded < 1 - kDoubtful) return static_cast<std::int32_t>(rounded);
    const Int128 top = 2 * static_cast<Int128>(extent) * numerator + denominator;
    const Int128 bottom = 2 * static_cast<Int128>(denominator);
    const Int128 quotient = top / bottom;
    return static_cast<std::int32_t>(top % bottom < 0 ? quotient - 1 : quotient);
}

// By segment, then along it; each cut once.
void SortCuts(std::span<const GridSegment> segments, std::vector<Cut>& cuts) {
    GroupBy(
        segments.size(), [](const Cut& cut) { return cut.segment; }, cuts);
    for (auto begin = cuts.begin(), end = begin; begin != cuts.end(); begin = end) {
        const GridSegment& s = segments[begin->segment];
        end = std::find_if(begin, cuts.end(), [&](const Cut& cut) { return cut.segment != begin->segment; });
        std::sort(begin, end, [&](const Cut& a, const Cut& b) {
            const std::int64_t ahead = Dot(s.to - s.from, a.at - b.at);
            return ahead != 0 ? ahead < 0 : KeyOf(a.at) < KeyOf(b.at);
        });
    }
    const auto same = [](const Cut& a, const Cut& b) { return a.segment == b.segment && a.at == b.at; };
    cuts.erase(std::unique(cuts.begin(), cuts.end(), same), cuts.end());
}

std::uint32_t VertexTable::IdOf(GridPoint p) {
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t slot = SlotOf(p);; slot = (slot + 1) & mask) {
        if (slots_[slot] == kNone) {
            slots_[slot] = static_cast<std::uint32_t>(points_.size());
            points_.push_back(p);
            if (2 * points_.size() > slots_.size()) Grow();
            return static_cast<std::uint32_t>(points_.size() - 1);
        }
        if (points_[slots_[slot]] == p) return slots_[slot];
    }
}

void VertexTable::Grow() {
    slots_.assign(2 * slots_.size(), kNone);
    --shift_;
    for (std::uint32_t id = 0; id < points_.size(); ++id) {
        std::size_t slot = SlotOf(points_[id]);
        while (slots_[slot] != kNone) slot = (slot + 1) & (slots_.size() - 1);
        slots_[slot] = id;
    }
}

PlanarGraph::PlanarGraph(std::span<const GridSegment> segments, const Nodes& nodes) : segments_(segments) {
    MergeEqual(CutSegments(nodes));
    BuildFans();
}

std::vector<Edge> PlanarGraph::CutSegments(const Nodes& nodes) {
    VertexTable vertices(nodes.cuts.size());
    std::vector<Edge> edges;
    edges.reserve(nodes.cuts.size() +
                  static_cast<std::size_t>(std::count(nodes.is_at_start.begin(), nodes.is_at_start.end(), true)));
    auto cut = nodes.cuts.begin();
    std::uint32_t last = kNone;
    Stretch stretch = kNoStretch;
    const auto end_stretch_at = [&](GridPoint p) {
        const std::uint32_t vertex = vertices.IdOf(p);
        if (last < vertex) {
            edges.push_back({last, vertex, 1, stretch, kNoStretch});
        } else {
            edges.push_back({vertex, last, -1, kNoStretch, stretch});
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
    points_ = vertices.Points();
    return edges;
}

// Groups the edges by their low vertex, then merges inside each group. Edges whose multiplicity cancels stay: they connect.
void PlanarGraph::MergeEqual(std::vector<Edge> edges) {
    const std::vector<std::uint32_t> group_begin = GroupBy(
        points_.size(), [](const Edge& e) { return e.low; }, edges);
    const auto is_plain = [](const Edge& e) { return e.up.first == e.up.last && e.down.first == e.down.last; };
    const auto less = [&](const Edge& a, const Edge& b) {
        return a.high != b.high ? a.high < b.high : is_plain(a) < is_plain(b);
    };
    edges_.reserve(edges.size());
    for (std::size_t v = 0; v < points_.size(); ++v) {
        const std::span<Edge> group = std::span(edges).subspan(group_begin[v], group_begin[v + 1] - group_begin[v]);
        if (group.size() > 1) std::sort(group.begin(), group.end(), less);
        for (const Edge& e : group) {
            if (edges_.empty() || edges_.back().low != e.low || edges_.back().high != e.high || !is_plain(edges_.back()) ||
                !is_plain(e)) {
                edges_.push_back(e);
                continue;
            }
            Edge& merged = edges_.back();
            merged.multiplicity += e.multiplicity;
            if (merged.up.first == kNone) merged.up = e.up;
            if (merged.down.first == kNone) merged.down = e.down;
        }
    }
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
    for (const HalfEdge h : fan) spokes.push_back({DirectionOf(h), h});
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

void PlanarGraph::SpreadWindings() {
    left_.assign(fans_.size(), 0);
    known_.assign(edges_.size(), false);
    spread_order_.reserve(edges_.size());
    std::vector<std::uint32_t> queue;
    for (std::uint32_t v = 0; v < points_.size(); ++v) {
        if (!known_[Fan(v).front() / 2]) SpreadFrom(v, queue);
    }
    AnchorComponents();
}

// Windings of one component, relative to the sector in front of the first half-edge of `vertex`.
void PlanarGraph::SpreadFrom(std::uint32_t vertex, std::vector<std::uint32_t>& queue) {
    const HalfEdge first = Fan(vertex).front();
    left_[first] = Multiplicity(first);
    left_[first ^ 1] = 0;
    known_[first / 2] = true;
    spread_order_.push_back(first / 2);
    queue.assign({vertex, Head(first)});
    std::uint32_t leftmost = vertex;
    while (!queue.empty()) {
        const std::uint32_t v = queue.back();
        queue.pop_back();
        const GridPoint p = points_[v];
        const GridPoint best = points_[leftmost];
        if (p.x < best.x || (p.x == best.x && p.y < best.y)) leftmost = v;
        SpreadAround(v, queue);
    }
    components_.push_back({spread_order_.size(), leftmost});
}

// Between two neighbours of a fan lies one sector: left of the first, right of the second.
void PlanarGraph::SpreadAround(std::uint32_t vertex, std::vector<std::uint32_t>& queue) {
    const std::span<const HalfEdge> fan = Fan(vertex);
    std::size_t start = 0;
    while (!known_[fan[start] / 2]) ++start;
    std::int32_t winding = left_[fan[start]];
    for (std::size_t k = 1; k < fan.size(); ++k) {
        const HalfEdge h = fan[(start + k) % fan.size()];
        left_[h ^ 1] = winding;
        winding += Multiplicity(h);
        left_[h] = winding;
        if (known_[h / 2]) continue;
        known_[h / 2] = true;
        spread_order_.push_back(h / 2);
        queue.push_back(Head(h));
    }
}

// A component's leftmost vertex has nothing of its own to the left: the sector there has the winding of all the others.
void PlanarGraph::AnchorComponents() {
    const std::vector<std::int32_t> outer = OuterWindings();
    for (std::size_t c = 0, i = 0; c < components_.size(); ++c) {
        const std::int32_t shift = outer[c] - left_[Fan(components_[c].leftmost).front() ^ 1];
        for (; i < components_[c].end; ++i) {
            left_[2 * spread_order_[i]] += shift;
            left_[2 * spread_order_[i] + 1] += shift;
        }
    }
}

// Per component: counts the edges that a ray from its leftmost vertex towards -x crosses; an edge owns its lower end only.
std::vector<std::int32_t> PlanarGraph::OuterWindings() const {
    std::vector<std::int32_t> windings(components_.size(), 0);
    if (components_.size() == 1) return windings;
    struct Leg {
        GridPoint from, to;
        std::int32_t multiplicity;
    };
    std::vector<Leg> legs;
    std::vector<GridBox> boxes;
    std::vector<BoundaryEdge> path;
    for (HalfEdge h = 0; h < fans_.size(); h += 2) {
        path.clear();
        AppendBoundaryEdges(h, path);
        for (std::size_t i = 0; i < path.size(); ++i) {
            const GridPoint to = i + 1 < path.size() ? path[i + 1].from : points_[Head(h)];
            legs.push_back({path[i].from, to, edges_[h / 2].multiplicity});
            boxes.push_back(BoxOf(path[i].from, to));
        }
    }
    const BoxTree tree(boxes);
    for (std::size_t c = 0; c < components_.size(); ++c) {
        const GridPoint p = points_[components_[c].leftmost];
        tree.ForEachIn({-kLargestGridCoordinate, p.y, p.x, p.y}, [&](std::size_t index) {
            const Leg& leg = legs[index];
            const bool rises = leg.from.y <= p.y && p.y < leg.to.y;
            const bool falls = leg.to.y <= p.y && p.y < leg.from.y;
            const std::int64_t side = Cross(leg.to - leg.from, p - leg.from);
            if (falls && side > 0) windings[c] += leg.multiplicity;
            if (rises && side < 0) windings[c] -= leg.multiplicity;
        });
    }
    return windings;
}

Boundary PlanarGraph::Select(WindingRule rule) const {
    std::vector<HalfEdge> boundary(edges_.size(), kNone);  // per edge its half-edge with the inside on the left
    for (HalfEdge h = 0; h < fans_.size(); ++h) {
        if (IsInside(left_[h], rule) && !IsInside(left_[h ^ 1], rule)) boundary[h / 2] = h;
    }
    Boundary result;
    for (std::size_t e = 0; e < edges_.size(); ++e) {
        const HalfEdge first = boundary[e];
        if (first == kNone) continue;
        HalfEdge h = first;
        do {
            AppendBoundaryEdges(h, result.edges);
            const HalfEdge next = NextOnBoundary(h, boundary);
            if (h != first) boundary[h / 2] = kNone;
            h = next;
        } while (h != first);
        boundary[e] = kNone;
        result.loop_ends.push_back(result.edges.size());
    }
    return result;
}

void PlanarGraph::AppendBoundaryEdges(HalfEdge h, std::vector<BoundaryEdge>& out) const {
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

// The sharpest turn to the left: the first boundary edge met clockwise from the way back. It bounds the same inside sector, so
// parts that touch in a vertex come apart there. As many boundary edges leave a vertex as arrive, so there always is one.
PlanarGraph::HalfEdge PlanarGraph::NextOnBoundary(HalfEdge arriving, const std::vector<HalfEdge>& boundary) const {
    const std::uint32_t vertex = Head(arriving);
    const std::uint32_t begin = fan_begin_[vertex];
    const std::uint32_t end = fan_begin_[vertex + 1];
    std::uint32_t i = fan_position_[arriving ^ 1];
    do {
        i = i == begin ? end - 1 : i - 1;
    } while (boundary[fans_[i] / 2] != fans_[i]);
    return fans_[i];
}

}  // namespace
}  // namespace refhost
