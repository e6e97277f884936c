#include "tests/support/planar_map_laws.h"

#include <array>
#include <map>
#include <set>
#include <sstream>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/support/bitmaps.h"

namespace support {
namespace {

using Corner = std::pair<std::int32_t, std::int32_t>;
using Pixel = std::pair<std::int32_t, std::int32_t>;

constexpr std::array<RPDirection, 4> kDirections = {kRight, kUp, kLeft, kDown};

Corner Moved(Corner c, RPDirection d) { return {c.first + StepX(d), c.second + StepY(d)}; }

// The pixel next to a step that leaves corner `c` in direction `d`, on its right hand.
Pixel RightOf(Corner c, RPDirection d) {
    return {c.first - (d == kDown || d == kLeft ? 1 : 0), c.second - (d == kLeft || d == kUp ? 1 : 0)};
}
Pixel LeftOf(Corner c, RPDirection d) { return RightOf(Moved(c, d), Opposite(d)); }

// Throws the name of a law that does not hold.
class LawCheck {
 public:
    LawCheck(const RPPixelMap& pixels, const RPTrace& trace)
        : pixels_(pixels), trace_(trace), graph_(*trace.graph), components_(Components(pixels)) {}

    void Run() {
        CheckRegions();
        CheckCracks();
        CheckVertices();
        CheckLinks();
        CheckRings();
        CheckEnclosingHoles();
    }

 private:
    static void Require(bool holds, const char* law, std::int64_t item = kNone) {
        if (holds) return;
        std::ostringstream text;
        text << law << " (" << item << ")";
        throw text.str();
    }

    std::int32_t Component(Pixel p) const {
        const auto [x, y] = p;
        const bool inside = x >= 0 && y >= 0 && x < pixels_.Width() && y < pixels_.Height();
        return inside ? components_[static_cast<std::size_t>(y * pixels_.Width() + x)] : kNone;
    }
    bool IsJoined(Corner c, RPJoin join) const { return pixels_.Join(c.first, c.second) == join; }
    RPDirection DirectionAfter(Corner c, RPDirection arriving) const;
    std::set<RPDirection> CracksAt(Corner c) const;
    std::int32_t RegionOn(std::int32_t edge, RPSide side) const {
        return side == RPSide::kA ? graph_.Edge(edge).region_a : graph_.Edge(edge).region_b;
    }

    void CheckRegions() const;
    void CheckCracks() const;
    void CheckVertices() const;
    void CheckLinks() const;
    void CheckRings();
    std::int32_t FirstBorderEdge() const;
    std::int32_t WalkRing(std::int32_t first, std::int32_t region);
    std::int32_t DoubledArea(std::int32_t edge, RPSide side) const;
    void CheckEnclosingHoles() const;
    std::set<Pixel> InsideOf(const RPHole& hole) const;

