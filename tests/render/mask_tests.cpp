#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "api/vrl.h"
#include "refhost/services/memory.h"
#include "tests/support/quiet_reports.h"
#include "tests/support/shapes.h"

using testing::Each;
using testing::ElementsAre;

namespace {

struct Rendered {
    GW_UnoBuffer buffer;
    M_LRect touched = {};
    int status;

    Rendered(const DY_Shape& shape, const VRL_MaskParams& params, int width, int height, int depth = 8,
             const M_Matrix3* transform = nullptr)
        : buffer(width, height, depth) {
        std::fill_n(buffer.Row<std::uint8_t>(0), width * height * (buffer.IsDeep() ? 2 : 1),
                    std::uint8_t{0x55});  // must all be overwritten
        status = VRL_MaskWithShape(&shape, &params, transform, &buffer, &touched);
    }
    int At(int x, int y) const { return buffer.IsDeep() ? buffer.Row<GW_Pixel16>(y)[x] : buffer.Row<GW_Pixel8>(y)[x]; }
};

constexpr std::int32_t Fixed(double value) { return static_cast<std::int32_t>(value * 65536); }

// Twice the feather rounded up to whole pixels.
int MarginOf(double feather) { return 2 * static_cast<int>(std::ceil(feather)); }

// What a feathered mask may touch, written down independently.
M_LRect TouchedBy(double left, double top, double right, double bottom, double feather_x, double feather_y, int width,
                  int height) {
    const int mx = MarginOf(feather_x);
    const int my = MarginOf(feather_y);
    const auto clamped = [](double value, int limit) { return static_cast<int>(std::clamp(value, 0.0, double(limit))); };
    return {clamped(std::max<double>(-mx, std::floor(left) - mx), width),
            clamped(std::max<double>(-my, std::floor(top) - my), height),
            clamped(std::min<double>(width + mx, std::ceil(right) + mx), width),
            clamped(std::min<double>(height + my, std::ceil(bottom) + my), height)};
}

}  // namespace

TEST(MaskWithShape, TouchedIsTheShapeGrownByTwiceTheFeatherInsideTheBuffer) {
    std::mt19937 random(1);
    const auto between = [&](double low, double high) { return std::uniform_real_distribution(low, high)(random); };
    for (int i = 0; i < 400; ++i) {
        const auto left = static_cast<float>(between(-60, 90));
        const auto top = static_cast<float>(between(-60, 70));
        const auto right = left + static_cast<float>(between(0.01, 60));
        const auto bottom = top + static_cast<float>(between(0.01, 60));
        const double fx = i % 3 == 0 ? 0 : between(0, 9);
        const double fy = i % 4 == 0 ? 0 : between(0, 9);
        VRL_MaskParams params = PlainParams();
        params.feather_x = Fixed(fx);
        params.feather_y = Fixed(fy);
        params.quality = i % 2 != 0;
        const Rendered mask(*Rectangle(left, top, right, bottom), params, 64, 48, i % 5 == 0 ? 16 : 8);
        ASSERT_EQ(mask.status, 0);
        const M_LRect expected =
            TouchedBy(double(left), double(top), double(right), double(bottom), Fixed(fx) / 65536.0, Fixed(fy) / 65536.0, 64, 48);
        ASSERT_EQ(mask.touched, expected) << i;
        for (int y = 0; y < 48; ++y) {
            for (int x = 0; x < 64; ++x) {
                const bool inside = x >= expected.left && x < expected.right && y >= expected.top && y < expected.bottom;
                ASSERT_TRUE(inside || mask.At(x, y) == 0);
            }
        }
    }
    VRL_MaskParams params = PlainParams();
    params.feather_x = Fixed(1);
    const Rendered outside(*Rectangle(1000, 10, 1100, 20), params, 100, 50);
    EXPECT_EQ(outside.touched, (M_LRect{100, 10, 100, 20}));
    EXPECT_THAT(SamplesOf<GW_Pixel8>(outside.buffer), Each(0));
    params.invert = 1;
    EXPECT_EQ(Rendered(*Rectangle(10, 10, 20, 20), params, 100, 50).touched, (M_LRect{0, 0, 100, 50}));
}

