#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "fit/outline_preparation.h"
#include "fit/path_generator.h"
#include "tests/support/exact_coverage.h"
#include "tests/support/offset_distance.h"
#include "tests/support/outlines.h"
#include "tests/support/pixel_outlines.h"

namespace {

using support::ChainOf;
using support::LatticeLine;

constexpr float kCornerAngle = 72;  // degrees
constexpr std::int32_t kHalfWidth = 16;

/// An outline made ready.
struct Prepared {
    explicit Prepared(const LatticeLine& line, std::int32_t type = kChainClosed) : raw(ChainOf(line, kSpacingUnitSteps, type)) {
        if (type == kChainClosed) {
            const CFOutlineEdge edge{&raw, false, &chain};
            CFOutlinePreparer().Prepare({&edge, 1});
        } else {
            chain.derived = ts::make_auto<CFSegment>(ChainOf(line, kSpacingDerived, type));
            chain.ranking = ts::make_auto<CFRanking>(raw.Count());
        }
    }
    FitInput Input() const { return {raw, *chain.derived, *chain.ranking}; }

    CFSegment raw;
    CFPreparedChain chain;
};

RPPath Fitted(const Prepared& outline, float tolerance, float corner_angle = kCornerAngle) {
    ts::auto_ptr<RPPath> path;
    KVPathGenerator(tolerance, corner_angle, kHalfWidth).FitEdge(outline.Input(), path);
    return *path;
}

/// The largest distance of an outline point to the path.
double Furthest(const LatticeLine& line, const RPPath& path) {
    const auto point = [](CFPoint p) { return refhost::Point{static_cast<double>(p.x), static_cast<double>(p.y)}; };
    refhost::CurveContour contour = {point(path.anchors[0].position), {}};
    for (std::size_t i = 0; i + (path.closed ? 0U : 1U) < path.anchors.size(); ++i) {
        const RPAnchor &a = path.anchors[i], &b = path.anchors[(i + 1) % path.anchors.size()];
        contour.segments.push_back({point(a.out), point(b.in), point(b.position), false});
    }
    const SegmentField curves(Chords({contour}, 0.001));
    double furthest = 0;
    for (const CFPoint p : line) furthest = std::max(furthest, curves.NearestDistance(point(p)));
    return furthest;
}

LatticeLine Spiral() {
    return support::Staircase(
        [](double t) {
            const double angle = 20 * t, r = 10 + 60 * t;
            return CFPoint{static_cast<float>(r * std::cos(angle)), static_cast<float>(r * std::sin(angle))};
        },
        200000, false);
}

/// Steps of random lengths down a slope, and straight back.
LatticeLine Stairs(std::uint32_t seed) {
    std::mt19937 random(seed);
    LatticeLine line = {{0, 0}};
    const auto go = [&](float dx, float dy, std::uint32_t steps) {
        for (; steps > 0; --steps) line.push_back(line.back() + CFPoint{dx, dy});
    };
    for (int i = 0; i < 12; ++i) {
        go(1, 0, 1 + static_cast<std::uint32_t>(random() % 9));
        go(0, 1, 1 + static_cast<std::uint32_t>(random() % 5));
    }
    go(-1, 0, static_cast<std::uint32_t>(line.back().x));
    go(0, -1, static_cast<std::uint32_t>(line.back().y) - 1);
    return line;
}

/// The outlines of the pixels of which half is covered.
std::vector<LatticeLine> PixelsOf(const support::Outline& outline) {
    constexpr std::int32_t kSide = 220;
    support::Bits bits(kSide, kSide);
    const std::vector<double> coverage = support::ExactCoverage(outline.View(), {0, 0, kSide, kSide});
    for (int i = 0; i < kSide * kSide; ++i) {
        if (coverage[static_cast<std::size_t>(i)] >= 127.5) bits.Set(i % kSide, i / kSide);
    }
    return support::OutlinesOf(bits);
}

std::vector<LatticeLine> ClosedOutlines() {
    std::vector<LatticeLine> lines = {{{0, 0}, {1, 0}, {1, 1}, {0, 1}}, {{0, 0}, {1, 0}, {2, 0}, {2, 1}, {1, 1}, {0, 1}}};
    for (std::uint32_t seed = 1; seed <= 12; ++seed) {
        lines.push_back(support::SmoothOutline(30 << seed % 6, seed));
        lines.push_back(Stairs(seed));
        lines.push_back(support::NoisyOutline(12, seed));
    }
    for (const support::Outline& outline :
         {support::Letter(), support::CuspsAndLoops(), support::Star(9, 100, 30).Shifted(110, 110), support::Scribble(12, 200, 3),
          support::Blob(20, 80, 4).Shifted(110, 110)}) {
        for (const LatticeLine& line : PixelsOf(outline)) lines.push_back(line);
    }
    return lines;
}

// Spans of two points, and those cut as deep as they may be, are the only ones that need not be near; none here is that deep.
TEST(PathGenerator, CurvesKeepTheirDistanceToEveryKindOfOutlineFromPointsOfIt) {
    for (const LatticeLine& line : ClosedOutlines()) {
        for (const float tolerance : {0.5F, 1.0F, 2.0F}) {
            SCOPED_TRACE(testing::Message() << line.size() << " points at " << tolerance);
            const RPPath path = Fitted(Prepared(line), tolerance);
            EXPECT_TRUE(path.closed);
            EXPECT_LE(Furthest(line, path), static_cast<double>(tolerance) * 1.001 + 0.001);
            for (const RPAnchor& anchor : path.anchors) EXPECT_NE(std::ranges::find(line, anchor.position), line.end());
        }
    }
}

TEST(PathGenerator, OpenEdgesEndAtCornersAndFitAsWellWalkedBack) {
    std::vector<LatticeLine> lines = {Spiral(), {{4, 4}, {5, 4}}, {{4, 4}, {5, 4}, {5, 5}}};
    for (int length = 150; length <= 650; length += 100) lines.emplace_back(lines[0].begin(), lines[0].begin() + length);
    for (LatticeLine line : lines) {
        std::size_t counts[2];
        for (std::size_t& count : counts) {
            const RPPath path = Fitted(Prepared(line, kChainOpen), 1);
            EXPECT_FALSE(path.closed);
            EXPECT_EQ(path.anchors.front().position, line.front());
            EXPECT_EQ(path.anchors.back().position, line.back());
            EXPECT_TRUE(path.anchors.front().corner && path.anchors.back().corner);
            EXPECT_LE(Furthest(line, path), 1.002);
            count = path.anchors.size();
            std::reverse(line.begin(), line.end());
        }
        EXPECT_NEAR(static_cast<double>(counts[0]), static_cast<double>(counts[1]), 2.0 + 0.3 * static_cast<double>(counts[0]));
    }
}

TEST(PathGenerator, ADiscTakesFewSmoothCurves) {
    const LatticeLine line = support::Disc(50);
    const RPPath path = Fitted(Prepared(line), 1);
    EXPECT_EQ(path.anchors.size(), 7U);
    EXPECT_TRUE(std::none_of(path.anchors.begin(), path.anchors.end(), [](const RPAnchor& a) { return a.corner; }));
    EXPECT_LT(Furthest(line, path), 1.1);
}

TEST(PathGenerator, ASquareKeepsItsFourCornersAtALowAngle) {
    const RPPath path = Fitted(Prepared(support::Square(40)), 1, 45);
    int corners = 0;
    for (const RPAnchor& anchor : path.anchors) {
        if (!anchor.corner) continue;
        ++corners;
        for (const float value : {anchor.position.x, anchor.position.y})
            EXPECT_LE(std::min(value, 40 - value), 2) << "near a corner";
    }
    EXPECT_EQ(corners, 4);
}

TEST(PathGenerator, RefusesWhatDoesNotBelongTogether) {
    const Prepared outline(support::Disc(9)), other(support::Disc(12));
    KVPathGenerator generator(1, kCornerAngle, kHalfWidth);
    ts::auto_ptr<RPPath> path = ts::make_auto<RPPath>();
    const RPPath* const before = path.get();
    EXPECT_THROW(generator.FitEdge({outline.raw, *other.chain.derived, *outline.chain.ranking}, path), int);
    EXPECT_THROW(generator.FitEdge({outline.raw, *outline.chain.derived, *other.chain.ranking}, path), int);
    EXPECT_EQ(path.get(), before) << "a failure changes nothing";
    EXPECT_THROW(KVPathGenerator(1, kCornerAngle, 0), int);
}

}  // namespace
