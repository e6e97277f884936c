#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <random>

#include "api/vrl.h"
#include "base/errors.h"
#include "tests/support/bitmaps.h"
#include "tests/support/memory_peak.h"
#include "tests/support/quiet_reports.h"
#include "tests/support/shapes.h"
#include "tests/support/thrown_int.h"
#include "tests/support/worlds.h"
#include "trace/shape_creation.h"
#include "trace/trace_job.h"

namespace {

using Shapes = std::vector<boost::shared_ptr<DY_Shape>>;
using Items = std::vector<WEX_Item>;

Shapes Traced(const GW_World& world, const VRL_AutoTraceParams& params = {}) {
    Shapes shapes;
    VRL_NewMasksFromWorld(&world, &params, shapes);
    return shapes;
}

/// Discs of both colours, one over the other.
std::unique_ptr<GW_World> Discs(unsigned seed, std::int32_t width, std::int32_t height) {
    std::mt19937 random(seed);
    return support::WorldOf(support::Blobs(random, width, height, 2), {{0, 0, 0}, {255, 255, 255}});
}

/// The pixels that an odd number of the shapes covers by half or more.
std::string Rendered(const Shapes& shapes, std::int32_t width, std::int32_t height) {
    std::string pixels(static_cast<std::size_t>(width * height), '-');
    const VRL_MaskParams params = PlainParams();
    GW_UnoBuffer buffer(width, height, 8);
    for (const auto& shape : shapes) {
        EXPECT_EQ(VRL_MaskWithShape(shape.get(), &params, nullptr, &buffer, nullptr), 0);
        const auto samples = SamplesOf<GW_Pixel8>(buffer);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            if (samples[i] >= 128) pixels[i] = pixels[i] == '-' ? '#' : '-';
        }
    }
    return pixels;
}

/// Distance from the centre of pixel (x, y) to the nearest pixel of the other colour.
double DistanceToChange(const std::string& pixels, std::int32_t width, std::int32_t height, std::int32_t x, std::int32_t y) {
    double nearest = std::min({x, y, width - 1 - x, height - 1 - y}) + 0.5;  // the picture's edge is an outline too
    for (std::int32_t v = 0; v < height; ++v) {
        for (std::int32_t u = 0; u < width; ++u) {
            if (pixels[static_cast<std::size_t>(v * width + u)] == pixels[static_cast<std::size_t>(y * width + x)]) continue;
            const double dx = std::max(std::abs(u - x) - 0.5, 0.0), dy = std::max(std::abs(v - y) - 0.5, 0.0);
            nearest = std::min(nearest, std::hypot(dx, dy));
        }
    }
    return nearest;
}

}  // namespace

TEST(AutoTrace, EveryOutlineAndHoleOfTheSetPixelsBecomesAShape) {
    const auto count = [](const std::string& rows) { return Traced(*Drawing(rows)).size(); };
    EXPECT_EQ(count("---- ---- ----"), 0U);
    EXPECT_EQ(count("#### #### ####"), 1U);
    EXPECT_EQ(count("-"), 0U);
    EXPECT_EQ(count("#"), 1U);
    EXPECT_EQ(count("--#-##-"), 2U);
    EXPECT_EQ(count("- # # -"), 1U);
    EXPECT_EQ(count("----- -#--- --#-- -----"), 2U);        // touching by a corner only
    EXPECT_EQ(count("##### #---# #-#-# #---# #####"), 3U);  // a ring round a pixel
    EXPECT_EQ(count("#-#- -#-# #-#- -#-#"), 8U);
    EXPECT_EQ(Traced(*WorldOf(1, 1, {{0, 0, 0, 0}})).size(), 0U);

    const Shapes one = Traced(*Drawing("-------- -####--- -####--- -####--- -####--- --------"));
    ASSERT_EQ(one.size(), 1U);
    EXPECT_EQ(one[0]->type, kShapeTypeBezier);
    EXPECT_FALSE(one[0]->IsOpen());
    EXPECT_GT(AreaOfItems(*one[0]), 0);
    EXPECT_EQ(ItemsOf(*one[0]).size() % 3, 0U);
    const Items items = ItemsOf(*one[0]);
    for (std::size_t i = 0; i < items.size(); i += 3) {  // vertices lie on corners of pixels
        EXPECT_NEAR(items[i].x, 3, 2);
        EXPECT_NEAR(items[i].y, 3, 2);
        EXPECT_EQ(items[i].x, std::round(items[i].x));
    }
}

