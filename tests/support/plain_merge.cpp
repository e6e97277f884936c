#include "tests/support/plain_merge.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "tests/support/bitmaps.h"
#include "trace/color_table.h"

namespace support {
namespace {

using Members = std::vector<std::int32_t>;

struct Joined {
    std::int32_t x, y;
    RPJoin join;
};

float SquaredDistance(const RPLab& p, const RPLab& q) {
    return (p.l - q.l) * (p.l - q.l) + (p.a - q.a) * (p.a - q.a) + (p.b - q.b) * (p.b - q.b);
}

// Groups go by the number of the region that they began with.
class PlainMerger {
 public:
    PlainMerger(const RPPixelMap& pixels, const RPTrace& trace, std::int32_t minimum_area)
        : pixels_(pixels), trace_(trace), minimum_area_(minimum_area) {
        for (const RPRegion& region : trace.regions) {
            group_of_.push_back(region.index);
            members_[region.index] = {region.index};
        }
    }

    RPPixelMap Run() {
        JoinSaddles();
        for (const auto& [group, members] : members_) FindCandidate(group);
        while (!candidates_.empty()) {
            const auto smallest = [](const auto& a, const auto& b) { return a.second < b.second; };
            Merge(trace_.graph->Edge(std::min_element(candidates_.begin(), candidates_.end(), smallest)->second.second));
        }
        return Paint();
    }

 private:
    const RPRegion& Region(std::int32_t number) const { return trace_.regions[static_cast<std::size_t>(number)]; }
    std::int32_t GroupOf(std::int32_t region) const { return group_of_[static_cast<std::size_t>(region)]; }
    RPLab Lab(std::int32_t region) const { return RPColorTable::OfThread().Entry(Region(region).colour).lab; }

    void JoinSaddles();
    std::vector<CFPoint> PointsFrom(const RPVertex& vertex, RPDirection d) const;
    RPJoin Choose(const RPVertex& vertex) const;
    void Unite(std::int32_t a, std::int32_t b);
    std::int32_t Area(std::int32_t group) const;
    RPLab Mean(std::int32_t group) const;
    std::vector<std::int32_t> EdgesRound(std::int32_t group) const;
    std::set<std::int32_t> Neighbours(std::int32_t group) const;
    void FindCandidate(std::int32_t group);
    void Merge(const RPEdge& edge);
    std::uint8_t FinalColour(Members members) const;
    RPPixelMap Paint() const;

