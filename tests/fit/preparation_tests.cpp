#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "base/errors.h"
#include "fit/outline_preparation.h"
#include "tests/support/pixel_outlines.h"
#include "tests/support/thrown_int.h"

namespace {

CFSegment ClosedChain(const support::LatticeLine& points) { return support::ChainOf(points, kSpacingUnitSteps, kChainClosed); }

support::Bits Rows(const std::vector<std::string>& rows) {
    support::Bits bits(static_cast<int>(rows[0].size()), static_cast<int>(rows.size()));
    for (int y = 0; y < bits.height; ++y) {
        for (int x = 0; x < bits.width; ++x) {
            if (rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] == '#') bits.Set(x, y);
        }
    }
    return bits;
}

/// The outline turned in its list to start at `start`, which must be one of its points.
support::LatticeLine StartingAt(support::LatticeLine points, CFPoint start) {
    std::rotate(points.begin(), std::find(points.begin(), points.end(), start), points.end());
    return points;
}

CFPreparedChain Prepare(const CFSegment& outline) {
    CFPreparedChain prepared;
    const CFOutlineEdge edge{&outline, false, &prepared};
    CFOutlinePreparer().Prepare({&edge, 1});
    return prepared;
}

bool IsRefused(const auto& call) { return ThrownInt(call) == kBrokenInvariant; }

void ExpectPoint(CFPoint point, double x, double y) {
    EXPECT_NEAR(point.x, x, 1e-6);
    EXPECT_NEAR(point.y, y, 1e-6);
}

TEST(MappedSegment, HoldsEachPixelOfTheWalkOnce) {
    const CFSegment single = ClosedChain({{0, 0}, {1, 0}, {1, 1}, {0, 1}});
    const CFMappedSegment one(single);
    ASSERT_EQ(one.Count(), 1);
    EXPECT_EQ(one.Point(0), (CFPoint{0.5F, 0.5F}));
    EXPECT_EQ(one.Tag(), 1);
    EXPECT_EQ(one.Mapping().Creator(0), 0);

    // Two pixels square: the last step runs along the first one's pixel, which then counts as met there.
    const CFSegment square = ClosedChain({{0, 0}, {1, 0}, {2, 0}, {2, 1}, {2, 2}, {1, 2}, {0, 2}, {0, 1}});
    const CFMappedSegment four(square);
    ASSERT_EQ(four.Count(), 4);
    const CFPoint points[] = {{0.5F, 0.5F}, {1.5F, 0.5F}, {1.5F, 1.5F}, {0.5F, 1.5F}};
    const std::int32_t centres[] = {0, 1, 1, 2, 2, 3, 3, 0}, creators[] = {7, 1, 3, 5};
    for (std::int32_t i = 0; i < 4; ++i) EXPECT_EQ(four.Point(i), points[i]);
    for (std::int32_t k = 0; k < 8; ++k) EXPECT_EQ(four.Mapping().Centre(k), centres[k]);
    for (std::int32_t i = 0; i < 4; ++i) EXPECT_EQ(four.Mapping().Creator(i), creators[i]);

    EXPECT_TRUE(IsRefused([&] { CFMappedSegment(CFSegment(4, kSpacingGeneral, kChainClosed)); }));
    EXPECT_TRUE(IsRefused([&] { CFMappedSegment(CFSegment(4, kSpacingUnitSteps, kChainOpen)); }));
}

TEST(DerivedChain, OfASquareWorkedByHand) {
    // Runs: three level centres, two upright, two level, and the last one beside neither.
    const auto outlines = support::OutlinesOf(Rows({"###", "###", "###"}));
    const CFPreparedChain prepared = Prepare(ClosedChain(StartingAt(outlines.at(0), {0, 0})));
    const CFSegment& derived = *prepared.derived;
    ASSERT_EQ(derived.Count(), 12);
    EXPECT_EQ(derived.Kind(), kSpacingDerived);
    EXPECT_TRUE(derived.IsClosed());
    ExpectPoint(derived.Point(1), 0.5 + 2.0 * 7.0 / 17.0, 1.5 - 0.5 * 7.0 / 17.0);  // line (0.5, 1.5) to (2.5, 1)
    ExpectPoint(derived.Point(3), 2.5, 1.0);
    ExpectPoint(derived.Point(4), 2.5, 1.0);
    ExpectPoint(derived.Point(5), 2.25, 1.75);                          // line (2.5, 1) to (2, 2.5)
    ExpectPoint(derived.Point(8), 2.0 - 6.0 / 13.0, 2.5 - 4.0 / 13.0);  // line (2, 2.5) to (0.5, 1.5)
    ExpectPoint(derived.Point(10), 0.0, 2.0);
    EXPECT_EQ(derived.Point(11), derived.Point(0));
}