TEST(MaskWithShape, OpacityInversionAndDepthFollowTheArithmetic) {
    const auto half = Rectangle(0, 0, 1.5F, 4);  // full, half, none
    for (const std::int32_t opacity : {0, 1, 128, 20000, 32768, 65535, 65536}) {
        for (const int depth : {8, 16}) {
            const double max = depth == 8 ? 255 : 32768;
            const int value = static_cast<int>(opacity / 65536.0 * max + 0.5);
            VRL_MaskParams params = PlainParams();
            params.opacity = opacity;
            const Rendered plain(*half, params, 3, 4, depth);
            EXPECT_EQ(plain.At(0, 1), value);
            EXPECT_EQ(plain.At(1, 1), depth == 8 ? (2 * 128 * value + 255) / 510 : (16448 * value + 0x3FFF) >> 15);
            EXPECT_EQ(plain.At(2, 1), 0);
            EXPECT_EQ(plain.touched, value == 0 ? (M_LRect{0, 0, 3, 4}) : (M_LRect{0, 0, 2, 4}));

            params.invert = 1;
            const Rendered inverted(*half, params, 3, 4, depth);
            const auto faded = [&](double coverage) { return std::floor((max - coverage) * opacity / 65536 + 0.5); };
            EXPECT_EQ(inverted.At(0, 1), 0);
            EXPECT_EQ(inverted.At(1, 1), value == 0 ? 0 : faded(depth == 8 ? 128 : 16448));
            EXPECT_EQ(inverted.At(2, 1), value == 0 ? 0 : faded(0));
        }
    }
    VRL_MaskParams params = PlainParams();
    EXPECT_EQ(Rendered(*half, params, 3, 4, 12).At(0, 0), 255);  // any depth but 16 is 8-bit
}

TEST(MaskWithShape, AnUnsupportedTypeIsReportedOnceAndZeroOpacityWins) {
    const auto shape = Rectangle(0, 0, 4, 4);
    shape->type = 1;
    const support::QuietReports quiet;
    int answer = 0;
    refhost::SetReportSink([&](const refhost::Report&) { return answer; });
    EXPECT_EQ(Rendered(*shape, PlainParams(), 4, 4).status, 0);
    answer = 42;
    const Rendered refused(*shape, PlainParams(), 4, 4);
    EXPECT_EQ(refused.status, 42);
    EXPECT_EQ(refused.At(0, 0), 0x55);
    const auto reports = refhost::TakeReports();
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(reports[0].code, 0x260004);
    EXPECT_EQ(reports[0].text, "invalid shape type");

    VRL_MaskParams params = PlainParams();
    params.opacity = 0;
    params.invert = 1;
    const Rendered cleared(*shape, params, 4, 4);
    EXPECT_EQ(cleared.status, 0);
    EXPECT_THAT(SamplesOf<GW_Pixel8>(cleared.buffer), Each(0));
    EXPECT_TRUE(refhost::TakeReports().empty());
}

TEST(MaskWithShape, TransformAndSubpixelShiftsMoveTheMask) {
    const auto blob = Blob(12, 30, 30, 20);
    const M_Matrix3 shift = {{{1, 0, 0}, {0, 1, 0}, {7, 5, 1}}};
    const Rendered still(*blob, PlainParams(), 64, 64);
    const Rendered moved(*blob, PlainParams(), 64, 64, 8, &shift);
    for (int y = 5; y < 64; ++y)
        for (int x = 7; x < 64; ++x) ASSERT_EQ(moved.At(x, y), still.At(x - 7, y - 5));

    // A quarter turn about the centre of the frame.
    const M_Matrix3 turn = {{{0, 1, 0}, {-1, 0, 0}, {64, 0, 1}}};
    const Rendered turned(*blob, PlainParams(), 64, 64, 16, &turn);
    const Rendered deep(*blob, PlainParams(), 64, 64, 16);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x) ASSERT_NEAR(turned.At(63 - y, x), deep.At(x, y), 260);  // two 8-bit steps
}