    const RPPixelMap& pixels_;
    const RPTrace& trace_;
    std::int32_t minimum_area_;
    std::vector<std::int32_t> group_of_;
    std::map<std::int32_t, Members> members_;
    std::map<std::int32_t, float> error_;
    std::map<std::int32_t, std::pair<float, std::int32_t>> candidates_;
    std::vector<Joined> joins_;
};

void PlainMerger::JoinSaddles() {
    const std::vector<std::int32_t> components = Components(pixels_);
    for (const RPVertex& vertex : trace_.graph->vertices) {
        const RPJoin join = Choose(vertex);
        if (join == kJoinNone) continue;
        joins_.push_back({vertex.x, vertex.y, join});
        const auto at = [&](int dx, int dy) {
            return components[static_cast<std::size_t>((vertex.y + dy) * pixels_.Width() + vertex.x + dx)];
        };
        join == kJoinUpRight ? Unite(GroupOf(at(0, -1)), GroupOf(at(-1, 0))) : Unite(GroupOf(at(-1, -1)), GroupOf(at(0, 0)));
    }
}

// The points of the edge that leaves the vertex this way, from the vertex on.
std::vector<CFPoint> PlainMerger::PointsFrom(const RPVertex& vertex, RPDirection d) const {
    const RPEdge& edge = trace_.graph->Edge(vertex.slots[static_cast<std::size_t>(d / 2)]);
    std::vector<CFPoint> points;
    RPEdgePoints next(*trace_.graph, edge);
    while (points.size() < static_cast<std::size_t>(PointCount(edge))) points.push_back(next());
    const CFPoint second = CFPoint{static_cast<float>(vertex.x), static_cast<float>(vertex.y)} +
                           CFPoint{static_cast<float>(StepX(d)), static_cast<float>(StepY(d))};
    if (points[0] != CFPoint{static_cast<float>(vertex.x), static_cast<float>(vertex.y)} || points[1] != second) {
        std::reverse(points.begin(), points.end());
    }
    return points;
}

RPJoin PlainMerger::Choose(const RPVertex& vertex) const {
    if (vertex.x == 0 || vertex.y == 0 || vertex.x == pixels_.Width() || vertex.y == pixels_.Height()) return kJoinNone;
    const bool up_right = CanJoin(pixels_, vertex.x, vertex.y, kJoinUpRight);
    const bool up_left = CanJoin(pixels_, vertex.x, vertex.y, kJoinUpLeft);
    if (!up_right || !up_left) return up_right ? kJoinUpRight : up_left ? kJoinUpLeft : kJoinNone;

    int votes_up_right = 0, votes_up_left = 0;
    for (const RPDirection d : {kRight, kUp, kLeft, kDown}) {
        const std::vector<CFPoint> points = PointsFrom(vertex, d);
        if (points.size() < 3) continue;
        const CFPoint first = points[1] - points[0], second = points[2] - points[1];
        const float turn = first.x * second.y - first.y * second.x;  // positive: to the right, as y runs down
        const bool level = d == kRight || d == kLeft;
        if (turn > 0) ++(level ? votes_up_left : votes_up_right);
        if (turn < 0) ++(level ? votes_up_right : votes_up_left);
    }
    if (votes_up_right != votes_up_left) return votes_up_right > votes_up_left ? kJoinUpRight : kJoinUpLeft;
    const std::vector<std::int32_t> components = Components(pixels_);
    const auto at = [&](int dx, int dy) {
        return components[static_cast<std::size_t>((vertex.y + dy) * pixels_.Width() + vertex.x + dx)];
    };
    return at(0, -1) == at(-1, 0) && at(-1, -1) != at(0, 0) ? kJoinUpLeft : kJoinUpRight;
}

void PlainMerger::Unite(std::int32_t a, std::int32_t b) {
    if (a == b) return;
    for (const std::int32_t member : members_.at(b)) {
        group_of_[static_cast<std::size_t>(member)] = a;
        members_.at(a).push_back(member);
    }
    members_.erase(b);
}

std::int32_t PlainMerger::Area(std::int32_t group) const {
    std::int32_t area = 0;
    for (const std::int32_t member : members_.at(group)) area += Region(member).area;
    return area;
}

RPLab PlainMerger::Mean(std::int32_t group) const {
    double l = 0, a = 0, b = 0;
    for (const std::int32_t member : members_.at(group)) {
        l += static_cast<double>(Lab(member).l) * Region(member).area;
        a += static_cast<double>(Lab(member).a) * Region(member).area;
        b += static_cast<double>(Lab(member).b) * Region(member).area;
    }
    const std::int32_t area = Area(group);
    return {static_cast<float>(l / area), static_cast<float>(a / area), static_cast<float>(b / area)};
}

// Edges to other groups, member by member, along the outer ring and then the holes.
std::vector<std::int32_t> PlainMerger::EdgesRound(std::int32_t group) const {
    std::vector<std::int32_t> edges;
    for (const std::int32_t member : members_.at(group)) {
        std::vector<std::int32_t> rings = {Region(member).outer_edge};
        for (const RPHole& hole : trace_.holes) {
            if (hole.region == member) rings.push_back(hole.first_edge);
        }
        for (const std::int32_t first : rings) {
            std::int32_t number = first;
            do {
                const RPEdge& edge = trace_.graph->Edge(number);
                const std::int32_t across = edge.region_a == member ? edge.region_b : edge.region_a;
                if (across != kNone && GroupOf(across) != group) edges.push_back(number);
                number = edge.region_a == member ? edge.next_a : edge.next_b;
            } while (number != first);
        }
    }
    return edges;
}

std::set<std::int32_t> PlainMerger::Neighbours(std::int32_t group) const {
    std::set<std::int32_t> neighbours;
    for (const std::int32_t number : EdgesRound(group)) {
        neighbours.insert(GroupOf(trace_.graph->Edge(number).region_a));
        neighbours.insert(GroupOf(trace_.graph->Edge(number).region_b));
    }
    neighbours.erase(group);
    return neighbours;
}

void PlainMerger::FindCandidate(std::int32_t group) {
    candidates_.erase(group);
    if (Area(group) >= minimum_area_) return;
    for (const std::int32_t number : EdgesRound(group)) {
        const RPEdge& edge = trace_.graph->Edge(number);
        const float distance = SquaredDistance(Mean(GroupOf(edge.region_a)), Mean(GroupOf(edge.region_b)));
        if (!candidates_.contains(group) || distance < candidates_[group].first) candidates_[group] = {distance, number};
    }
}

void PlainMerger::Merge(const RPEdge& edge) {
    const std::int32_t a = GroupOf(edge.region_a), b = GroupOf(edge.region_b);
    candidates_.erase(a);
    candidates_.erase(b);
    const RPLab p = Mean(a), q = Mean(b);
    const auto u = static_cast<float>(Area(a)), v = static_cast<float>(Area(b));
    const RPLab mean = {(p.l * u + q.l * v) / (u + v), (p.a * u + q.a * v) / (u + v), (p.b * u + q.b * v) / (u + v)};
    std::set<std::int32_t> affected;
    const auto moved = [&](std::int32_t group, std::int32_t other, const RPLab& from) {
        const float error = SquaredDistance(from, mean) + error_[group];
        if (error <= 1.0F) return error;
        for (const std::int32_t neighbour : Neighbours(group)) {
            if (neighbour != other) affected.insert(neighbour);
        }
        return 0.0F;
    };
    const float error_a = moved(a, b, p), error_b = moved(b, a, q);
    Unite(a, b);
    error_[a] = std::max(error_a, error_b);
    for (const std::int32_t group : affected) FindCandidate(group);
    FindCandidate(a);
}

std::uint8_t PlainMerger::FinalColour(Members members) const {
    const RPLab mean = Mean(GroupOf(members[0]));
    std::stable_sort(members.begin(), members.end(), [&](auto x, auto y) { return Region(x).area > Region(y).area; });
    std::int32_t chosen = members[0];
    if (members.size() > 1 && Region(members[1]).area * 2 > Region(members[0]).area) {
        for (std::size_t i = 1; i < std::min<std::size_t>(members.size(), 3); ++i) {
            if (SquaredDistance(Lab(members[i]), mean) < SquaredDistance(Lab(chosen), mean)) chosen = members[i];
        }
    }
    return Region(chosen).colour;
}

RPPixelMap PlainMerger::Paint() const {
    const std::vector<std::int32_t> components = Components(pixels_);
    RPPixelMap painted(pixels_.Width(), pixels_.Height());
    std::size_t place = 0;
    for (std::int32_t y = 0; y < pixels_.Height(); ++y) {
        for (std::int32_t x = 0; x < pixels_.Width(); ++x) {
            painted.Row(y)[x] = FinalColour(members_.at(GroupOf(components[place++])));
        }
    }
    for (const Joined& corner : joins_) {
        if (CanJoin(painted, corner.x, corner.y, corner.join)) painted.SetJoin(corner.x, corner.y, corner.join);
    }
    return painted;
}

}  // namespace

RPPixelMap PlainMerge(const RPPixelMap& pixels, const RPTrace& trace, std::int32_t minimum_area) {
    return PlainMerger(pixels, trace, minimum_area).Run();
}

}  // namespace support
