#include <gmock/gmock.h>

#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "host/world.h"
#include "tests/support/bitmaps.h"
#include "tests/support/plain_tracer.h"
#include "tests/support/planar_map_laws.h"
#include "trace/color_table.h"
#include "trace/graph_builder.h"
#include "trace/tracer.h"
#include "trace/vertex_dictionary.h"

namespace {

using support::BrokenLaw;
using support::DescribeDifference;
using support::MapOfRows;
using testing::ElementsAre;

RPTrace Traced(const RPPixelMap& pixels) {
    RPTrace trace = support::AnyTrace();
    RPTracePixels(pixels, trace);
    return trace;
}

RPTrace Traced(const std::vector<std::string>& rows) { return Traced(MapOfRows(rows)); }

template <class Field>
std::vector<std::int32_t> OfRegions(const RPTrace& trace, Field field) {
    std::vector<std::int32_t> values;
    for (const RPRegion& region : trace.regions) values.push_back(region.*field);
    return values;
}

// An edge as "x,y" and its steps: ^ v < >, then "o" when it is closed and the regions on its sides A and B.
std::string Text(const RPTrace& trace, std::int32_t number) {
    const RPEdge& edge = trace.graph->Edge(number);
    std::string text = std::to_string(edge.start_x) + "," + std::to_string(edge.start_y) + " ";
    for (std::int32_t i = 0; i < edge.step_count; ++i) text += ">.^.<.v"[trace.graph->Step(edge, i)];
    return text + (edge.closed ? " o " : " ") + std::to_string(edge.region_a) + "|" + std::to_string(edge.region_b);
}

std::vector<std::string> Edges(const RPTrace& trace) {
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < trace.graph->edges.size(); ++i) texts.push_back(Text(trace, static_cast<std::int32_t>(i)));
    return texts;
}

std::vector<std::int32_t> Ring(const RPTrace& trace, std::int32_t first, std::int32_t region) {
    std::vector<std::int32_t> ring;
    std::int32_t edge = first;
    do {
        ring.push_back(edge);
        const RPEdge& at = trace.graph->Edge(edge);
        edge = Successor(at, SideOf(at, region));
    } while (edge != first && ring.size() <= trace.graph->edges.size());
    return ring;
}

// Random maps of every size that matters to blocks and words, without joins and with.
void ExpectPlainResult(RPPixelMap pixels, std::mt19937& random) {
    for (const bool joined : {false, true}) {
        if (joined) support::JoinAtRandom(pixels, random);
        RPTrace plain = support::AnyTrace();
        support::PlainTrace(pixels, plain);
        const RPTrace fast = Traced(pixels);
        ASSERT_EQ(DescribeDifference(fast, plain), "") << pixels.Width() << " x " << pixels.Height() << " joined " << joined;
        ASSERT_EQ(BrokenLaw(pixels, fast), "") << pixels.Width() << " x " << pixels.Height() << " joined " << joined;
    }
}

TEST(Tracer, OneColourIsOneLoopTurnedAgainstItsRegion) {
    const RPTrace trace = Traced({"...", "..."});
    EXPECT_THAT(Edges(trace), ElementsAre("0,1 v>>>^^<<<v o 0|-1"));
    EXPECT_THAT(OfRegions(trace, &RPRegion::area), ElementsAre(6));
    const RPEdge& edge = trace.graph->edges[0];
    EXPECT_THAT((std::vector{edge.next_a, edge.next_b}), ElementsAre(0, 0));
    ASSERT_EQ(trace.graph->vertices.size(), 1U);
    EXPECT_THAT(trace.graph->vertices[0].slots, ElementsAre(kNone, 0, kNone, 0));
    EXPECT_FALSE(trace.graph->dictionary);
}

TEST(Tracer, NothingComesOfAnImageWithoutPixels) {
    for (const auto& [width, height] : {std::pair{0, 0}, std::pair{5, 0}, std::pair{0, 5}}) {
        const RPTrace trace = Traced(RPPixelMap(width, height));
        EXPECT_TRUE(trace.regions.empty() && trace.graph->edges.empty() && trace.graph->vertices.empty());
    }
}

TEST(Tracer, HoleIsALoopFromTheCornerOfTheRegionInIt) {
    const RPTrace trace = Traced({"...", ".#.", "..."});
    EXPECT_THAT(Edges(trace), ElementsAre("0,1 vv>>>^^^<<<v o 0|-1", "1,2 >^<v o 1|0"));
    EXPECT_THAT(OfRegions(trace, &RPRegion::outer_edge), ElementsAre(0, 1));
    EXPECT_THAT(OfRegions(trace, &RPRegion::enclosing_hole), ElementsAre(-1, 0));
    EXPECT_THAT(OfRegions(trace, &RPRegion::area), ElementsAre(8, 1));
    ASSERT_EQ(trace.holes.size(), 1U);
    EXPECT_EQ(trace.holes[0].first_edge, 1);
    EXPECT_EQ(trace.regions[0].first_hole, 0);
    EXPECT_EQ(trace.regions[0].hole_count, 1);
}

TEST(Tracer, RegionsThatTouchDiagonallyShareAJunctionAndHaveOpenLoops) {
    const RPTrace trace = Traced({"....", ".#..", "..#.", "...."});
    EXPECT_THAT(Edges(trace), ElementsAre("0,1 vvv>>>>^^^^<<<<v o 0|-1", "2,2 ^<v> 1|0", "2,2 v>^< 2|0"));
    EXPECT_THAT(Ring(trace, 1, 0), ElementsAre(1, 2));
    EXPECT_THAT(Ring(trace, 2, 2), ElementsAre(2));
    ASSERT_EQ(trace.graph->vertices.size(), 2U);
    EXPECT_THAT(trace.graph->vertices[1].slots, ElementsAre(2, 1, 1, 2));
}