    const RPPixelMap& pixels_;
    const RPTrace& trace_;
    const RPGraph& graph_;
    std::vector<std::int32_t> components_;
    std::set<std::pair<std::int32_t, RPSide>> walked_;
};

void LawCheck::CheckRegions() const {
    std::map<std::int32_t, std::int32_t> areas;
    for (const std::int32_t component : components_) ++areas[component];
    Require(areas.size() == trace_.regions.size(), "one region for each component");
    for (std::int32_t y = 0; y < pixels_.Height(); ++y) {
        for (std::int32_t x = 0; x < pixels_.Width(); ++x) {
            const RPRegion& region = trace_.regions[static_cast<std::size_t>(Component({x, y}))];
            Require(region.colour == pixels_.Row(y)[x], "a region has the colour of its pixels", region.index);
        }
    }
    for (std::size_t i = 0; i < trace_.regions.size(); ++i) {
        const auto number = static_cast<std::int32_t>(i);
        Require(trace_.regions[i].index == number, "regions are numbered in order", number);
        Require(trace_.regions[i].area == areas[number], "a region's area is that of its component", number);
    }
}

void LawCheck::CheckCracks() const {
    std::set<std::tuple<std::int32_t, std::int32_t, bool>> cracks;  // upper or left end, vertical
    for (std::int32_t number = 0; number < static_cast<std::int32_t>(graph_.edges.size()); ++number) {
        const RPEdge& edge = graph_.Edge(number);
        Require(edge.step_count >= 1, "an edge has a step", number);
        Require(edge.region_a != edge.region_b, "an edge separates two regions", number);
        Require(edge.start_code == graph_.Step(edge, 0) && edge.end_code == graph_.Step(edge, edge.step_count - 1),
                "codes are the directions at the ends", number);
        Corner corner = {edge.start_x, edge.start_y};
        for (std::int32_t i = 0; i < edge.step_count; ++i) {
            const RPDirection d = graph_.Step(edge, i);
            const Corner next = Moved(corner, d);
            Require(Component(RightOf(corner, d)) == edge.region_b, "side B is on the right", number);
            Require(Component(LeftOf(corner, d)) == edge.region_a, "side A is on the left", number);
            const Corner upper = std::min(corner, next);
            Require(cracks.emplace(upper.first, upper.second, StepY(d) != 0).second, "no crack is in two edges", number);
            if (i > 0) {
                const bool passes = CracksAt(corner).size() == 2 || pixels_.Join(corner.first, corner.second) != kJoinNone;
                Require(passes, "an edge passes no junction", number);
            }
            corner = next;
        }
        Require(corner == Corner{edge.end_x, edge.end_y}, "steps lead to the end", number);
    }
    std::size_t changes = 0;
    for (std::int32_t y = 0; y <= pixels_.Height(); ++y) {
        for (std::int32_t x = 0; x <= pixels_.Width(); ++x) changes += CracksAt({x, y}).size();
    }
    Require(cracks.size() == changes / 2, "every change of region is a crack of an edge");
}

// Directions in which boundaries leave the corner.
std::set<RPDirection> LawCheck::CracksAt(Corner c) const {
    std::set<RPDirection> result;
    for (const RPDirection d : kDirections) {
        if (Component(LeftOf(c, d)) != Component(RightOf(c, d))) result.insert(d);
    }
    return result;
}

void LawCheck::CheckVertices() const {
    std::vector<std::array<std::int32_t, 4>> slots(graph_.vertices.size(), {kNone, kNone, kNone, kNone});
    const auto attach = [&](std::int32_t vertex, Corner corner, RPDirection leaving, std::int32_t edge) {
        const RPVertex& v = graph_.vertices.at(static_cast<std::size_t>(vertex));
        Require(corner == Corner{v.x, v.y}, "an edge ends where its vertex is", edge);
        std::int32_t& slot = slots[static_cast<std::size_t>(vertex)][static_cast<std::size_t>(leaving / 2)];
        Require(slot == kNone, "one edge leaves a vertex each way", vertex);
        slot = edge;
        const RPJoin join = pixels_.Join(v.x, v.y);
        Require(v.state == (join == kJoinUpRight ? 0 : join == kJoinUpLeft ? 1 : 2), "a vertex tells the joined pair", vertex);
        const bool junction = CracksAt(corner).size() > 2 && join == kJoinNone;
        Require(junction != graph_.Edge(edge).closed, "edges end at junctions, loops meet none", edge);
    };
    for (std::int32_t number = 0; number < static_cast<std::int32_t>(graph_.edges.size()); ++number) {
        const RPEdge& edge = graph_.Edge(number);
        Require(!edge.closed || edge.start_vertex == edge.end_vertex, "a loop starts and ends at one vertex", number);
        attach(edge.start_vertex, {edge.start_x, edge.start_y}, edge.start_code, number);
        attach(edge.end_vertex, {edge.end_x, edge.end_y}, Opposite(edge.end_code), number);
    }
    std::set<Corner> corners;
    for (std::size_t i = 0; i < slots.size(); ++i) {
        const RPVertex& vertex = graph_.vertices[i];
        const auto number = static_cast<std::int32_t>(i);
        Require(slots[i] == vertex.slots, "slots name the edges that leave", number);
        Require(slots[i] != std::array<std::int32_t, 4>{kNone, kNone, kNone, kNone}, "a vertex has an edge", number);
        Require(corners.emplace(vertex.x, vertex.y).second, "one vertex at a corner", number);
    }
}

// Where the boundary of the pixel on the right hand goes on.
RPDirection LawCheck::DirectionAfter(Corner c, RPDirection arriving) const {
    const Pixel ahead_right = RightOf(c, arriving), ahead_left = LeftOf(c, arriving);
    const Pixel behind_right = LeftOf(c, Opposite(arriving));
    const std::int32_t region = Component(behind_right);
    const bool falling = (behind_right.first < ahead_left.first) == (behind_right.second < ahead_left.second);
    const bool crosses = region == Component(ahead_left) && IsJoined(c, falling ? kJoinUpLeft : kJoinUpRight);
    if (crosses) return CounterClockwise(arriving);
    if (region != Component(ahead_right)) return Clockwise(arriving);
    return region == Component(ahead_left) ? CounterClockwise(arriving) : arriving;
}

void LawCheck::CheckLinks() const {
    for (std::int32_t number = 0; number < static_cast<std::int32_t>(graph_.edges.size()); ++number) {
        const RPEdge& edge = graph_.Edge(number);
        for (const RPSide side : {RPSide::kA, RPSide::kB}) {
            const std::int32_t region = RegionOn(number, side), next = Successor(edge, side);
            Require(next >= 0 && next < static_cast<std::int32_t>(graph_.edges.size()), "every side has a successor", number);
            const RPEdge& after = graph_.Edge(next);
            Require(region == after.region_a || region == after.region_b, "a ring keeps its region", number);
            const RPSide side_after = after.region_a == region ? RPSide::kA : RPSide::kB;
            Require(Predecessor(after, side_after) == number, "previous undoes next", number);
            const bool forward = side == RPSide::kB, forward_after = side_after == RPSide::kB;
            const Corner end = forward ? Corner{edge.end_x, edge.end_y} : Corner{edge.start_x, edge.start_y};
            const Corner start = forward_after ? Corner{after.start_x, after.start_y} : Corner{after.end_x, after.end_y};
            Require(end == start, "an edge of a ring starts where the one before ends", number);
            const RPDirection arriving = forward ? edge.end_code : Opposite(edge.start_code);
            const RPDirection leaving = forward_after ? after.start_code : Opposite(after.end_code);
            Require(leaving == DirectionAfter(end, arriving), "a ring turns as its region does", number);
        }
    }
}

void LawCheck::CheckRings() {
    for (const RPRegion& region : trace_.regions) {
        std::int32_t area = WalkRing(region.outer_edge, region.index);
        Require(area > 0, "an outer ring runs clockwise", region.index);
        std::int32_t count = 0, last = kNone;
        for (std::int32_t hole = region.first_hole; hole != kNone; hole = trace_.holes[static_cast<std::size_t>(hole)].next) {
            const RPHole& ring = trace_.holes.at(static_cast<std::size_t>(hole));
            Require(ring.region == region.index && hole > last, "a region's holes are its own, in order", region.index);
            Require(graph_.Edge(ring.first_edge).hole == hole, "the first edge of a hole knows it", hole);
            const std::int32_t inside = WalkRing(ring.first_edge, region.index);
            Require(inside < 0, "a hole's ring runs counter-clockwise", hole);
            area += inside;
            last = hole;
            ++count;
        }
        Require(count == region.hole_count && last == region.last_hole, "the list of holes is whole", region.index);
        Require(area == 2 * region.area, "rings enclose the region's area", region.index);
    }
    for (std::size_t i = 0; i < graph_.edges.size(); ++i) {
        const auto number = static_cast<std::int32_t>(i);
        const std::int32_t hole = graph_.edges[i].hole;
        Require(hole == kNone || trace_.holes.at(static_cast<std::size_t>(hole)).first_edge == number,
                "only first edges know a hole", number);
    }
    Require(WalkRing(FirstBorderEdge(), kNone) == -2 * pixels_.Width() * pixels_.Height(), "the outside has one ring");
    Require(walked_.size() == 2 * graph_.edges.size(), "every side of every edge is in a ring");
}

std::int32_t LawCheck::FirstBorderEdge() const {
    std::int32_t number = 0;
    for (const RPEdge& edge : graph_.edges) {
        if (edge.region_a == kNone || edge.region_b == kNone) return number;
        ++number;
    }
    return kNone;
}

// Twice the area inside the ring, negative when it runs counter-clockwise.
std::int32_t LawCheck::WalkRing(std::int32_t first, std::int32_t region) {
    Require(first >= 0 && first < static_cast<std::int32_t>(graph_.edges.size()), "a ring has a first edge", region);
    std::int32_t area = 0, edge = first;
    do {
        const RPSide side = graph_.Edge(edge).region_a == region ? RPSide::kA : RPSide::kB;
        Require(RegionOn(edge, side) == region, "a ring goes round its region", region);
        Require(walked_.emplace(edge, side).second, "every side of an edge is in one ring", edge);
        area += DoubledArea(edge, side);
        edge = Successor(graph_.Edge(edge), side);
    } while (edge != first);
    return area;
}

std::int32_t LawCheck::DoubledArea(std::int32_t number, RPSide side) const {
    const RPEdge& edge = graph_.Edge(number);
    std::int32_t area = 0;
    Corner corner = {edge.start_x, edge.start_y};
    for (std::int32_t i = 0; i < edge.step_count; ++i) {
        const Corner next = Moved(corner, graph_.Step(edge, i));
        area += corner.first * next.second - next.first * corner.second;
        corner = next;
    }
    return side == RPSide::kB ? area : -area;
}

// The smallest hole that a region lies in is its enclosing one.
void LawCheck::CheckEnclosingHoles() const {
    std::vector<std::pair<std::size_t, std::int32_t>> smallest(trace_.regions.size(), {0, kNone});
    std::set<std::pair<std::int32_t, Pixel>> taken;  // region and first pixel inside
    for (std::size_t i = 0; i < trace_.holes.size(); ++i) {
        const std::set<Pixel> inside = InsideOf(trace_.holes[i]);
        const auto number = static_cast<std::int32_t>(i);
        Require(taken.emplace(trace_.holes[i].region, *inside.begin()).second, "no hole is counted twice", number);
        for (const Pixel& pixel : inside) {
            Require(Component(pixel) != kNone, "a hole does not reach the border", number);
            auto& best = smallest[static_cast<std::size_t>(Component(pixel))];
            if (best.second == kNone || inside.size() < best.first) best = {inside.size(), number};
        }
    }
    for (const RPRegion& region : trace_.regions) {
        const std::int32_t hole = smallest[static_cast<std::size_t>(region.index)].second;
        Require(region.enclosing_hole == hole, "a region knows the hole that it lies in", region.index);
    }
}

// What hangs together with the other side of the hole's boundary without touching the region that has the hole.
std::set<Pixel> LawCheck::InsideOf(const RPHole& hole) const {
    const RPEdge& edge = graph_.Edge(hole.first_edge);
    const Corner start = {edge.start_x, edge.start_y};
    const Pixel first = edge.region_b == hole.region ? LeftOf(start, edge.start_code) : RightOf(start, edge.start_code);
    std::set<Pixel> inside = {first};
    std::vector<Pixel> open = {first};
    while (!open.empty()) {
        const auto [x, y] = open.back();
        open.pop_back();
        for (std::int32_t dy = -1; dy <= 1; ++dy) {
            for (std::int32_t dx = -1; dx <= 1; ++dx) {
                const Pixel next = {x + dx, y + dy};
                if (next.first < -1 || next.second < -1 || next.first > pixels_.Width() || next.second > pixels_.Height())
                    continue;
                if (Component(next) == hole.region || inside.contains(next)) continue;
                const bool between = Component({x + dx, y}) == hole.region && Component({x, y + dy}) == hole.region;
                const Corner corner = {x + (dx > 0 ? 1 : 0), y + (dy > 0 ? 1 : 0)};
                if (dx != 0 && dy != 0 && between && IsJoined(corner, dx == dy ? kJoinUpRight : kJoinUpLeft)) continue;
                inside.insert(next);
                open.push_back(next);
            }
        }
    }
    return inside;
}

}  // namespace

std::string BrokenLaw(const RPPixelMap& pixels, const RPTrace& trace) {
    try {
        LawCheck(pixels, trace).Run();
    } catch (const std::string& law) {
        return law;
    }
    return {};
}

}  // namespace support