TEST(AutoTrace, RenderedShapesAreTheBitmapButNearItsOutlines) {
    constexpr std::int32_t kWidth = 90, kHeight = 70;
    for (const float tolerance : {0.5F, 1.0F, 2.0F}) {
        VRL_AutoTraceParams params;
        params.tolerance = tolerance;
        std::size_t wrong = 0;
        for (unsigned seed = 1; seed <= 12; ++seed) {
            const auto world = Discs(seed, kWidth, kHeight);
            const std::string bitmap = SetPixels(*world);
            const std::string rendered = Rendered(Traced(*world, params), kWidth, kHeight);
            for (std::int32_t i = 0; i < kWidth * kHeight; ++i) {
                if (bitmap[static_cast<std::size_t>(i)] == rendered[static_cast<std::size_t>(i)]) continue;
                ++wrong;
                EXPECT_LE(DistanceToChange(bitmap, kWidth, kHeight, i % kWidth, i / kWidth),
                          static_cast<double>(tolerance) + 0.75)
                    << tolerance << ' ' << seed << " at " << i % kWidth << ',' << i / kWidth;
            }
        }
        EXPECT_LT(wrong, 12U * 200U);
    }
}

TEST(AutoTrace, NoPointIsTooFarForAToleranceThatIsNoNumber) {
    const auto square = WorldOf(40, 40, std::vector<Argb>(1600, {255, 255, 255, 255}));
    const auto with_tolerance = [&](float tolerance) {
        VRL_AutoTraceParams params;
        params.tolerance = tolerance;
        const Shapes shapes = Traced(*square, params);
        return shapes.size() == 1 ? ItemsOf(*shapes[0]) : Items();
    };
    const Items traced = with_tolerance(std::numeric_limits<float>::quiet_NaN());
    EXPECT_FALSE(traced.empty());
    EXPECT_EQ(traced, with_tolerance(std::numeric_limits<float>::infinity()));
}

TEST(AutoTrace, InvertingSwapsWhatIsSetAndSmallRegionsCanGo) {
    VRL_AutoTraceParams params;
    const auto ring = Drawing("------- -#####- -#---#- -#---#- -#####- ------- #------");
    EXPECT_EQ(Traced(*ring, params).size(), 3U);
    params.minimum_area = 2;
    EXPECT_EQ(Traced(*ring, params).size(), 2U);  // the lone pixel is gone
    params.minimum_area = 7;
    EXPECT_EQ(Traced(*ring, params).size(), 1U);  // and the hole of 6 pixels
    params.minimum_area = 0;
    params.invert = 1;
    EXPECT_EQ(Traced(*ring, params).size(), 3U);  // the ground, its hole round the ring, the middle
    params.invert = 0;
    params.blur_radius = 12;
    EXPECT_EQ(Traced(*ring, params).size(), 0U);  // smeared out below the threshold
}

