#include <gtest/gtest.h>

#include <numeric>
#include <optional>
#include <random>
#include <set>

#include "refhost/engine/arrangement.h"
#include "refhost/engine/lone_arcs.h"
#include "tests/support/offset_distance.h"

namespace refhost {
namespace {

using Loop = std::vector<GridPoint>;

std::vector<GridSegment> Segments(const std::vector<Loop>& loops) {
    std::vector<GridSegment> segments;
    for (const Loop& loop : loops) {
        for (std::size_t i = 0; i < loop.size(); ++i) segments.push_back({loop[i], loop[(i + 1) % loop.size()]});
    }
    return segments;
}

SegmentField FieldOf(const std::vector<GridSegment>& segments) {
    const auto point = [](GridPoint p) { return Point{static_cast<double>(p.x), static_cast<double>(p.y)}; };
    std::vector<SegmentField::Segment> lines;
    for (const GridSegment& s : segments) lines.push_back({point(s.from), point(s.to)});
    return SegmentField(std::move(lines));
}

Loop Square(std::int32_t left, std::int32_t top, std::int32_t side, bool reversed = false) {
    if (reversed) return {{left, top}, {left, top + side}, {left + side, top + side}, {left + side, top}};
    return {{left, top}, {left + side, top}, {left + side, top + side}, {left, top + side}};
}

/// Areas of the boundary loops, smallest first.
std::multiset<double> Areas(const Boundary& boundary) {
    std::multiset<double> areas;
    std::size_t begin = 0;
    for (const std::size_t end : boundary.loop_ends) {
        double doubled = 0;
        for (std::size_t i = begin; i < end; ++i) {
            const GridPoint a = boundary.edges[i].from;
            const GridPoint b = boundary.edges[i + 1 < end ? i + 1 : begin].from;
            doubled += static_cast<double>(a.x) * b.y - static_cast<double>(b.x) * a.y;
        }
        areas.insert(0.5 * doubled);
        begin = end;
    }
    return areas;
}

std::multiset<double> Areas(const std::vector<Loop>& loops, WindingRule rule) {
    return Areas(FindBoundary(Segments(loops), rule));
}

using Expected = std::multiset<double>;
constexpr auto kPositive = WindingRule::kPositive;
constexpr auto kNonZero = WindingRule::kNonZero;

TEST(Arrangement, UnionsOfSquaresWorkedByHand) {
    EXPECT_EQ(Areas({Square(0, 0, 10), Square(5, 5, 10)}, kPositive), Expected({175}));
    EXPECT_EQ(Areas({Square(0, 0, 10), Square(10, 10, 10)}, kPositive), Expected({100, 100})) << "touching in a corner";
    EXPECT_EQ(Areas({Square(0, 0, 10), Square(10, 0, 10)}, kPositive), Expected({200})) << "a shared side cancels";
    EXPECT_EQ(Areas({Square(0, 0, 10), Square(0, 0, 10)}, kPositive), Expected({100})) << "all sides double";
    EXPECT_EQ(Areas({Square(0, 0, 30), Square(10, 10, 10)}, kPositive), Expected({900})) << "an island inside is covered";
    EXPECT_EQ(Areas({Square(0, 0, 30), Square(10, 10, 10, true)}, kPositive), Expected({-100, 900})) << "a hole";
    EXPECT_EQ(Areas({Square(0, 0, 10, true)}, kPositive), Expected({}));
    EXPECT_EQ(Areas({Square(0, 0, 10, true)}, kNonZero), Expected({100})) << "turned to run the right way";
    EXPECT_EQ(Areas({Square(0, 0, 10), Square(5, 5, 10, true)}, kNonZero), Expected({75, 75})) << "opposite windings cancel";
}

TEST(Arrangement, OutlinesThatCoverThemselvesCancelOrCountOnce) {
    EXPECT_EQ(Areas({{{0, 0}, {10, 4}}}, kNonZero), Expected({})) << "there and back";
    EXPECT_EQ(Areas({{{0, 0}, {20, 0}, {10, 0}}}, kNonZero), Expected({})) << "back over a part";
    EXPECT_EQ(Areas({{{0, 0}, {10, 0}, {10, 10}, {20, 20}, {10, 10}, {0, 10}}}, kPositive), Expected({100}))
        << "a spike without width";
    EXPECT_EQ(Areas({{{0, 0}, {10, 10}, {10, 0}, {0, 10}}}, kNonZero), Expected({25, 25})) << "a bow tie";
    EXPECT_EQ(Areas({{{0, 0}, {10, 10}, {10, 0}, {0, 10}}}, kPositive), Expected({25})) << "one wing runs the other way";
}

TEST(Arrangement, EdgesNameTheSegmentTheyComeFrom) {
    const std::vector<GridSegment> segments = Segments({Square(0, 0, 10), Square(5, 5, 10, true)});
    const Boundary boundary = FindBoundary(segments, kNonZero);
    std::size_t begin = 0;
    for (const std::size_t end : boundary.loop_ends) {
        for (std::size_t i = begin; i < end; ++i) {
            const GridPoint from = boundary.edges[i].from;
            const GridPoint to = boundary.edges[i + 1 < end ? i + 1 : begin].from;
            const GridSegment& s = segments[boundary.edges[i].segment];
            const bool runs_along = (to.x - from.x) * (s.to.x - s.from.x) + (to.y - from.y) * (s.to.y - s.from.y) > 0;
            EXPECT_NE(runs_along, boundary.edges[i].reversed);
            for (const GridPoint p : {from, to}) {
                EXPECT_EQ((p.x - s.from.x) * (s.to.y - s.from.y), (p.y - s.from.y) * (s.to.x - s.from.x))
                    << "on the segment's line";
            }
        }
        begin = end;
    }
}

TEST(Arrangement, LargestCoordinatesStayExact) {
    constexpr std::int32_t k = kLargestGridCoordinate;
    const double square = 4.0 * k * k;
    EXPECT_EQ(Areas({{{-k, -k}, {k, -k}, {k, k}, {-k, k}}}, kPositive), Expected({square}));
    EXPECT_EQ(Areas({{{-k, -k}, {k, k}, {k, -k}, {-k, k}}}, kNonZero), Expected({square / 4, square / 4}));
}

// Crossings in the boxes of thousands of long segments once tried each of them, for a quarter of a minute here. All crossings are
// on grid points, so areas are exact.
TEST(Arrangement, ManyLongSegmentsCostWhatTheyCross) {
    constexpr std::int32_t kRising = 1500, kFalling = 40, kPitch = 8, kWidth = 4, kLong = 400000;
    std::vector<Loop> loops;
    for (std::int32_t i = 0; i < kRising; ++i) {
        const std::int32_t x = i * kPitch;
        loops.push_back({{x, 0}, {x + kWidth, 0}, {x + kWidth + kLong, kLong}, {x + kLong, kLong}});
    }
    constexpr std::int32_t kShort = (kRising / 2 + 1) * kPitch;  // falls through all the rising ones
    for (std::int32_t j = 0; j < kFalling; ++j) {
        const std::int32_t x = kLong / 2 + j * kPitch / 2, y = x + kPitch;
        loops.push_back({{x, y}, {x + kShort, y - kShort}, {x + kShort + kWidth, y - kShort}, {x + kWidth, y}});
    }
    const std::multiset<double> areas = Areas(loops, kPositive);
    EXPECT_EQ(areas.size(), 1 + std::size_t{kRising - 1} * (kFalling - 1)) << "a hole between every two pairs";
    const double strips = double{kRising} * kWidth * kLong + double{kFalling} * kWidth * kShort;
    const double shared = double{kRising} * kFalling * kWidth * kWidth / 2;
    EXPECT_EQ(std::accumulate(areas.begin(), areas.end(), 0.0), strips - shared);
}

std::int64_t Side(const GridSegment& s, GridPoint p) {
    const std::int64_t x = s.to.x - s.from.x, y = s.to.y - s.from.y;
    return x * (p.y - s.from.y) - y * (p.x - s.from.x);
}

/// Whether two segments share an inner point without being parallel.
bool Cross(const GridSegment& a, const GridSegment& b) {
    const auto differ = [](std::int64_t one, std::int64_t other) { return (one < 0 && other > 0) || (one > 0 && other < 0); };
    return differ(Side(a, b.from), Side(a, b.to)) && differ(Side(b, a.from), Side(b, a.to));
}

// On a grid this small, hot pixels and coincidences are everywhere. The boundary must wind once round what is inside and not at
// all round the rest (away from edges that snapping may have moved), and no two of its edges may cross.
TEST(Arrangement, RandomTanglesOnCoarseGridsComeOutClean) {
    std::mt19937 random(7);
    for (int round = 0; round < 1500; ++round) {
        const int extent = round % 3 == 0 ? 8 : round % 3 == 1 ? 60 : 4000;
        std::vector<Loop> loops(random() % 3 + 1);
        for (Loop& loop : loops) {
            const std::size_t corners = random() % 20 + 2;
            while (loop.size() < corners) {
                const GridPoint p = {static_cast<std::int32_t>(random() % static_cast<unsigned>(extent)),
                                     static_cast<std::int32_t>(random() % static_cast<unsigned>(extent))};
                if (loop.empty() || (p != loop.back() && p != loop.front())) loop.push_back(p);
            }
        }
        const std::vector<GridSegment> segments = Segments(loops);
        const WindingRule rule = round % 2 == 0 ? kPositive : kNonZero;
        const Boundary boundary = FindBoundary(segments, rule);

        std::vector<Loop> out;
        std::size_t begin = 0;
        for (const std::size_t end : boundary.loop_ends) {
            Loop& loop = out.emplace_back();
            for (; begin < end; ++begin) loop.push_back(boundary.edges[begin].from);
        }
        const std::vector<GridSegment> edges = Segments(out);
        const SegmentField result = FieldOf(edges), source = FieldOf(segments);
        std::uniform_real_distribution<double> anywhere(0, extent);
        for (int probe = 0; probe < 40; ++probe) {
            const double x = anywhere(random);
            const Point p = {x, anywhere(random)};
            const int winding = result.Winding(p);
            ASSERT_TRUE(winding == 0 || winding == 1) << "round " << round;
            if (source.NearestDistance(p) < 1.5) continue;
            ASSERT_EQ(winding == 1, rule == kPositive ? source.Winding(p) > 0 : source.Winding(p) != 0)
                << "round " << round << " at " << p.x << ", " << p.y;
        }
        for (const GridSegment& one : edges) {
            for (const GridSegment& other : edges) ASSERT_FALSE(Cross(one, other)) << "round " << round;
        }
    }
}

/// A loop of lines through the points, but for the piece after the first point, which is `curve` where there is one.
std::vector<bool> LonePiecesOf(const std::vector<Point>& corners, std::optional<Cubic> curve = std::nullopt) {
    Outline outline;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        outline.pieces.push_back(StraightPiece(corners[i], corners[(i + 1) % corners.size()]));
    }
    if (curve) outline.pieces.front() = {*curve, false};
    outline.CloseLoop();
    std::vector<bool> is_lone(outline.pieces.size());
    for (const Arc& arc : CutIntoArcs(ChainOf(outline), 1e3)) is_lone[arc.piece] = arc.lone;
    return is_lone;
}

TEST(LoneArcs, NeitherCrossThemselvesNorComeNearOthersNorTurnBackAtTheirEnds) {
    using Lone = std::vector<bool>;
    const Point a{0, 0}, b{100, 0}, c{100, 90}, d{0, 90};
    EXPECT_EQ(LonePiecesOf({a, b, c, d}), Lone({true, true, true, true}));
    EXPECT_EQ(LonePiecesOf({a, b, {0, 9}}), Lone({false, false, true})) << "a sharp tip";
    EXPECT_EQ(LonePiecesOf({b, {100, 60}, {180, 120}, {180, 160}, {-50, 160}, {-50, 0}}, Cubic{b, {80, 0}, {60, 30}, {100, 60}}),
              Lone({false, true, true, true, true, false}))
        << "a turn right back";
    EXPECT_EQ(LonePiecesOf({a, b, c, {60, 90}, {50, 0}, {40, 90}, d}), Lone({false, true, true, false, false, true, true}))
        << "a corner on a side";
    EXPECT_EQ(LonePiecesOf({a, b, c, d}, Cubic{a, {30, 20}, {70, 20}, b}), Lone({true, true, true, true})) << "a bow";
    EXPECT_EQ(LonePiecesOf({a, b, {200, 0}, {200, -90}, {-90, -90}, {-90, 0}}, Cubic{a, {90, 40}, {10, 40}, b}),
              Lone({false, true, true, true, true, true}))
        << "a turn back on the way";
    // The curve leaves the last side where that ends, straight on, and comes back through it.
    EXPECT_EQ(LonePiecesOf({a, {-60, 40}, {-60, 90}, d}, Cubic{a, {0, -30}, {40, 40}, {-60, 40}}),
              Lone({false, true, true, false}))
        << "a crossing beside a corner";
}

}  // namespace
}  // namespace refhost
