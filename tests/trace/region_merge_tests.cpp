#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "tests/support/bitmaps.h"
#include "tests/support/plain_merge.h"
#include "tests/support/plain_tracer.h"
#include "tests/support/planar_map_laws.h"
#include "tests/support/thrown_int.h"
#include "trace/candidate_queue.h"
#include "trace/color_table.h"
#include "trace/neighbour_search.h"
#include "trace/region_merge.h"

namespace {

using support::MapOfRows;
using support::Rgb;

// No two have the same red. '.' is black, '#' white with lightness 100, 2 a grey of 76, 3 a red; from 4 on greys of lightness
// 20.6, 40.2, 43.8 and 66.0.
const std::vector<Rgb> kColours = {{0, 0, 0}, {255, 255, 255}, {128, 128, 128}, {200, 40, 90},
                                   {8, 8, 8}, {29, 29, 29},    {35, 35, 35},    {90, 90, 90}};

// Lightness 68.9 to 72.3: a merge moves means by about the limit from which on neighbours look again.
const std::vector<Rgb> kNearGreys = {{100, 100, 100}, {103, 103, 103}, {105, 105, 105}, {112, 112, 112}};

// The number of one of the colours in the thread's palette.
std::uint8_t PaletteNumber(std::uint8_t colour) {
    std::uint8_t number = 0;
    while (RPColorTable::OfThread().Entry(number).colour.components[0] != kColours[colour][0]) ++number;
    return number;
}

// The merged map must be as if `expected`, with one pair joined where `join` says so, had been traced.
void ExpectMerged(const std::vector<std::string>& rows, std::int32_t minimum_area, const std::vector<std::string>& expected,
                  RPJoin join = kJoinNone, std::int32_t x = 0, std::int32_t y = 0) {
    RPTrace fresh = support::AnyTrace(), trace = support::TraceOf(MapOfRows(rows), kColours);
    RPMergeSmallRegions(&trace, minimum_area);

    RPPixelMap pixels = MapOfRows(expected);
    for (std::int32_t row = 0; row < pixels.Height(); ++row) {
        std::transform(pixels.Row(row), pixels.Row(row) + pixels.Width(), pixels.Row(row), PaletteNumber);
    }
    if (join != kJoinNone) pixels.SetJoin(x, y, join);
    support::PlainTrace(pixels, fresh);
    EXPECT_EQ(support::DescribeDifference(trace, fresh), "") << rows[0];
}

void ExpectJoined(const std::vector<std::string>& rows, RPJoin join, std::int32_t x, std::int32_t y) {
    ExpectMerged(rows, 1, rows, join, x, y);
}

TEST(RegionMerge, ASmallRegionTakesTheColourRoundIt) {
    ExpectMerged({".....", ".....", "..#..", "....."}, 2, {".....", ".....", ".....", "....."});
    ExpectMerged({".......", ".#####.", ".#...#.", ".#####.", "......."}, 4,
                 {".......", ".#####.", ".#####.", ".#####.", "......."});
    ExpectMerged({"#.."}, 1, {"#.."});
    ExpectMerged({"#"}, 100, {"#"});
}

TEST(RegionMerge, BoundariesNearACheckerboardCornerVoteForAPair) {
    // All four edges close in on the two single pixels.
    ExpectJoined({"....", ".#..", "..#.", "...."}, kJoinUpLeft, 2, 2);
    ExpectJoined({"....", "..#.", ".#..", "...."}, kJoinUpRight, 2, 2);
    // Four straight edges, four regions: the pair up-right and down-left.
    ExpectJoined({"..##", "..##", "##..", "##.."}, kJoinUpRight, 2, 2);
    // Straight edges, but that pair is one region already: the other one. With its colours turned round, too.
    ExpectJoined({"..###", "..###", "##..#", "##..#", "#####"}, kJoinUpLeft, 2, 2);
    ExpectJoined({"##...", "##...", "..##.", "..##.", "....."}, kJoinUpLeft, 2, 2);
    // One region on the other diagonal makes no difference.
    ExpectJoined({"###..", "###..", "#..##", "#..##", "#####"}, kJoinUpRight, 3, 2);
    // A single vote, from the right edge turning right and from the up edge turning right, outweighs what a tie would give.
    ExpectJoined({"..##", "..##", "##.#", "##.#"}, kJoinUpLeft, 2, 2);
    ExpectJoined({".....", "..###", "##..#", "##..#", "#####"}, kJoinUpRight, 2, 2);
    // Only one pair is of one colour.
    ExpectJoined({"..##", "..##", "22..", "22.."}, kJoinUpLeft, 2, 2);
    ExpectJoined({"..##", "..##", "##22", "##22"}, kJoinUpRight, 2, 2);
}

TEST(RegionMerge, AGroupsColourIsThatOfALargeMemberNearTheMean) {
    // The second, white, is a bit nearer to the mean of 50.2 than black, and the grey nearer still. With a second that is
    // only half the largest, the others do not count.
    ExpectMerged({"....###22"}, 10, {"222222222"});
    ExpectMerged({"....##22"}, 10, {"........"});
    // Grey is the nearest to 47.0, but only the fourth in size.
    ExpectMerged({"..2###.."}, 9, {"........"});
    // Of equal members the earlier one counts: the merge puts the one on the left side of the shared edge first.
    ExpectMerged({".#"}, 3, {"##"});
    ExpectMerged({"#."}, 3, {".."});
}

TEST(RegionMerge, NeighboursLookAgainWhenAGroupsColourMoves) {
    // The 4 is nearest to the 5s and goes first. The 6 would rather go to the 7s than to the 4, but it is nearer to the mean
    // of the 4 and the 5s than to either.
    ExpectMerged({"5554677"}, 2, {"5555577"});
}

TEST(RegionMerge, AMissingTraceIsRefused) {
    EXPECT_EQ(ThrownInt([] { RPMergeSmallRegions(nullptr, 1); }), kFailedCheck);
}

void ExpectMergedAsThePlainWayDoes(const RPPixelMap& pixels, const std::vector<Rgb>& palette, std::int32_t minimum_area) {
    RPTrace trace = support::TraceOf(pixels, palette);
    const RPPixelMap expected = support::PlainMerge(pixels, trace, minimum_area);
    RPTrace fresh = support::TraceOf(pixels, palette);
    support::PlainTrace(expected, fresh);

    RPMergeSmallRegions(&trace, minimum_area);
    ASSERT_EQ(support::DescribeDifference(trace, fresh), "");
    ASSERT_EQ(support::BrokenLaw(expected, trace), "");
    for (const RPRegion& region : trace.regions) {
        ASSERT_TRUE(region.area >= minimum_area || trace.regions.size() == 1);
    }
}

TEST(RegionMerge, RandomBitmapsMergeAsThePlainWayDoes) {
    std::mt19937 random(1);
    for (unsigned i = 0; i < 1500 && !HasFailure(); ++i) {
        SCOPED_TRACE(i);
        const std::int32_t minimum_area = std::array{1, 2, 3, 5, 8, 20, 300}[i % 7];
        ExpectMergedAsThePlainWayDoes(support::AnyBitmap(random, 14), i % 2 == 0 ? kColours : kNearGreys, minimum_area);
    }
}

// Two searches over the same groups: one looks at all neighbours, the other makes hubs of groups with more than a few.
class TwoSearches {
 public:
    TwoSearches(const RPTrace& trace, std::int32_t minimum_area, std::size_t most_neighbours)
        : plain_(trace, minimum_area, std::numeric_limits<std::size_t>::max()), hubs_(trace, minimum_area, most_neighbours) {}

