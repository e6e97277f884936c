#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "base/errors.h"
#include "tests/support/quiet_reports.h"
#include "tests/support/thrown_int.h"
#include "tests/support/worlds.h"
#include "trace/pixel_rows.h"
#include "trace/preprocess.h"

namespace {

/// Thresholds `source` and gives a character a pixel, # for set ones, rows one after the other.
std::string Thresholded(const GW_World& source, const VRL_AutoTraceParams& params) {
    VRLp_TraceContext context = VRLp_FillContext(params, source);
    context.bitmap.reset(GW_World::New(source.width, source.height, 8, 0));
    VRLp_Preprocess(context);
    return SetPixels(*context.bitmap);
}

std::string Thresholded(std::initializer_list<Argb> pixels, VRL_TraceChannel channel, float percent, bool invert = false) {
    VRL_AutoTraceParams params;
    params.channel = channel;
    params.threshold = percent;
    params.invert = invert ? 1 : 0;
    return Thresholded(*WorldOf(static_cast<std::int32_t>(pixels.size()), 1, pixels), params);
}

std::vector<RPPacked> RandomPixels(int count, std::mt19937& random) {
    std::vector<RPPacked> pixels(static_cast<std::size_t>(count));
    for (RPPacked& pixel : pixels) pixel = static_cast<RPPacked>(random());
    return pixels;
}

const std::uint8_t* BytesOf(const std::vector<RPPacked>& pixels) { return reinterpret_cast<const std::uint8_t*>(pixels.data()); }

constexpr float Percent(double level) { return static_cast<float>(level * 100 / 255); }

}  // namespace