TEST(AutoTrace, TheWholeListIsMappedAndDirected) {
    const M_Matrix3 mirror = {{{-1, 0, 0}, {0, 1, 0}, {100, 5, 1}}};
    VRL_AutoTraceParams params;
    const auto world = Discs(3, 60, 50);
    const Shapes plain = Traced(*world, params);
    ASSERT_GE(plain.size(), 3U);
    params.layer_transform = &mirror;

    Shapes shapes;
    shapes.emplace_back(Rectangle(0, 0, 10, 4));
    shapes.emplace_back(ShapeOfItems(std::vector<WEX_Item>{{0, 0}, {1, 0}, {2, 0}, {3, 0}, {3, 1}, {3, 2}, {3, 3}}, true));
    shapes.emplace_back(ShapeOfItems({}));  // no vertex, nothing to direct
    const Shapes before = shapes;
    VRL_NewMasksFromWorld(world.get(), &params, shapes);
    ASSERT_EQ(shapes.size(), plain.size() + 3);
    EXPECT_TRUE(std::equal(before.begin(), before.end(), shapes.begin()));
    EXPECT_EQ(ItemsOf(*shapes[0])[0], (WEX_Item{100, 5}));
    EXPECT_EQ(ItemsOf(*shapes[1])[3], (WEX_Item{97, 5}));  // open: mapped, its order kept
    for (std::size_t i = 0; i < shapes.size(); ++i) {
        if (i != 1 && i != 2) {
            EXPECT_GT(AreaOfItems(*shapes[i]), 0) << i;
        }
    }
    for (std::size_t i = 0; i < plain.size(); ++i) {
        EXPECT_GT(AreaOfItems(*plain[i]), 0);
        const WEX_Item from = ItemsOf(*plain[i])[0], to = ItemsOf(*shapes[i + 3])[0];
        EXPECT_EQ(to, (WEX_Item{100 - from.x, from.y + 5}));
    }
}

TEST(AutoTrace, NeighboursShareTheirCurves) {
    int compared = 0;
    for (unsigned seed = 1; seed <= 24; ++seed) {
        const auto world = Discs(seed, 80, 60);
        auto raster = ts::make_auto<RPRaster>(*world);
        RPTrace trace(raster, 0, false);
        std::map<std::int32_t, std::vector<std::int32_t>> inside;  // regions in each hole
        const std::vector<RPRegion> regions(trace.regions.begin(), trace.regions.end());
        for (const RPRegion& region : regions) inside[region.enclosing_hole].push_back(region.index);
        std::vector<RPOutlineArt> arts;
        KVOutlineGenerator(&trace, 1, 72, 16, false)
            .ForEachArt([](const RPRegion&) { return true; }, [&](const RPOutlineArt& art) { arts.push_back(art); });
        EXPECT_FALSE(trace.graph);
        ASSERT_EQ(arts.size(), regions.size());
        const auto art_of = [&](std::int32_t region) -> const RPOutlineArt& { return arts[static_cast<std::size_t>(region)]; };
        for (const RPRegion& region : regions) {
            ASSERT_EQ(art_of(region.index).outer.size(), 1U);
            ASSERT_EQ(art_of(region.index).holes.size(), static_cast<std::size_t>(region.hole_count));
            std::size_t place = 0;
            for (std::int32_t hole = region.first_hole; hole != kNone; hole = trace.holes[static_cast<std::size_t>(hole)].next) {
                RPPath reversed;
                reversed.AppendReversed(art_of(region.index).holes[place++], false);
                if (inside[hole].size() != 1) continue;
                auto outer = art_of(inside[hole][0]).outer[0].anchors;
                ASSERT_EQ(outer.size(), reversed.anchors.size());
                const auto seam = std::ranges::find(outer, reversed.anchors[0]);
                ASSERT_NE(seam, outer.end());
                std::rotate(outer.begin(), seam, outer.end());
                EXPECT_EQ(outer, reversed.anchors);
                ++compared;
            }
        }
    }
    EXPECT_GT(compared, 10);
}