TEST(MaskWithShape, WhatIsNotFiniteOrNegativeIsRefusedAndEmptyIsClear) {
    const support::QuietReports quiet;
    const auto blob = Blob(8, 8, 8, 6);
    for (const float value : {std::numeric_limits<float>::quiet_NaN(), -std::numeric_limits<float>::infinity(), 1e30F, 1e-40F}) {
        auto items = ItemsOf(*blob);
        items[4].x = value;
        EXPECT_EQ(Rendered(*ShapeOfItems(items), PlainParams(), 16, 16).status, std::isfinite(value) ? 0 : -1) << value;
    }
    EXPECT_THAT(SamplesOf<GW_Pixel8>(Rendered(*ShapeOfItems({}), PlainParams(), 8, 8).buffer), Each(0));
    for (const bool across : {true, false}) {
        VRL_MaskParams params = PlainParams();
        (across ? params.feather_x : params.feather_y) = -1;
        EXPECT_NE(Rendered(*blob, params, 16, 16).status, 0);
        (across ? params.feather_x : params.feather_y) = std::numeric_limits<std::int32_t>::min();  // nothing left to feather
        EXPECT_EQ(Rendered(*blob, params, 16, 16).status, 0);
    }
}

namespace {

struct LineCall {
    int quality, length, lo, hi, radius;
    friend bool operator==(const LineCall&, const LineCall&) = default;
};
std::vector<LineCall> g_line_calls;
std::vector<std::pair<int, int>> g_progress;
int g_stop_at_step = -1000;

int RecordLine(unsigned char quality, std::int32_t length, std::int32_t lo, std::int32_t hi, std::int32_t radius, void*,
               void* line) {
    g_line_calls.push_back({quality, length, lo, hi, radius});
    auto* samples = static_cast<GW_Pixel8*>(line);
    std::transform(samples, samples + length, samples,
                   [](GW_Pixel8 s) { return static_cast<GW_Pixel8>(s / 2); });  // seen by the columns
    return 0;
}

std::int32_t RecordProgress(void*, std::int32_t step, std::int32_t total) {
    g_progress.emplace_back(step, total);
    return step == g_stop_at_step ? 17 : 0;
}

struct RecordedLines {
    void* original = GWp_G_OverFuncs[kOverFeatherLine8];
    RecordedLines() { GWp_G_OverFuncs[kOverFeatherLine8] = reinterpret_cast<void*>(&RecordLine); }
    ~RecordedLines() { GWp_G_OverFuncs[kOverFeatherLine8] = original; }
};

}  // namespace