TEST(DerivedChain, StraightensLevelsAndLeavesDiagonals) {
    // Two levels one pixel apart, from the lower right corner on: the middle (4, 1) of the step joins their lines.
    const auto step = support::OutlinesOf(Rows({"....####", "########", "########", "########"}));
    const support::LatticeLine line = StartingAt(step.at(0), {8, 4});
    const CFPreparedChain levels = Prepare(ClosedChain(line));
    const auto moved = [&](CFPoint raw) {
        const auto k = std::find(line.begin(), line.end(), raw) - line.begin();
        return levels.derived->Point(static_cast<std::int32_t>(k));
    };
    ExpectPoint(moved({2, 1}), 1.0 + 3.0 * 13.0 / 37.0, 1.5 - 0.5 * 13.0 / 37.0);  // line (1, 1.5) to (4, 1)
    ExpectPoint(moved({4, 1}), 4.0, 1.0);
    ExpectPoint(moved({4, 0}), 4.0, 1.0);
    ExpectPoint(moved({6, 0}), 6.0, 1.0);  // line (4, 1) to (7.5, 1)
    // Steps of one pixel down and one aside are no lines: all points of the long side stay.
    std::vector<std::string> rows;
    for (std::size_t y = 1; y <= 12; ++y) rows.push_back(std::string(y, '#') + std::string(12 - y, '.'));
    const auto triangle = support::OutlinesOf(Rows(rows));
    const CFSegment outline = ClosedChain(StartingAt(triangle.at(0), {0, 0}));
    const CFPreparedChain prepared = Prepare(outline);
    for (std::int32_t k = 2; k < 20; ++k) EXPECT_EQ(prepared.derived->Point(k), outline.Point(k)) << k;

    // On a disc nothing moves by more than a pixel, and the rim comes out smoother than the steps.
    const CFSegment disc = ClosedChain(support::Disc(40.0));
    const CFPreparedChain round = Prepare(disc);
    double length = 0.0;
    for (std::int32_t k = 0; k < disc.Count(); ++k) {
        const CFPoint shift = round.derived->Point(k) - disc.Point(k);
        const CFPoint side = round.derived->Point(k + 1) - round.derived->Point(k);
        EXPECT_LE(std::hypot(shift.x, shift.y), 1.2F) << k;
        length += std::hypot(static_cast<double>(side.x), static_cast<double>(side.y));
    }
    EXPECT_LT(length, 0.92 * disc.Count());  // the steps
    EXPECT_GT(length, 2.0 * 3.14 * 39.0);
}

/// The outline cut into open chains at `cuts` (increasing, from 0), every second one stored against the walk.
std::vector<CFSegment> CutAt(const support::LatticeLine& outline, const std::vector<std::size_t>& cuts) {
    std::vector<CFSegment> chains;
    for (std::size_t i = 0; i < cuts.size(); ++i) {
        const std::size_t end = i + 1 < cuts.size() ? cuts[i + 1] : outline.size();
        support::LatticeLine points;
        for (std::size_t k = cuts[i]; k <= end; ++k) points.push_back(outline[k % outline.size()]);
        if (i % 2 == 1) std::reverse(points.begin(), points.end());
        chains.push_back(support::ChainOf(points, kSpacingUnitSteps, kChainOpen));
    }
    return chains;
}

std::vector<CFOutlineEdge> EdgesOf(const std::vector<CFSegment>& chains, std::vector<CFPreparedChain>& slots) {
    slots.resize(chains.size());
    std::vector<CFOutlineEdge> edges;
    for (std::size_t i = 0; i < chains.size(); ++i) edges.push_back({&chains[i], i % 2 == 1, &slots[i]});
    return edges;
}

TEST(OutlinePreparer, ChainsOfAnOutlineGetTheirPartOfIt) {
    std::mt19937 random(7);
    CFOutlinePreparer preparer;
    for (int round = 0; round < 60; ++round) {
        const support::LatticeLine outline = support::SmoothOutline(40 + round, static_cast<std::uint32_t>(round));
        std::vector<std::size_t> cuts{0};
        for (std::size_t k = 1; k < outline.size(); ++k) {
            if (random() % 16 < static_cast<unsigned>(round % 4)) cuts.push_back(k);
        }
        const CFPreparedChain whole = Prepare(ClosedChain(outline));
        const std::vector<CFSegment> chains = CutAt(outline, cuts);
        std::vector<CFPreparedChain> slots;
        preparer.Prepare(EdgesOf(chains, slots));
        for (std::size_t i = 0; i < chains.size(); ++i) {
            const std::int32_t count = chains[i].Count();
            ASSERT_EQ(slots[i].derived->Count(), count);
            ASSERT_EQ(slots[i].ranking->Count(), count);
            EXPECT_EQ(slots[i].derived->Kind(), kSpacingDerived);
            EXPECT_FALSE(slots[i].derived->IsClosed());
            for (std::int32_t j = 0; j < count; ++j) {
                const std::int32_t on_walk = i % 2 == 1 ? count - 1 - j : j;
                const std::size_t k = (cuts[i] + static_cast<std::size_t>(on_walk)) % outline.size();
                ASSERT_EQ(slots[i].derived->Point(j), whole.derived->Point(static_cast<std::int32_t>(k)));
                ASSERT_EQ(slots[i].ranking->values[static_cast<std::size_t>(j)], whole.ranking->values[k]);
            }
        }
    }
}

