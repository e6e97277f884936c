#include <gmock/gmock.h>

#include "base/errors.h"
#include "fit/segment.h"
#include "fit/t_vals.h"

namespace {

using testing::ElementsAre;
using testing::FloatEq;
using testing::Pointwise;

std::vector<float> Values(const CFTVals& parameters) { return {parameters.Data(), parameters.Data() + parameters.Count()}; }

CFTVals Along(const std::vector<float>& xs, const std::vector<float>& ys, std::int32_t spacing) {
    return {xs.data(), ys.data(), static_cast<std::int32_t>(xs.size()), spacing};
}

TEST(TVals, FollowTheSpacingOfTheChain) {
    const std::vector<float> xs = {0, 3, 3, 3, 3}, ys = {0, 4, 4, 10, 11};
    EXPECT_THAT(Values(Along(xs, ys, kSpacingUnitSteps)), ElementsAre(0, 0.25F, 0.5F, 0.75F, 1));
    for (const auto spacing : {kSpacingGeneral, kSpacingBridged, kSpacingDerived}) {
        EXPECT_THAT(Values(Along(xs, ys, spacing)), ElementsAre(0, 5 / 12.0F, 5 / 12.0F, 11 / 12.0F, 1));
    }
    EXPECT_THAT(Values(Along({7}, {8}, kSpacingUnitSteps)), ElementsAre(0));
    EXPECT_THAT(Values(Along({7, 7}, {8, 9}, kSpacingUnitSteps)), ElementsAre(0, 1));
}

TEST(TVals, AreEvenWhenTheChordsTellTooFewPointsApart) {
    EXPECT_THAT(Values(Along({0, 5, 5, 5, 9}, {0, 0, 0, 0, 0}, kSpacingGeneral)), ElementsAre(0, 0.25F, 0.5F, 0.75F, 1));
    EXPECT_THAT(Values(Along({0, 1, 4}, {0, 0, 0}, kSpacingGeneral)), ElementsAre(0, 0.25F, 1))
        << "three points need no four values";
    EXPECT_THAT(Values(Along({6, 6, 6}, {1, 1, 1}, kSpacingGeneral)), ElementsAre(0, 0.5F, 1)) << "no length at all";
}

TEST(TVals, SplitStretchesBothHalves) {
    const auto [left, right] = CFTVals({0, 0.1F, 0.4F, 0.7F, 1}).Split(2);
    EXPECT_THAT(Values(left), ElementsAre(0, FloatEq(0.25F), 1));
    EXPECT_THAT(Values(right), ElementsAre(0, FloatEq(0.5F), 1));
    EXPECT_THAT(Values(CFTVals({0, 0, 5e-7F, 0.5F, 1}).Split(2).first), ElementsAre(0, 0.5F, 1)) << "no room to stretch";
    EXPECT_THAT(Values(CFTVals({0, 0.5F, 1, 1, 1}).Split(2).second), ElementsAre(0, 0.5F, 1));
}

TEST(TVals, MergeGivesEitherRangeItsShareOfThePoints) {
    const CFTVals merged = CFTVals::Merge(CFTVals({0, 0.5F, 1}), CFTVals({0, 0.25F, 1}));
    EXPECT_THAT(Values(merged), Pointwise(FloatEq(), {0.0F, 0.3F, 0.6F, 0.7F, 1.0F})) << "3 of the 5 points are the first's";
    EXPECT_THAT(Values(CFTVals::Merge(CFTVals({0, 0, 1}), CFTVals({0, 0, 1}))), ElementsAre(0, 0.25F, 0.5F, 0.75F, 1));
    EXPECT_THAT(Values(CFTVals::Merge(CFTVals({0, 1}), CFTVals({0, 1}))), ElementsAre(0, FloatEq(2 / 3.0F), 1));

    const CFTVals good({0, 1}), one_value({0}), late({0.1F, 1}), early({0, 0.9F});
    for (const CFTVals& bad : {one_value, late, early}) {
        EXPECT_THROW(CFTVals::Merge(good, bad), int);
        EXPECT_THROW(CFTVals::Merge(bad, good), int);
    }
}

TEST(TVals, HalvesPutTogetherAgainStillRunFromZeroToOne) {
    const std::vector<float> line(1001, 0.0F);
    for (std::int32_t k = 1; k < 1000; k += 37) {
        const auto [left, right] = Along(line, line, kSpacingUnitSteps).Split(k);
        const auto merged = Values(CFTVals::Merge(left, right));
        EXPECT_TRUE(std::is_sorted(merged.begin(), merged.end())) << k;
        EXPECT_EQ(merged.back(), 1.0F) << k;
    }
}

}  // namespace