TEST(Tracer, JoinedPixelsAreOneRegionWithoutJunctions) {
    RPPixelMap pixels = MapOfRows({"....", ".#..", "..#.", "...."});
    pixels.SetJoin(2, 2, kJoinUpLeft);
    const RPTrace along = Traced(pixels);
    EXPECT_THAT(Edges(along), ElementsAre("0,1 vvv>>>>^^^^<<<<v o 0|-1", "1,2 >v>^<^<v o 1|0"));
    EXPECT_THAT(OfRegions(along, &RPRegion::area), ElementsAre(14, 2));
    pixels.SetJoin(2, 2, kJoinUpRight);  // keeps the set pixels apart: two holes, the second from the joined corner
    const RPTrace across = Traced(pixels);
    EXPECT_THAT(Edges(across), ElementsAre("0,1 vvv>>>>^^^^<<<<v o 0|-1", "1,2 >^<v o 1|0", "2,3 >^<v o 2|0"));
    EXPECT_THAT(OfRegions(across, &RPRegion::enclosing_hole), ElementsAre(-1, 0, 1));
}

TEST(Tracer, RegionsSideBySideShareOneEdge) {
    const RPTrace trace = Traced({"..#", "..#"});
    EXPECT_THAT(Edges(trace), ElementsAre("2,2 <<^^>> -1|0", "2,0 vv 1|0", "2,0 >vv< -1|1"));
    EXPECT_THAT(Ring(trace, 0, 0), ElementsAre(0, 1));
    EXPECT_THAT(Ring(trace, 1, 1), ElementsAre(1, 2));
    EXPECT_THAT(Ring(trace, 0, kNone), ElementsAre(0, 2));
}

TEST(Tracer, EveryRegionKnowsTheHoleItLiesIn) {
    EXPECT_THAT(OfRegions(Traced({".....", ".###.", ".#.#.", ".##..", "....."}), &RPRegion::enclosing_hole),
                ElementsAre(-1, 0, 0));
    // Rings inside rings, two colours side by side in the inner one, and a second hole of the same region.
    const RPTrace trace =
        Traced({"..........", ".######.#.", ".#....#...", ".#.23.#...", ".#....#...", ".######...", ".........."});
    EXPECT_THAT(OfRegions(trace, &RPRegion::enclosing_hole), ElementsAre(-1, 0, 1, 2, 3, 3));
    EXPECT_THAT(OfRegions(trace, &RPRegion::area), ElementsAre(39, 18, 1, 10, 1, 1));
}

TEST(Tracer, MatchesThePlainTracerOnEverySmallMap) {
    std::mt19937 random(1);
    for (unsigned bits = 0; bits < 1U << 12; ++bits) {
        for (const std::int32_t width : {3, 4}) {
            RPPixelMap pixels(width, 12 / width);
            for (std::int32_t i = 0; i < 12; ++i) pixels.Row(i / width)[i % width] = bits >> i & 1;
            ASSERT_NO_FATAL_FAILURE(ExpectPlainResult(pixels, random)) << bits;
        }
    }
}

TEST(Tracer, MatchesThePlainTracerOnRandomMaps) {
    std::mt19937 random(2);
    for (int i = 0; i < 1500; ++i) ASSERT_NO_FATAL_FAILURE(ExpectPlainResult(support::AnyBitmap(random, 24), random)) << i;
    for (int i = 0; i < 12; ++i) {  // past the side of a block of corners
        ASSERT_NO_FATAL_FAILURE(ExpectPlainResult(support::Noise(random, 70, 40 + i, 2 + i % 2, 0.5), random)) << i;
        ASSERT_NO_FATAL_FAILURE(ExpectPlainResult(support::Blobs(random, 100, 80, 3), random)) << i;
    }
}

TEST(VertexDictionary, HoldsTheCornersOfTheLatticeOnly) {
    RPVertexDictionary dictionary(41, 71);  // of an image 70 wide and 40 high
    dictionary.Insert(70, 40, 5);
    dictionary.Insert(0, 0, 6);
    EXPECT_EQ(dictionary.Find(70, 40), 5);
    EXPECT_EQ(dictionary.Find(69, 40), kNone);
    for (const auto& [x, y] : {std::pair{71, 0}, std::pair{0, 41}, std::pair{-1, 0}, std::pair{0, -1}}) {
        EXPECT_THROW(dictionary.Find(x, y), int);
        EXPECT_THROW(dictionary.Insert(x, y, 1), int);
    }
    dictionary.ReleaseAbove(32);
    dictionary.Insert(64, 39, 7);  // takes over the storage of a released row
    EXPECT_EQ(dictionary.Find(0, 39), kNone);
    EXPECT_EQ(dictionary.Find(64, 32), kNone);
    EXPECT_EQ(dictionary.Find(70, 40), 5);
}

TEST(GraphBuilder, RefusesWhatDoesNotFit) {
    RPGraph graph(2, 2);
    RPChain chain;
    EXPECT_THROW(AddChain(graph, 0, chain, true), int);
    chain = {{{kNone, 1, 1, 0, 4}}, {kRight, kDown, kLeft, kUp}, true};
    AddChain(graph, 0, chain, false);
    EXPECT_THROW(AddChain(graph, 1, chain = {{{kNone, 1, 1, 0, 4}}, {kRight, kDown, kLeft, kUp}, true}, false), int);  // slots
    chain.pieces[0].edge = 0;
    AddChain(graph, 1, chain, true);
    EXPECT_THROW(AddChain(graph, 2, chain, true), int);  // side A has its region
    EXPECT_THROW(SideOf(graph.Edge(0), 2), int);
    EXPECT_THROW(FinishGraph(graph), int);  // nothing borders the outside
}

}  // namespace
