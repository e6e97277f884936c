#include <gmock/gmock.h>

#include "base/errors.h"
#include "fit/path.h"
#include "fit/spline_result.h"
#include "tests/support/pixel_outlines.h"

namespace {

using support::ChainOf;
using testing::ElementsAre;

constexpr bool kSmooth = false, kCorner = true;

const CFSegment& Loop() {
    static const CFSegment chain = ChainOf(support::Disc(6), kSpacingUnitSteps, kChainClosed);
    return chain;
}

/// A curve from point `start` of the loop to point `end` of it (all round when they are the same), with handles one to the
/// right of its start and one above its end.
ts::auto_ptr<CFResult> Piece(std::int32_t start, std::int32_t end, bool start_corner = kSmooth, bool end_corner = kSmooth) {
    ts::auto_ptr<CFBound> bound;
    if (start == end) {
        bound = ts::make_auto<CFClosedBound>(Loop(), start);
    } else {
        bound = ts::make_auto<CFOpenBound>(Loop(), start, end);
    }
    const CFPoint a = Loop().Point(start), b = Loop().Point(end);
    auto view =
        ts::make_auto<CF1CurveView>(ts::make_auto<CFWindow>(Loop(), std::move(bound)), CFTangentConstraint(!start_corner, {1, 0}),
                                    CFTangentConstraint(!end_corner, {1, 0}), ts::make_auto<CFMidpointRule>());
    return ts::make_auto<CFResult>(CFBezier3(a, a + CFPoint{1, 0}, b + CFPoint{0, -1}, b), std::move(view));
}

std::vector<std::int32_t> Junctions(const CFSplineResult& result) {
    std::vector<std::int32_t> indices;
    for (const CFLocation* location : result.Locations()) indices.push_back(location->index);
    return indices;
}

/// Every curve must be that before the junction after the one it starts at, and fit its indices.
void ExpectLinked(CFSplineResult& result) {
    for (auto location = result.begin(); location != result.end(); ++location) {
        if (!(*location)->after) {
            EXPECT_EQ(std::next(location), result.end()) << "only the last end of an open chain";
            continue;
        }
        const auto next = std::next(location) == result.end() ? result.begin() : std::next(location);
        EXPECT_EQ((*next)->before, (*location)->after.get());
        EXPECT_EQ((*location)->after->StartIndex(), (*location)->index);
        EXPECT_EQ((*location)->after->EndIndex(), (*next)->index);
    }
}

void AddAll(CFSplineResult& result, const std::vector<std::int32_t>& indices) {
    for (std::size_t i = 1; i < indices.size(); ++i) result.Add(Piece(indices[i - 1], indices[i]));
}

TEST(SplineResult, LinksOpenAndClosedChains) {
    CFSplineResult open;
    open.Add(Piece(0, 5, kCorner, kSmooth));
    open.Add(Piece(5, 9));
    open.Add(Piece(9, 12, kSmooth, kCorner));
    EXPECT_THAT(Junctions(open), ElementsAre(0, 5, 9, 12));
    EXPECT_FALSE(open.IsClosed());
    ExpectLinked(open);
    const CFPoint p0 = Loop().Point(0), p5 = Loop().Point(5), p12 = Loop().Point(12);
    const RPPath path(open);
    ASSERT_EQ(path.anchors.size(), 4U);
    EXPECT_FALSE(path.closed);
    EXPECT_EQ(path.anchors[0], (RPAnchor{p0, p0, p0 + CFPoint{1, 0}, true}));
    EXPECT_EQ(path.anchors[1], (RPAnchor{p5, p5 + CFPoint{0, -1}, p5 + CFPoint{1, 0}, false}));
    EXPECT_EQ(path.anchors[3], (RPAnchor{p12, p12 + CFPoint{0, -1}, p12, true}));

    CFSplineResult closed;
    AddAll(closed, {8, 20, 3, 8});  // across the chain's last point
    EXPECT_THAT(Junctions(closed), ElementsAre(8, 20, 3));
    EXPECT_TRUE(closed.IsClosed());
    ExpectLinked(closed);
    EXPECT_TRUE(RPPath(closed).closed);

    CFSplineResult loop;
    loop.Add(Piece(4, 4));
    EXPECT_THAT(Junctions(loop), ElementsAre(4));
    ExpectLinked(loop);
    const CFPoint p4 = Loop().Point(4);
    EXPECT_EQ(RPPath(loop).anchors, CFPoolVector<RPAnchor>({{p4, p4 + CFPoint{0, -1}, p4 + CFPoint{1, 0}, false}}));
}

TEST(SplineResult, RefusesCurvesThatDoNotConnect) {
    CFSplineResult result;
    EXPECT_THROW(result.Add(Piece(4, 4, kCorner, kSmooth)), int) << "a seam is a corner or it is not";
    result.Add(Piece(0, 5));
    EXPECT_THROW(result.Add(Piece(6, 9)), int);
    EXPECT_THROW(result.Add(Piece(5, 9, kCorner)), int) << "a corner on one side only";
    EXPECT_THROW(result.Add(Piece(4, 4)), int) << "a loop in a chain";
    EXPECT_THROW(result.Add({}), int);
    EXPECT_THAT(Junctions(result), ElementsAre(0, 5)) << "nothing has changed";
    result.Add(Piece(5, 0));
    EXPECT_THROW(result.Add(Piece(0, 5)), int) << "closed already";
    ExpectLinked(result);
}

TEST(SplineResult, ReplacesTheCurvesRoundAJunction) {
    CFSplineResult open;
    AddAll(open, {0, 5, 9, 12});
    const auto following = open.Replace(std::next(open.begin()), Piece(0, 9));
    EXPECT_EQ((*following)->index, 9);
    EXPECT_THAT(Junctions(open), ElementsAre(0, 9, 12));
    ExpectLinked(open);
    EXPECT_THROW(open.Replace(open.begin(), Piece(0, 9)), int);
    EXPECT_THROW(open.Replace(std::prev(open.end()), Piece(0, 9)), int);
    open.Replace(following, Piece(0, 12));
    EXPECT_THROW(open.Replace(std::next(open.begin()), Piece(0, 9)), int) << "a single curve is left";

    CFSplineResult closed;
    AddAll(closed, {8, 20, 3, 8});
    EXPECT_EQ(closed.Replace(std::prev(closed.end()), Piece(20, 8)), closed.end()) << "it does not go round";
    ExpectLinked(closed);
    EXPECT_EQ((*closed.Replace(closed.begin(), Piece(20, 20)))->index, 20) << "the seam itself";
    EXPECT_THAT(Junctions(closed), ElementsAre(20));
    ExpectLinked(closed);
    EXPECT_THROW(closed.Replace(closed.begin(), Piece(20, 20)), int);
}

// --- Paths ---

RPPath PathOf(CFPoolVector<RPAnchor> anchors) {
    RPPath path;
    path.anchors = std::move(anchors);
    return path;
}

const RPAnchor kA = {{0, 0}, {0, 0}, {1, 1}, true}, kB = {{5, 5}, {4, 4}, {5, 5}, false};
const RPAnchor kB2 = {{5, 5}, {5, 5}, {6, 6}, true}, kC = {{9, 9}, {8, 8}, {9, 9}, true};

TEST(Path, AppendJoinsAtTheSharedAnchor) {
    RPPath path = PathOf({kA, kB});
    path.Append(PathOf({kB2, kC}), true);
    EXPECT_THAT(path.anchors, ElementsAre(kA, RPAnchor{{5, 5}, {4, 4}, {6, 6}, false}, kC));
    path = PathOf({kA, kB});
    path.Append(PathOf({kB2, kC}), false);
    EXPECT_THAT(path.anchors, ElementsAre(kA, kB, kB2, kC));
    EXPECT_THROW(path.Append({}, true), int);
    EXPECT_THROW(path.AppendReversed({}, true), int);
    path.Append({}, false);
    EXPECT_EQ(path.anchors.size(), 4U);
    RPPath empty;
    empty.Append(PathOf({kA}), true);
    EXPECT_THAT(empty.anchors, ElementsAre(kA)) << "nothing to join to";
}

TEST(Path, AppendReversedWalksBackWithHandlesExchanged) {
    const RPAnchor back_c = {{9, 9}, {9, 9}, {8, 8}, true}, back_b = {{5, 5}, {6, 6}, {5, 5}, true};
    RPPath path;
    path.AppendReversed(PathOf({kB2, kC}), true);
    EXPECT_THAT(path.anchors, ElementsAre(back_c, back_b));
    path = PathOf({kA, {{9, 9}, {7, 7}, {9, 9}, false}});
    path.AppendReversed(PathOf({kB2, kC}), true);
    EXPECT_THAT(path.anchors, ElementsAre(kA, RPAnchor{{9, 9}, {7, 7}, {8, 8}, false}, back_b));
}

TEST(Path, CloseMakesCoincidingEndsOne) {
    const RPAnchor end = {{0, 5e-7F}, {-1, -1}, {0, 0}, false};
    RPPath path = PathOf({kA, kB, end});
    path.Close();
    EXPECT_THAT(path.anchors, ElementsAre(RPAnchor{{0, 0}, {-1, -1}, {1, 1}, true}, kB));
    for (const RPPath& open : {PathOf({kA, kB, {{0.5F, 0}, {0, 0}, {0, 0}, false}}), PathOf({kA}), RPPath()}) {
        RPPath same = open;
        same.Close();
        EXPECT_EQ(same.anchors, open.anchors);
    }
}

}  // namespace