TEST(FeatherPass, PassesOrderArgumentsProgressAndMemoryAreAsAHostExpects) {
    const RecordedLines recorded;
    const GW_ProgressInfo progress = {nullptr, nullptr, RecordProgress};
    VRL_MaskParams params = PlainParams();
    params.feather_x = Fixed(1.25);  // margin 4, two whole pixels
    params.feather_y = Fixed(0.5);   // margin 2, one whole pixel
    params.quality = 7;              // neither draft nor best: the lines get it as it is
    params.progress = &progress;
    g_line_calls.clear();
    g_progress.clear();
    const std::int64_t accounted = refhost::AccountedTotal();
    const Rendered mask(*Rectangle(3, -20, 6, 2.5F), params, 10, 6);  // leaves the frame through the top
    ASSERT_EQ(mask.status, 0);

    // The work box: columns -1 to 10, rows -2 to 6; the shape covers rows -2 to 2, columns 3 to 5.
    std::vector<LineCall> expected(5, {7, 11, 3, 8, Fixed(1.25)});
    for (int x = 1; x < 8; ++x) expected.push_back({7, 8, 0, 5, Fixed(0.5)});
    EXPECT_EQ(g_line_calls, expected);

    std::vector<std::pair<int, int>> steps;
    for (int y = -2; y < 6; ++y) steps.emplace_back(y, 14);  // min(10, 6 + 2) + 6
    for (int x = 1; x < 8; ++x) steps.emplace_back(x + 7, 14);
    EXPECT_EQ(g_progress, steps);

    // Two rows above, line and scratch of 11 + 10 * 2 + 1 samples, and the tile of columns.
    EXPECT_EQ(refhost::AccountedTotal() - accounted, 2 * 10 + 2 * 32 + 32 * 32);
    EXPECT_EQ(refhost::AccountedBytes(), 0);
    EXPECT_EQ(mask.At(4, 0), 63);  // halved by the row, then by the column
    EXPECT_EQ(mask.At(9, 0), 0);
    EXPECT_EQ(mask.touched, (M_LRect{0, 0, 10, 5}));

    // A stop in the column pass keeps the columns before it.
    g_stop_at_step = 5 + 7;
    const Rendered stopped(*Rectangle(3, -20, 6, 2.5F), params, 10, 6);
    g_stop_at_step = -1000;
    EXPECT_EQ(stopped.status, 17);
    EXPECT_EQ(stopped.At(4, 0), 63);
    EXPECT_EQ(stopped.At(5, 0), 127);
    EXPECT_EQ(refhost::AccountedBytes(), 0);

    // Without feather there is no line call, and the rows go straight to the buffer.
    params.feather_x = params.feather_y = 0;
    g_line_calls.clear();
    g_progress.clear();
    const Rendered plain(*Rectangle(3, -20, 6, 2.5F), params, 10, 6);
    EXPECT_TRUE(g_line_calls.empty());
    EXPECT_EQ(g_progress.size(), 6U);
    EXPECT_EQ(plain.At(4, 0), 255);

    // The columns are skipped when the feather cannot reach the frame.
    params.feather_y = Fixed(0.5);
    g_line_calls.clear();
    const Rendered above(*Rectangle(3, -20, 6, -1.25F), params, 10, 6);
    EXPECT_TRUE(g_line_calls.empty());
    EXPECT_THAT(SamplesOf<GW_Pixel8>(above.buffer), Each(0));
}

TEST(FeatherPass, FeatheringIsSymmetricSeparableAndKeepsTheArea) {
    for (const int depth : {8, 16}) {
        for (const int quality : {0, 1}) {
            VRL_MaskParams params = PlainParams();
            params.quality = static_cast<std::uint8_t>(quality);
            params.feather_x = Fixed(6);
            params.feather_y = Fixed(3);
            const Rendered mask(*Rectangle(30, 30, 71, 71), params, 101, 101, depth);
            const double max = depth == 8 ? 255 : 32768;
            double sum = 0;
            for (int y = 0; y < 101; ++y) {
                for (int x = 0; x < 101; ++x) {
                    sum += mask.At(x, y) / max;
                    ASSERT_NEAR(mask.At(x, y), mask.At(100 - x, y), 1);
                    ASSERT_NEAR(mask.At(x, y), mask.At(x, 100 - y), 1);
                    ASSERT_TRUE(x == 0 || x > 50 || mask.At(x, y) >= mask.At(x - 1, y));
                }
            }
            EXPECT_NEAR(sum, 41 * 41, 41 * 41 * 0.003);
            EXPECT_EQ(mask.At(50, 50), max);
            EXPECT_NEAR(mask.At(30, 50) + mask.At(29, 50), max, max / 100);  // half way at the edge
        }
    }
}

TEST(FeatherPass, CoverageBeyondTheFrameFeathersIntoIt) {
    VRL_MaskParams params = PlainParams();
    params.feather_x = params.feather_y = Fixed(10);
    // A small frame cut out of a large one shows the same picture.
    const auto blob = Blob(10, 100, 100, 60);
    const Rendered whole(*blob, params, 200, 200);
    const M_Matrix3 shift = {{{1, 0, 0}, {0, 1, 0}, {-90, -60, 1}}};
    const Rendered cut(*blob, params, 40, 30, 8, &shift);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x) ASSERT_NEAR(cut.At(x, y), whole.At(x + 90, y + 60), 1) << x << ' ' << y;
}