TEST(AutoTrace, MemoryFollowsTheOutlines) {
    constexpr std::int32_t kSide = 256;
    constexpr std::int64_t kNoLimit = std::int64_t{1} << 40;
    const auto peak_of =
        [&](std::int32_t every) {  // pixels by turns set and clear in two rows of so many, which hold most there is
            std::vector<Argb> pixels(std::size_t{kSide} * kSide, {255, 0, 0, 0});
            for (std::int32_t i = 0; i < kSide * kSide; ++i) {
                const std::int32_t x = i % kSide, y = i / kSide, row = (y + every / 2 + 1) % every;
                if (row < 2 && (x + y) % 2 == 0) pixels[static_cast<std::size_t>(i)] = {255, 255, 255, 255};
            }
            const auto world = WorldOf(kSide, kSide, pixels);
            return support::MemoryPeakOf([&] { Traced(*world); }, kNoLimit) / (kSide * kSide);
        };
    EXPECT_LE(peak_of(2), 230);  // bytes a pixel
    EXPECT_LE(peak_of(16), 50);
}

TEST(AutoTrace, WhatCannotBeTracedIsRefused) {
    const support::QuietReports quiet;
    Shapes shapes;
    shapes.emplace_back(Rectangle(0, 0, 1, 1));
    const auto refusal = [&](const GW_World& world) {
        const VRL_AutoTraceParams params;
        const int code = ThrownInt([&] { VRL_NewMasksFromWorld(&world, &params, shapes); });
        EXPECT_EQ(shapes.size(), 1U);
        return code;
    };
    EXPECT_EQ(refusal(PaddedWorld(2, 2, 0, 16)), kFailedCheck);
    const auto reports = refhost::TakeReports();
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].text, "NewMaskFromWorld only works for 8bpc");
    EXPECT_EQ(refusal(PaddedWorld(32768, 1, 0)), kFailedCheck);
    EXPECT_EQ(refusal(PaddedWorld(1, 32768, 0)), kFailedCheck);
    EXPECT_EQ(refhost::TakeReports().size(), 2U);
    EXPECT_EQ(refusal(PaddedWorld(0, 0, 0)), kBrokenInvariant);
    EXPECT_EQ(refusal(PaddedWorld(0, 3, 0)), kBrokenInvariant);
    EXPECT_EQ(Traced(PaddedWorld(32767, 1, 0)).size(), 0U);

    const auto bitmap = Drawing("-#");
    const VRL_AutoTraceParams params;
    const VRLp_TraceOptions options = VRLp_BuildOptions(VRLp_FillContext(params, *bitmap));
    EXPECT_EQ(options.sample_window, 12);
    EXPECT_EQ(VRLp_CreateJob(*bitmap, options, shapes, 1)->options.sample_window, 16);
    EXPECT_EQ(ThrownInt([] { VRLp_RunJob(nullptr); }), kFailedCheck);
    EXPECT_EQ(ThrownInt([&] { VRLp_ShapeGenerator(nullptr, options); }), kFailedCheck);
    EXPECT_EQ(ThrownInt([] { KVOutlineGenerator(nullptr, 1, 72, 16, false); }), kFailedCheck);
    EXPECT_EQ(ThrownInt([] { VRLp_MakeShape(RPPath()); }), kBrokenInvariant);
    for (const auto& [outline, second] : {std::pair{1, 1}, {0, 1}, {0, 0}}) {
        VRLp_TraceOptions other = options;
        other.outline_kind = static_cast<std::uint8_t>(outline);
        other.second_kind = static_cast<std::uint8_t>(second);
        const auto job = VRLp_CreateJob(*bitmap, other, shapes, 1);
        EXPECT_THROW(VRLp_RunJob(job.get()), VRLp_KindError);
    }
    VRLp_TraceOptions narrow = options;
    narrow.sample_window = 0.9F;
    auto raster = ts::make_auto<RPRaster>(*bitmap);
    RPTrace trace(raster, 0, false);
    EXPECT_EQ(ThrownInt([&] { VRLp_ShapeGenerator(&trace, narrow); }), kBrokenInvariant);
    VRLp_TraceOptions skipping = options;
    skipping.skip_outlines = 1;
    VRLp_ShapeGenerator generator(&trace, skipping);
    EXPECT_TRUE(trace.graph);
    VRLp_CreateShapes(generator, shapes);  // no art, no shapes
    EXPECT_EQ(shapes.size(), 1U);
}
