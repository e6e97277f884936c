#include "trace/region_merge.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "base/errors.h"
#include "trace/candidate_queue.h"
#include "trace/group_borders.h"
#include "trace/merge_groups.h"
#include "trace/neighbour_search.h"
#include "trace/region_painter.h"
#include "trace/saddle_vote.h"
#include "trace/tracer.h"

namespace {

constexpr float kColourErrorLimit = 1.0F;  // squared; a mean that has moved further makes the neighbours look again

RPLab WeightedMean(const RPMergeGroup& a, const RPMergeGroup& b);

class RPRegionMerger {
 public:
    RPRegionMerger(RPTrace& trace, std::int32_t minimum_area)
        : trace_(trace),
          minimum_area_(minimum_area),
          groups_(trace.regions),
          borders_(trace, groups_),
          search_(groups_, borders_, minimum_area),
          candidates_(trace.regions.size()) {}

    void Run() {
        JoinSaddles();
        SeedCandidates();
        while (!candidates_.IsEmpty()) MergeAcross(candidates_.FirstEdge());
        if (merged_ || joined_) Rebuild();
    }

 private:
    void JoinSaddles();
    void PutTogether(std::int32_t region, std::int32_t other);  // in one group
    void SeedCandidates();
    void MergeAcross(std::int32_t edge);
    void AddAffected(std::int32_t group, std::int32_t except);
    void FindCandidate(std::int32_t group);
    void Rebuild();
    std::vector<std::uint8_t> FinalColours();

    bool IsSmall(std::int32_t group) { return groups_.Group(group).area < minimum_area_; }

    RPTrace& trace_;
    std::int32_t minimum_area_;
    RPMergeGroups groups_;
    RPGroupBorders borders_;
    RPNeighbourSearch search_;
    RPCandidateQueue candidates_;
    std::vector<std::int32_t> affected_;    // small groups next to one whose colour moves
    bool merged_ = false, joined_ = false;  // some groups; some corners, whose vertices say how
};

}  // namespace

void RPMergeSmallRegions(RPTrace* trace, std::int32_t minimum_area) {
    if (trace == nullptr) throw kFailedCheck;
    RPRegionMerger(*trace, minimum_area).Run();
}

namespace {

void RPRegionMerger::JoinSaddles() {
    const auto count = static_cast<std::int32_t>(trace_.graph->vertices.size());
    for (std::int32_t number = 0; number < count; ++number) {
        RPVertex& vertex = trace_.graph->Vertex(number);
        if (!IsSaddle(vertex)) continue;
        const RPSaddle regions = RegionsRound(*trace_.graph, number);
        const RPJoin join = ChooseJoin(trace_, number, regions);
        if (join == kJoinNone) continue;
        vertex.join = join;
        joined_ = true;
        join == kJoinUpRight ? PutTogether(regions.up_right, regions.down_left)
                             : PutTogether(regions.up_left, regions.down_right);
    }
}

void RPRegionMerger::PutTogether(std::int32_t region, std::int32_t other) {
    const std::int32_t a = groups_.Find(region), b = groups_.Find(other);
    if (a != b) groups_.Unite(a, b);
}

void RPRegionMerger::SeedCandidates() {
    for (const RPRegion& region : trace_.regions) {
        if (groups_.Find(region.index) == region.index && IsSmall(region.index)) FindCandidate(region.index);
    }
}

// The neighbours of a group whose mean moves too far look for their nearest colour again, after the merge.
void RPRegionMerger::MergeAcross(std::int32_t edge) {
    const std::int32_t a = groups_.Find(trace_.graph->Edge(edge).region_a);
    const std::int32_t b = groups_.Find(trace_.graph->Edge(edge).region_b);
    if (!IsSmall(a) && !IsSmall(b)) throw kBrokenInvariant;
    candidates_.Remove(a);
    candidates_.Remove(b);

    const RPMergeGroup &group_a = groups_.Group(a), &group_b = groups_.Group(b);
    const RPLab mean = WeightedMean(group_a, group_b);
    affected_.clear();
    const auto moved = [&](const RPMergeGroup& group, std::int32_t number, std::int32_t other) {
        const float error = Distance(group.mean, mean) + group.colour_error;
        if (error <= kColourErrorLimit) return error;
        AddAffected(number, other);
        return 0.0F;
    };
    const float error_a = moved(group_a, a, b), error_b = moved(group_b, b, a);

    const std::int32_t united = search_.Unite(a, b);
    merged_ = true;
    groups_.Group(united).colour_error = std::max(error_a, error_b);
    for (const std::int32_t group : affected_) FindCandidate(group);
    if (IsSmall(united)) FindCandidate(united);
}

void RPRegionMerger::AddAffected(std::int32_t group, std::int32_t except) {
    borders_.ForEachNeighbour(group, [&](std::int32_t neighbour, std::int32_t) {
        if (neighbour != except && IsSmall(neighbour)) affected_.push_back(neighbour);
    });
}

// A group that is the whole image has no candidate.
void RPRegionMerger::FindCandidate(std::int32_t group) {
    const RPCandidate nearest = search_.Nearest(group);
    if (nearest.edge != kNone) candidates_.Set(group, nearest);
}

// Paints and traces anew; that also unites neighbours of one colour. A join is left out where its corner is no saddle any more.
void RPRegionMerger::Rebuild() {
    RPPixelMap pixels = PaintRegions(trace_, FinalColours());
    for (const RPVertex& vertex : trace_.graph->vertices) {
        if (vertex.join == kJoinNone) continue;
        const std::int32_t x = vertex.x, y = vertex.y;
        const std::uint8_t *above = pixels.Row(y - 1) + x, *below = pixels.Row(y) + x;
        const bool saddle = above[-1] != above[0] && above[0] != below[0] && below[0] != below[-1] && below[-1] != above[-1];
        if (saddle) pixels.SetJoin(x, y, vertex.join);
    }
    RPTracePixels(pixels, trace_);
}

std::vector<std::uint8_t> RPRegionMerger::FinalColours() {
    std::vector<std::uint8_t> colours(trace_.regions.size());
    for (const RPRegion& region : trace_.regions) {
        if (groups_.Find(region.index) != region.index) continue;
        const std::uint8_t colour = groups_.FinalColour(region.index);
        for (std::int32_t member = groups_.Group(region.index).members.first; member != kNone;
             member = groups_.NextMember(member)) {
            colours[static_cast<std::size_t>(member)] = colour;
        }
    }
    return colours;
}

RPLab WeightedMean(const RPMergeGroup& a, const RPMergeGroup& b) {
    const auto weight_a = static_cast<float>(a.area), weight_b = static_cast<float>(b.area);
    const auto mean = [&](float x, float y) { return (x * weight_a + y * weight_b) / (weight_a + weight_b); };
    return {mean(a.mean.l, b.mean.l), mean(a.mean.a, b.mean.a), mean(a.mean.b, b.mean.b)};
}

}  // namespace