    void UniteAcross(const RPEdge& edge) {
        const std::int32_t a = plain_.groups.Find(edge.region_a), b = plain_.groups.Find(edge.region_b);
        if (a == b) return;
        plain_.search.Unite(a, b);
        hubs_.search.Unite(a, b);
    }
    /// Of group `region` when it is one, and small.
    void ExpectSameNearest(std::int32_t region, std::int32_t minimum_area) {
        if (plain_.groups.Find(region) != region || plain_.groups.Group(region).area >= minimum_area) return;
        const RPCandidate expected = plain_.search.Nearest(region), found = hubs_.search.Nearest(region);
        ASSERT_EQ(found.edge, expected.edge) << region;
        ASSERT_EQ(found.distance, expected.distance) << region;
    }

 private:
    struct Search {
        Search(const RPTrace& trace, std::int32_t minimum_area, std::size_t most_neighbours)
            : groups(trace.regions), borders(trace, groups), search(groups, borders, minimum_area, most_neighbours) {}
        RPMergeGroups groups;
        RPGroupBorders borders;
        RPNeighbourSearch search;
    };
    Search plain_, hubs_;
};

TEST(NeighbourSearch, HubsFindWhatALookAtAllNeighboursFinds) {
    std::mt19937 random(3);
    for (unsigned i = 0; i < 1500 && !HasFatalFailure(); ++i) {
        SCOPED_TRACE(i);
        const RPTrace trace = support::TraceOf(support::AnyBitmap(random, 16), i % 3 == 0 ? kNearGreys : kColours);
        const std::int32_t minimum_area = i % 5 == 0 ? 40 : 1000;
        TwoSearches searches(trace, minimum_area, i % 4);
        const auto count = static_cast<unsigned>(trace.graph->edges.size());
        for (unsigned union_number = 0; union_number < 60 && !HasFatalFailure(); ++union_number) {
            const RPEdge& edge = trace.graph->edges[random() % count];
            if (edge.region_a == kNone || edge.region_b == kNone) continue;
            searches.UniteAcross(edge);
            if (union_number % 3 != 0) continue;
            for (const RPRegion& region : trace.regions) searches.ExpectSameNearest(region.index, minimum_area);
        }
    }
}

TEST(CandidateQueue, GivesTheNearestThenTheLowestEdge) {
    std::mt19937 random(2);
    const auto below = [&](int limit) { return static_cast<std::int32_t>(random() % static_cast<unsigned>(limit)); };
    RPCandidateQueue queue(40);
    std::map<std::int32_t, std::pair<float, std::int32_t>> plain;
    for (int i = 0; i < 20000; ++i) {
        const std::int32_t group = below(40);
        if (below(3) == 0) {
            queue.Remove(group);
            plain.erase(group);
        } else {
            plain[group] = {static_cast<float>(below(5)) * 0.3F, below(100)};
            queue.Set(group, {plain[group].second, plain[group].first});
        }
        ASSERT_EQ(queue.IsEmpty(), plain.empty());
        if (plain.empty()) continue;
        const auto smallest = [](const auto& a, const auto& b) { return a.second < b.second; };
        ASSERT_EQ(queue.FirstEdge(), std::min_element(plain.begin(), plain.end(), smallest)->second.second);
    }
}

}  // namespace
