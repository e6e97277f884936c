#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "base/errors.h"
#include "tests/support/bitmaps.h"
#include "trace/color_table.h"

namespace {

RPSample Colour(std::int32_t red, std::int32_t green, std::int32_t blue) { return {0, 0, kModelThree, {red, green, blue}}; }

void ExpectLab(const RPLab& lab, float l, float a, float b) {
    EXPECT_NEAR(lab.l, l, 1e-3F);
    EXPECT_NEAR(lab.a, a, 1e-3F);
    EXPECT_NEAR(lab.b, b, 1e-3F);
}

TEST(ColorTable, GivesNumbersInOrderAndLabValues) {
    RPColorTable table;
    EXPECT_EQ(table.IndexOf(Colour(255, 255, 255)), 0);
    EXPECT_EQ(table.IndexOf(Colour(0, 0, 0)), 1);
    EXPECT_EQ(table.IndexOf(Colour(51, 102, 204)), 2);
    EXPECT_EQ(table.IndexOf(Colour(0, 0, 1)), 3);
    EXPECT_EQ(table.IndexOf(Colour(0, 0, 0)), 1);
    EXPECT_THROW(table.Entry(0), int);  // not frozen
    table.Freeze(kModelThree, false);
    EXPECT_THROW(table.IndexOf(Colour(0, 0, 0)), int);
    EXPECT_THROW(table.Entry(4), int);
    // White: X = 0.9504 / 0.9642, Y = 1, Z = 1.0888 / 0.8249.
    ExpectLab(table.Entry(0).lab, 100.0F, -2.3969F, -19.3877F);
    // Black: a straight line through 0 all over.
    ExpectLab(table.Entry(1).lab, 0.0F, 0.0F, 0.0F);
    // 0.2, 0.4, 0.8: X = 0.37814 / 0.9642, Y = 0.39212, Z = 0.81506 / 0.8249.
    ExpectLab(table.Entry(2).lab, 68.9046F, 0.0058F, -52.8144F);
    // Dark enough for the straight parts.
    ExpectLab(table.Entry(3).lab, 0.3064F, 1.7134F, -6.5661F);
    EXPECT_EQ(table.IndexOfLab(table.Entry(2).lab), 2);
    EXPECT_THROW(table.IndexOfLab({1.0F, 2.0F, 3.0F}), int);
    table.Reset();
    EXPECT_EQ(table.IndexOf(Colour(9, 9, 9)), 0);
    EXPECT_THROW(table.Entry(0), int);
}

TEST(ColorTable, NumbersWrapAndOtherModelsAreRefused) {
    RPColorTable table;
    for (std::int32_t i = 0; i < 256; ++i) EXPECT_EQ(table.IndexOf(Colour(i, 0, 0)), i);
    EXPECT_EQ(table.IndexOf(Colour(0, 1, 0)), 0);
    EXPECT_EQ(table.IndexOf(Colour(0, 2, 0)), 1);
    EXPECT_ANY_THROW(table.IndexOf({0, 0, kModelFour, {1, 2, 3, 4}}));
}

TEST(Raster, SamplesColoursAndTheOutside) {
    const auto world = support::WorldOf(support::MapOfRows({".#", "##"}), {{0, 0, 0}, {255, 254, 253}});
    const RPRaster raster(*world);
    RPSample outside = {-1, 0, 7, {}}, below = {0, 2, 7, {}}, clear = {0, 0, 7, {}}, set = {1, 1, 7, {}}, other = {1, 0, 7, {}};
    for (RPSample* sample : {&outside, &below, &clear, &set, &other}) raster.Sample(*sample);
    EXPECT_TRUE(IsSameColour(outside, Colour(-1, -1, -1)) && IsSameColour(outside, below));
    EXPECT_TRUE(IsSameColour(clear, Colour(0, 0, 0)) && !IsSameColour(clear, outside));
    EXPECT_TRUE(IsSameColour(set, Colour(255, 254, 253)) && IsSameColour(set, other));
    set.model = kModelFour;
    EXPECT_FALSE(IsSameColour(set, other));
    RPSample one = {0, 0, 2, {5, 1, 1, 1}};
    EXPECT_TRUE(IsSameColour(one, {0, 0, 2, {5, 2, 2, 2}}));
    one.model = other.model = kModelFour;
    std::fill_n(other.components, 4, 1);
    other.components[0] = 5;
    EXPECT_TRUE(IsSameColour(one, other));
    other.components[3] = 2;
    EXPECT_FALSE(IsSameColour(one, other));
}

TEST(Trace, TakesTheRasterAndNumbersItsColours) {
    const auto world = support::WorldOf(support::MapOfRows({"##.", "#2#"}), {{1, 1, 1}, {2, 2, 2}, {3, 3, 3}});
    auto raster = ts::make_auto<RPRaster>(*world);
    const RPTrace trace(raster, 7, true);
    EXPECT_FALSE(raster);
    EXPECT_FALSE(trace.raster);
    EXPECT_EQ(trace.width * 100 + trace.height * 10 + trace.minimum_area, 327);
    ASSERT_EQ(trace.regions.size(), 4U);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(trace.regions[static_cast<std::size_t>(i)].colour, std::vector({0, 1, 2, 0})[static_cast<std::size_t>(i)]);
    EXPECT_EQ(RPColorTable::OfThread().Entry(2).colour.components[0], 3);
    EXPECT_THROW(RPTrace(raster, 0, false), int);  // no raster left
}

TEST(Trace, HoldsTwoHundredFiftyFiveColours) {
    for (const std::int32_t colours : {255, 256}) {
        const std::unique_ptr<GW_World> world(GW_World::New(colours, 1, 8, 0));
        for (std::int32_t x = 0; x < colours; ++x)
            static_cast<std::uint8_t*>(world->data)[4 * x + 2] = static_cast<std::uint8_t>(x);
        auto raster = ts::make_auto<RPRaster>(*world);
        if (colours == 255) {
            EXPECT_EQ(RPTrace(raster, 0, false).regions.size(), 255U);
        } else {
            EXPECT_THROW(RPTrace(raster, 0, false), int);
        }
    }
}

}  // namespace