TEST(OutlinePreparer, KeepsWhatIsThere) {
    const support::LatticeLine outline = support::SmoothOutline(60, 1);
    const std::vector<CFSegment> chains = CutAt(outline, {0, 10, 30});
    std::vector<CFPreparedChain> slots;
    const auto edges = EdgesOf(chains, slots);
    slots[1].derived = ts::make_auto<CFSegment>(5, kSpacingDerived, kChainOpen);
    const CFSegment* kept = slots[1].derived.get();
    CFOutlinePreparer preparer;
    preparer.Prepare(edges);
    EXPECT_EQ(slots[1].derived.get(), kept);
    EXPECT_EQ(slots[1].ranking->Count(), 21);
    const CFRanking* ranking = slots[0].ranking.get();
    preparer.Prepare(edges);
    EXPECT_EQ(slots[0].ranking.get(), ranking);
}

TEST(OutlinePreparer, RefusesChainsThatDoNotMakeAnOutline) {
    const support::LatticeLine outline = support::SmoothOutline(60, 1);
    const std::vector<CFSegment> good = CutAt(outline, {0, 10, 30});
    const auto is_refused = [](const std::vector<CFSegment>& chains) {
        std::vector<CFPreparedChain> slots;
        const auto edges = EdgesOf(chains, slots);
        return IsRefused([&] { CFOutlinePreparer().Prepare(edges); });
    };
    EXPECT_FALSE(is_refused(good));
    EXPECT_TRUE(is_refused({}));
    EXPECT_TRUE(is_refused({good[0], good[1]}));
    EXPECT_TRUE(is_refused({good[0], good[2], good[1]}));
    EXPECT_TRUE(is_refused({good[0], CFSegment(1, kSpacingUnitSteps, kChainOpen), good[1], good[2]}));
    EXPECT_TRUE(is_refused({ClosedChain(outline), ClosedChain(outline)}));
    EXPECT_TRUE(is_refused({support::ChainOf(outline, kSpacingGeneral, kChainClosed)}));
    EXPECT_TRUE(is_refused({good[0]}));
}

/// What holds for the preparation of every outline of the bitmap.
void CheckOutlines(const support::Bits& bits, CFOutlinePreparer& preparer) {
    for (const support::LatticeLine& line : support::OutlinesOf(bits)) {
        const CFSegment outline = ClosedChain(line);
        CFPreparedChain prepared;
        const CFOutlineEdge edge{&outline, false, &prepared};
        ASSERT_NO_THROW(preparer.Prepare({&edge, 1}));
        const CFMappedSegment centres(outline);
        for (std::int32_t k = 0; k < outline.Count(); ++k) {
            const CFPoint centre = centres.Point(centres.Mapping().Centre(k)),
                          middle = (outline.Point(k) + outline.Point(k + 1)) * 0.5F;
            ASSERT_TRUE(bits.At(static_cast<int>(centre.x), static_cast<int>(centre.y)));
            ASSERT_EQ(std::abs(centre.x - middle.x) + std::abs(centre.y - middle.y), 0.5F);
            const CFPoint derived = prepared.derived->Point(k);
            ASSERT_TRUE(std::isfinite(derived.x) && std::isfinite(derived.y));
            const float score = prepared.ranking->values[static_cast<std::size_t>(k)];
            ASSERT_TRUE(std::isfinite(score) && (score == 0.0F || score >= 0.1F)) << score;
        }
        for (std::int32_t i = 0; i < centres.Count(); ++i) ASSERT_EQ(centres.Mapping().Centre(centres.Mapping().Creator(i)), i);
        if (centres.Count() < 4) {
            ASSERT_EQ(std::count(prepared.ranking->values.begin(), prepared.ranking->values.end(), 0.0F), outline.Count());
        }
    }
}

TEST(OutlinePreparer, TakesEveryOutlineOfSmallBitmaps) {
    CFOutlinePreparer preparer;
    for (unsigned pattern = 0; pattern < (1U << 12U); ++pattern) {
        support::Bits bits(3, 4);
        for (unsigned i = 0; i < 12; ++i) {
            if ((pattern >> i & 1U) != 0) bits.Set(static_cast<int>(i % 3), static_cast<int>(i / 3));
        }
        CheckOutlines(bits, preparer);
    }
    std::mt19937 random(11);
    for (int round = 0; round < 300; ++round) {
        support::Bits bits(1 + static_cast<int>(random() % 30), 1 + static_cast<int>(random() % 30));
        const auto density = 20 + random() % 75;
        for (int i = 0; i < bits.width * bits.height; ++i) {
            if (random() % 100 < density) bits.Set(i % bits.width, i / bits.width);
        }
        CheckOutlines(bits, preparer);
    }
}

}  // namespace
