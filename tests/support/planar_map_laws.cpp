#include "tests/support/planar_map_laws.h"

#include <algorithm>
#include <array>
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
        CheckCracks();
        CheckRings();
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
    std::set<RPDirection> CracksAt(Corner c) const;

    void CheckCracks() const;
    void CheckRings();
    std::int32_t WalkRing(std::int32_t first, std::int32_t region);
    std::int32_t DoubledArea(std::int32_t edge, RPSide side) const;

    const RPPixelMap& pixels_;
    const RPTrace& trace_;
    const RPGraph& graph_;
    std::vector<std::int32_t> components_;
    std::set<std::pair<std::int32_t, RPSide>> walked_;
};

void LawCheck::CheckCracks() const {
    std::set<std::tuple<std::int32_t, std::int32_t, bool>> cracks;  // upper or left end, vertical
    for (std::int32_t number = 0; number < static_cast<std::int32_t>(graph_.edges.size()); ++number) {
        const RPEdge& edge = graph_.Edge(number);
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

void LawCheck::CheckRings() {
    for (const RPRegion& region : trace_.regions) {
        std::int32_t area = WalkRing(region.outer_edge, region.index);
        Require(area > 0, "an outer ring runs clockwise", region.index);
        for (std::int32_t hole = region.first_hole; hole != kNone; hole = trace_.holes[static_cast<std::size_t>(hole)].next) {
            const std::int32_t inside = WalkRing(trace_.holes.at(static_cast<std::size_t>(hole)).first_edge, region.index);
            Require(inside < 0, "a hole's ring runs counter-clockwise", hole);
            area += inside;
        }
        Require(area == 2 * std::ranges::count(components_, region.index), "rings enclose the region's pixels", region.index);
    }
    const auto is_at_border = [](const RPEdge& edge) { return edge.region_a == kNone || edge.region_b == kNone; };
    const auto border = std::ranges::distance(graph_.edges.begin(), std::ranges::find_if(graph_.edges, is_at_border));
    Require(WalkRing(static_cast<std::int32_t>(border), kNone) == -2 * pixels_.Width() * pixels_.Height(),
            "the outside has one ring");
    Require(walked_.size() == 2 * graph_.edges.size(), "every side of every edge is in a ring");
}

// Twice the area inside the ring, negative when it runs counter-clockwise.
std::int32_t LawCheck::WalkRing(std::int32_t first, std::int32_t region) {
    std::int32_t area = 0, edge = first;
    do {
        const RPSide side = SideOf(graph_.Edge(edge), region);
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
