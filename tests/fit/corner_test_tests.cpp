#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <vector>

#include "base/errors.h"
#include "fit/bezier.h"
#include "fit/corner_test.h"
#include "tests/support/pixel_outlines.h"

namespace {

constexpr std::int32_t kHalfWidth = 16;

CFSegment ChainOf(std::int32_t count, std::int32_t type, const std::function<CFPoint(float)>& at) {
    CFSegment segment(count, kSpacingUnitSteps, type);
    for (std::int32_t i = 0; i < count; ++i) segment.SetPoint(i, at(static_cast<float>(i)));
    return segment;
}

/// Runs right for 20 points, then down.
CFPoint RightAngle(float i) { return i <= 20.0F ? CFPoint{i, 0} : CFPoint{20, i - 20.0F}; }

CFSegment Square(int side) { return support::ChainOf(support::Square(side), kSpacingUnitSteps, kChainClosed); }

struct Found {
    std::int32_t type, index;
    friend bool operator==(const Found&, const Found&) = default;
};

class Fixture {
 public:
    explicit Fixture(const CFSegment& chain)
        : segment(&chain), ranking(chain.Count()), window(chain, WholeBound(chain)), set(chain, ranking) {}

    std::vector<Found> Anchors() const {
        std::vector<Found> found;
        for (const CFAnchor* anchor : *set.anchors) found.push_back({anchor->type, anchor->index});
        return found;
    }
    std::vector<Found> All(const CFCornerTest& test) {
        set = CFAnchorSet(*segment, ranking);
        test.TestAll(window, set);
        return Anchors();
    }
    std::vector<Found> Candidates(const CFCornerTest& test, const std::vector<std::int32_t>& candidates) {
        set = CFAnchorSet(*segment, ranking);
        test.TestCandidates(window, candidates, set);
        return Anchors();
    }
    /// The suppression and the end anchors alone, after corners of the given values.
    std::vector<Found> After(const std::vector<CFAnchor>& corners) {
        set = CFAnchorSet(*segment, ranking);
        for (const CFAnchor& corner : corners) set.Append(corner);
        CFLinTest(40.0F, kHalfWidth).TestCandidates(window, {}, set);
        return Anchors();
    }