TEST(TraceOptions, ConvertTheCallersUnits) {
    VRL_AutoTraceParams params;
    const auto world = WorldOf(1, 1, {{0, 0, 0, 0}});
    const auto options_for = [&](float area, float corner) {
        params.minimum_area = area;
        params.corner_angle = corner;
        return VRLp_BuildOptions(VRLp_FillContext(params, *world));
    };
    EXPECT_EQ(options_for(2.9F, 50).minimum_area, 2);
    EXPECT_EQ(options_for(0.5F, 50).minimum_area, 0);
    EXPECT_EQ(options_for(-0.5F, 50).minimum_area, 0);
    EXPECT_EQ(options_for(1e30F, 50).minimum_area, std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(options_for(NAN, 50).minimum_area, 0);
    EXPECT_EQ(options_for(0, 50).corner_angle, 90.0F);
    for (const auto& [percent, level] : {std::pair{0.0F, 0.0F}, {100.0F, 255.0F}, {50.0F, 127.5F}}) {
        params.threshold = percent;
        EXPECT_EQ(VRLp_FillContext(params, *world).threshold, level);
    }
}

TEST(Preprocess, EveryChannelComparesItsOwnValue) {
    const Argb red = {10, 255, 0, 0}, dark_green = {200, 0, 100, 0}, blue = {0, 0, 0, 255}, grey = {255, 90, 90, 90};
    const Argb mixed = {128, 200, 120, 40};  // luminance 135, hue 30 degrees, max + min 240, spread 160
    const auto set = [&](VRL_TraceChannel channel, double level) {
        return Thresholded({red, dark_green, blue, grey, mixed}, channel, Percent(level));
    };
    EXPECT_EQ(set(kVRLTraceLuminance, 76), "#--##");  // 76, 58, 27, 90, 135
    EXPECT_EQ(set(kVRLTraceLuminance, 135), "----#");
    EXPECT_EQ(set(kVRLTraceLuminance, 136), "-----");
    EXPECT_EQ(set(kVRLTraceRed, 90), "#--##");
    EXPECT_EQ(set(kVRLTraceGreen, 100), "-#--#");
    EXPECT_EQ(set(kVRLTraceBlue, 41), "--##-");
    EXPECT_EQ(set(kVRLTraceAlpha, 128), "-#-##");
    EXPECT_EQ(set(kVRLTraceHue, 0), "###-#");  // red has hue 0, grey none
    EXPECT_EQ(set(kVRLTraceHue, 1), "-##-#");
    EXPECT_EQ(set(kVRLTraceHue, -1), "#####");
    EXPECT_EQ(set(kVRLTraceLightness, 255), "#####");  // any but black is far above
    EXPECT_EQ(set(kVRLTraceSaturation, 255), "###-#");
    EXPECT_EQ(set(kVRLTraceValue, 200), "#-#-#");
    EXPECT_EQ(Thresholded({{0, 0, 0, 0}}, kVRLTraceLightness, 1), "-");
    EXPECT_EQ(Thresholded({red, grey}, kVRLTraceRed, 0), "##");

    // Levels far beyond 255 are compared as they are.
    const auto at = [](Argb pixel, VRL_TraceChannel channel, double level) {
        return Thresholded({pixel}, channel, Percent(level)) == "#";
    };
    const auto value_is = [&](Argb pixel, VRL_TraceChannel channel, int value) {
        return at(pixel, channel, value - 0.5) && !at(pixel, channel, value + 0.5);
    };
    EXPECT_TRUE(value_is(red, kVRLTraceSaturation, 32767));
    EXPECT_TRUE(value_is(mixed, kVRLTraceSaturation, 160 * 32767 / 240));
    EXPECT_TRUE(value_is({0, 250, 200, 220}, kVRLTraceSaturation, 50 * 32767 / 60));
    EXPECT_TRUE(value_is({0, 255, 255, 255}, kVRLTraceLightness, 65280));
    EXPECT_TRUE(value_is(mixed, kVRLTraceHue, 30 * 32767 / 360));
    EXPECT_TRUE(value_is({0, 0, 255, 0}, kVRLTraceHue, 120 * 32767 / 360));
    EXPECT_TRUE(value_is(blue, kVRLTraceHue, 240 * 32767 / 360));
    EXPECT_TRUE(value_is({0, 200, 0, 200}, kVRLTraceHue, 300 * 32767 / 360));  // red wins the tie: a negative angle turned round
    EXPECT_TRUE(value_is({0, 200, 200, 0}, kVRLTraceHue, 60 * 32767 / 360));
}

TEST(Preprocess, InversionComplementsAlphaTooAndNoNumberSetsAll) {
    EXPECT_EQ(Thresholded({{0, 9, 9, 9}, {255, 9, 9, 9}}, kVRLTraceAlpha, 100, true), "#-");
    EXPECT_EQ(Thresholded({{0, 0, 255, 255}}, kVRLTraceHue, Percent(1), true), "-");  // becomes red, hue 0
    EXPECT_EQ(Thresholded({{0, 0, 0, 0}}, kVRLTraceRed, NAN), "#");
}

TEST(Preprocess, PaddedRowsAndLargerBitmapsKeepTheirPlaces) {
    PaddedWorld source(3, 2, 8);
    source.Set(0, 0, {0, 255, 255, 255});
    source.Set(2, 1, {0, 255, 255, 255});
    PaddedWorld bitmap(4, 3, 20);
    for (int i = 0; i < 12; ++i) bitmap.Set(i % 4, i / 4, {7, 200, 200, 200});
    const VRL_AutoTraceParams params;
    VRLp_TraceContext context = VRLp_FillContext(params, source);
    context.bitmap = ts::auto_ptr<GW_World>(&bitmap);
    VRLp_Preprocess(context);
    context.bitmap.release();
    EXPECT_EQ(SetPixels(bitmap), "#-----#-----");
    EXPECT_EQ(bitmap.Get(1, 1), (Argb{7, 0, 0, 0}));  // its alpha is not written
    EXPECT_EQ(bitmap.Get(3, 0), (Argb{0, 0, 0, 0}));
    EXPECT_EQ(bitmap.Get(0, 2), (Argb{0, 0, 0, 0}));
    EXPECT_TRUE(bitmap.PaddingUntouched());
}

TEST(Preprocess, RefusesUnknownChannelsAndABlurOfNoNumber) {
    const support::QuietReports quiet;
    const auto world = WorldOf(1, 1, {{0, 0, 0, 0}});
    for (const int channel : {0, 10, -1}) {
        EXPECT_EQ(ThrownInt([&] { Thresholded({{0, 0, 0, 0}}, static_cast<VRL_TraceChannel>(channel), 50); }), kFailedCheck);
    }
    EXPECT_EQ(refhost::TakeReports().size(), 3U);

    VRL_AutoTraceParams params;
    params.blur_radius = NAN;  // not 0, so it is asked for, and the host refuses it
    EXPECT_NE(ThrownInt([&] { Thresholded(*world, params); }), 0);
}

TEST(PixelRows, ThresholdTheSameOnEveryProcessor) {
    std::mt19937 random(1);
    for (int width = 1; width < 80; ++width) {
        const std::vector<RPPacked> source = RandomPixels(width, random), before = RandomPixels(width, random);
        const RPPacked flip = width % 2 == 0 ? ~RPPacked{0} : 0;
        const float threshold = width == 50 ? NAN : static_cast<float>(random() % 256);
        for (const RPPixelRows& rows : PixelRows()) {
            std::vector<RPPacked> to = before;
            const int done =
                rows.threshold_luminance(BytesOf(source), reinterpret_cast<std::uint8_t*>(to.data()), width, flip, threshold);
            ASSERT_TRUE(done <= width && width - done < 8) << width;
            for (std::size_t x = 0; x < to.size(); ++x) {
                const auto part = [&](std::size_t i) { return BytesOf(source)[4 * x + i] ^ (flip & 255U); };
                const bool below = static_cast<float>((77 * part(1) + 151 * part(2) + 28 * part(3)) / 256) < threshold;
                const RPPacked set = (before[x] & kAlphaBits) | (below ? 0 : ~kAlphaBits);
                EXPECT_EQ(to[x], x < static_cast<std::size_t>(done) ? set : before[x]) << width << " " << x;
            }
        }
    }
}

TEST(PixelRows, NumberTheSameOnEveryProcessor) {
    constexpr RPTwoColours kTwo{0x30507090U & ~kAlphaBits, 0x30517090U & ~kAlphaBits, 3, 8};
    std::mt19937 random(1);
    for (int width = 1; width < 80; ++width) {
        std::vector<RPPacked> pixels = RandomPixels(width, random);
        std::vector<std::uint8_t> expected, numbers(pixels.size());
        for (RPPacked& pixel : pixels) {
            const bool first = random() % 2 == 0;
            pixel = (pixel & kAlphaBits) | (first ? kTwo.first : kTwo.second);
            expected.push_back(first ? kTwo.first_number : kTwo.second_number);
        }
        std::vector<RPPacked> with_a_third = pixels;
        with_a_third[random() % pixels.size()] ^= 0x02020202U & ~kAlphaBits;
        for (const RPPixelRows& rows : PixelRows()) {
            EXPECT_FALSE(rows.number(BytesOf(with_a_third), numbers.data(), width, kTwo)) << width;
            EXPECT_TRUE(rows.number(BytesOf(pixels), numbers.data(), width, kTwo)) << width;
            EXPECT_EQ(numbers, expected);
        }
    }
}

TEST(GaussianBlur, SpreadsAsWideAsAskedAndKeepsEdgesAndFlats) {
    constexpr int kSize = 201, kMiddle = kSize / 2;
    for (const float radius : {0.5F, 2.0F, 9.0F, 16.0F, 40.0F}) {
        PaddedWorld world(kSize, kSize, 12);
        for (int y = 0; y < kSize; ++y) {
            for (int x = 0; x < kSize; ++x) {
                const auto step = static_cast<std::uint8_t>(x < kMiddle ? 0 : 240);
                world.Set(x, y, {step, 77, static_cast<std::uint8_t>(y < kMiddle ? 0 : 240), 255});
            }
        }
        PaddedWorld blurred(kSize, kSize, 4);
        ASSERT_EQ(GW_GaussianBlur1D(nullptr, &world, radius, 111, 0, 0, 0, 0, 0, &blurred), 0);
        ASSERT_EQ(GW_GaussianBlur1D(nullptr, &blurred, radius, 111, 1, 0, 1, 0, 1, &blurred), 0);
        const double sigma = static_cast<double>(radius) * 0.577;
        for (int i = 0; i < kSize; ++i) {
            const double expected = 120 * (1 + std::erf((i - kMiddle + 0.5) / (sigma * std::sqrt(2.0))));
            for (const int across : {0, 70, kSize - 1}) {
                ASSERT_NEAR(blurred.Get(i, across).a, expected, radius < 1 ? 6 : 3) << radius << ' ' << i;
                ASSERT_NEAR(blurred.Get(across, i).g, expected, radius < 1 ? 6 : 3) << radius << ' ' << i;
                ASSERT_EQ(blurred.Get(i, across).r, 77);
                ASSERT_EQ(blurred.Get(i, across).b, 255);
            }
        }
        EXPECT_TRUE(blurred.PaddingUntouched());
    }
    PaddedWorld world(5, 3, 0), other(5, 4, 0);
    EXPECT_NE(GW_GaussianBlur1D(nullptr, &world, 1, 111, 0, 0, 0, 0, 0, &other), 0);
    for (const float radius : {-1.0F, NAN, -std::numeric_limits<float>::infinity()}) {
        EXPECT_NE(GW_GaussianBlur1D(nullptr, &world, radius, 111, 0, 0, 0, 0, 0, &world), 0);
    }
    world.Set(2, 1, {1, 2, 3, 4});
    ASSERT_EQ(GW_GaussianBlur1D(nullptr, &world, 1e-9F, 111, 0, 0, 0, 0, 0, &world), 0);
    EXPECT_EQ(world.Get(2, 1), (Argb{1, 2, 3, 4}));
    world.Set(0, 0, {0, 255, 0, 0});
    for (const float radius : {1e9F, std::numeric_limits<float>::infinity()}) {
        EXPECT_EQ(GW_GaussianBlur1D(nullptr, &world, radius, 111, 1, 0, 1, 0, 1, &world), 0);
    }
}