    const CFSegment* segment;
    CFRanking ranking;
    CFWindow window;
    CFAnchorSet set;
};

using Anchors = std::vector<Found>;

TEST(CornerTest, RefusesWhatItCannotTest) {
    EXPECT_THROW(CFLinTest(40.0F, 0), int);
    const CFSegment line = ChainOf(30, kChainOpen, [](float i) { return CFPoint{i, 0}; });
    Fixture fixture(line);
    const CFLinTest linear(40.0F, kHalfWidth);
    const CFQuadTest quadratic(40.0F, kHalfWidth);
    EXPECT_THROW(fixture.Candidates(linear, {30}), int);
    EXPECT_THROW(fixture.Candidates(linear, {-1}), int);
    EXPECT_THROW(fixture.Candidates(quadratic, {30}), int);
    // Candidates are numbered from the window's start: other windows than those from point 0 are refused.
    const CFSegment loop = Square(20);
    const CFWindow shifted(loop, ts::make_auto<CFClosedBound>(loop, 5));
    CFAnchorSet set(loop, fixture.ranking);
    const std::vector<std::int32_t> candidates{7};
    EXPECT_THROW(quadratic.TestCandidates(shifted, candidates, set), int);
    set.anchors = {};
    EXPECT_THROW(linear.TestAll(shifted, set), int);
}

TEST(CornerTest, ClosedWindowsOverAllPointsOfAShiftedLoop) {
    const CFSegment loop = Square(20);
    const CFRanking ranking(loop.Count());
    const CFWindow shifted(loop, ts::make_auto<CFClosedBound>(loop, 5));
    CFAnchorSet set(loop, ranking);
    CFLinTest(80.0F, kHalfWidth).TestAll(shifted, set);  // numbers from the window's start
    std::vector<std::int32_t> indices;
    for (const CFAnchor* anchor : *set.anchors) indices.push_back(anchor->index);
    EXPECT_EQ(indices, (std::vector<std::int32_t>{15, 35, 55, 75}));
}

TEST(LinTest, LooksAsFarAsBothEndsOfAnOpenChain) {
    const CFSegment corner = ChainOf(3, kChainOpen, [](float i) { return i < 2 ? CFPoint{i, 0} : CFPoint{1, 1}; });
    EXPECT_EQ(Fixture(corner).All(CFLinTest(80.0F, kHalfWidth)), (Anchors{{1, 0}, {1, 1}, {1, 2}}));
}

TEST(LinTest, StraightRunsHaveNoCorner) {
    const CFSegment line = ChainOf(40, kChainOpen, [](float i) { return CFPoint{3 * i, 4 * i}; });
    const CFSegment same(10, kSpacingUnitSteps, kChainOpen);
    for (const float angle : {0.0F, 1.0F, 40.0F}) {
        EXPECT_EQ(Fixture(line).All(CFLinTest(angle, kHalfWidth)), (Anchors{{1, 0}, {1, 39}}));
        EXPECT_EQ(Fixture(same).All(CFLinTest(angle, kHalfWidth)), (Anchors{{1, 0}, {1, 9}}));
        EXPECT_EQ(Fixture(line).All(CFQuadTest(angle, kHalfWidth)), (Anchors{{1, 0}, {1, 39}}));
    }
}

TEST(LinTest, ARightAngleIsACornerBelowNinetyDegrees) {
    const CFSegment turn = ChainOf(41, kChainOpen, RightAngle);
    EXPECT_EQ(Fixture(turn).All(CFLinTest(80.0F, kHalfWidth)), (Anchors{{1, 0}, {1, 20}, {1, 40}}));
    EXPECT_EQ(Fixture(turn).All(CFLinTest(90.0F, kHalfWidth)), (Anchors{{1, 0}, {1, 40}}));
    EXPECT_EQ(Fixture(turn).All(CFLinTest(100.0F, kHalfWidth)), (Anchors{{1, 0}, {1, 40}}));
    EXPECT_EQ(Fixture(turn).Candidates(CFLinTest(40.0F, kHalfWidth), {10, 20}), (Anchors{{1, 0}, {1, 20}, {1, 40}}));
    EXPECT_EQ(Fixture(turn).Candidates(CFLinTest(40.0F, kHalfWidth), {10, 30}), (Anchors{{1, 0}, {1, 40}}));

    // One point from the corner: 16 unit vectors back and 15 bent ones forward, by hand for a half-width of 2.
    Fixture near(turn);
    near.Candidates(CFLinTest(5.0F, 2), {19});
    // Back 2 (1, 0); forward (-1, 0) and (-1, -1) / sqrt 2.
    const double x = -1.0 - std::sqrt(0.5), y = -std::sqrt(0.5);
    ASSERT_EQ(near.Anchors(), (Anchors{{1, 0}, {1, 19}, {1, 40}}));
    EXPECT_NEAR((*std::next(near.set.anchors->begin()))->value, x / std::hypot(x, y), 1e-6);

    EXPECT_EQ(Fixture(Square(30)).All(CFLinTest(80.0F, kHalfWidth)), (Anchors{{1, 0}, {1, 30}, {1, 60}, {1, 90}}));
}

TEST(QuadTest, ComparesTheTangentsOnBothSides) {
    const CFSegment turn = ChainOf(41, kChainOpen, RightAngle), loop = Square(30);
    EXPECT_EQ(Fixture(turn).All(CFQuadTest(85.0F, kHalfWidth)), (Anchors{{1, 0}, {1, 20}, {1, 40}}));
    EXPECT_EQ(Fixture(turn).All(CFQuadTest(95.0F, kHalfWidth)).size(), Fixture(turn).All(CFQuadTest(179.0F, kHalfWidth)).size());
    EXPECT_EQ(Fixture(loop).Candidates(CFQuadTest(85.0F, kHalfWidth), {0, 30, 45, 60, 90}),
              (Anchors{{1, 0}, {1, 30}, {1, 60}, {1, 90}}));

    // Two quadratics that meet at 60 degrees: their own tangents count, not the chords, which meet at far less.
    const CFBezier2 left({-16, 20}, {-16, 0}, {0, 0});
    const float cosine = 0.5F, sine = std::sqrt(0.75F);
    const CFBezier2 right({0, 0}, {10 * cosine, 10 * sine}, {30, 0});
    const CFSegment pair =
        ChainOf(33, kChainOpen, [&](float i) { return i <= 16.0F ? left.At(i / 16.0F) : right.At((i - 16.0F) / 16.0F); });
    Fixture fixture(pair);
    EXPECT_EQ(fixture.Candidates(CFQuadTest(59.0F, kHalfWidth), {16}), (Anchors{{1, 0}, {1, 16}, {1, 32}}));
    EXPECT_NEAR((*std::next(fixture.set.anchors->begin()))->value, -0.5F, 1e-4F);
    EXPECT_EQ(fixture.Candidates(CFQuadTest(61.0F, kHalfWidth), {16}), (Anchors{{1, 0}, {1, 32}}));
}

TEST(QuadTest, ATangentBothOfWhoseComponentsAreNextToNothingHasNoDirection) {
    for (const float step : {5e-8F, 7e-8F}) {  // tangents of (8e-7, 8e-7), which are 1.1e-6 long, and of (1.1e-6, 1.1e-6)
        const CFSegment peak = ChainOf(33, kChainOpen, [&](float i) {
            return CFPoint{step * i, step * (i < 16.0F ? i : 32.0F - i)};
        });
        const bool has_corner = step > 6e-8F;
        EXPECT_EQ(Fixture(peak).Candidates(CFQuadTest(60.0F, kHalfWidth), {16}),
                  has_corner ? (Anchors{{1, 0}, {1, 16}, {1, 32}}) : (Anchors{{1, 0}, {1, 32}}));
    }
}

TEST(CornerTest, NeighboursAreReducedToTheStrongest) {
    const CFSegment line = ChainOf(100, kChainOpen, [](float i) { return CFPoint{i, 0}; });
    const CFSegment loop(100, kSpacingUnitSteps, kChainClosed);
    const auto corner = [](std::int32_t index, float value) { return CFAnchor{1, index, value}; };
    Fixture open(line), closed(loop);
    EXPECT_EQ(open.After({corner(7, 0.1F), corner(8, 0.5F), corner(9, 0.5F)}), (Anchors{{1, 0}, {1, 8}, {1, 99}}));
    EXPECT_EQ(open.After({corner(7, 0.5F), corner(8, 0.5F)}), (Anchors{{1, 0}, {1, 8}, {1, 99}}));
    // Cosines 6e-7 apart are the same, cosines 2e-6 apart are not.
    EXPECT_EQ(open.After({corner(7, 0.5000006F), corner(8, 0.5F), corner(9, 0.5000006F)}), (Anchors{{1, 0}, {1, 8}, {1, 99}}));
    EXPECT_EQ(open.After({corner(7, 0.500002F), corner(8, 0.5F), corner(9, 0.5F)}), (Anchors{{1, 0}, {1, 7}, {1, 99}}));
    EXPECT_EQ(open.After({corner(7, 0.5F), corner(8, 0.5F), corner(9, 0.500002F)}), (Anchors{{1, 0}, {1, 9}, {1, 99}}));
    EXPECT_EQ(open.After({corner(7, 0.6F), corner(8, 0.5F), corner(9, 0.7F)}), (Anchors{{1, 0}, {1, 9}, {1, 99}}));
    EXPECT_EQ(open.After({corner(0, 0.6F), corner(1, 0.5F), corner(3, 0.7F), corner(99, 0.1F)}),
              (Anchors{{1, 0}, {1, 3}, {1, 99}}));
    for (const CFAnchor* anchor : *open.set.anchors) EXPECT_EQ(anchor->value, 0.0F);

    EXPECT_EQ(closed.After({corner(0, 0.1F), corner(1, 0.5F), corner(99, 0.9F)}), (Anchors{{1, 1}}));
    EXPECT_EQ(closed.After({corner(1, 0.5F), corner(99, 0.9F)}), (Anchors{{1, 1}, {1, 99}}));
    EXPECT_EQ(closed.After({}), (Anchors{{0, 0}}));
    EXPECT_EQ(open.After({}), (Anchors{{1, 0}, {1, 99}}));

    // A loop of corners alone is one run across its own start, which leaves the loop without any.
    EXPECT_EQ(Fixture(Square(1)).All(CFLinTest(40.0F, kHalfWidth)), (Anchors{{0, 0}}));
}

}  // namespace
