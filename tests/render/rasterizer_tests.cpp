#include <gmock/gmock.h>

#include <array>
#include <random>

#include "refhost/engine/binding.h"
#include "render/coverage_scale.h"
#include "render/poly_rasterizer.h"
#include "tests/support/quiet_reports.h"
#include "tests/support/shapes.h"
#include "tests/support/thrown_int.h"

using testing::ElementsAre;

namespace {

// A painter whose runs and coverages the test writes down.
std::vector<PIVRun> g_runs;
std::array<std::uint8_t, 16> g_coverage;
int g_row_calls = 0;

const PIVRun* ScriptedRow(void*, std::int32_t, const PIVRasterPainterInfo*, void*) {
    ++g_row_calls;
    return g_runs.data();
}

const NUBErrorObject* ScriptedInfo(NUBContainer*, const PIVRasterPainterInfo** info) {
    static const PIVRasterPainterInfo scripted = {g_coverage.data(), 0, ScriptedRow, nullptr};
    *info = &scripted;
    return nullptr;
}

struct ScriptedPainter {
    ScriptedPainter() { refhost::OverrideProcedure("PIVRasterPainter", "GetInfo", reinterpret_cast<void*>(&ScriptedInfo)); }
    ~ScriptedPainter() { refhost::RestoreProcedures(); }
};

std::int32_t g_code = 0;
const VRLp_ProgPtrCanceler g_canceler(nullptr, &g_code);

}  // namespace

TEST(PolyRasterizer, RunsAreClippedScaledAndBounded) {
    const ScriptedPainter scripted;
    const auto shape = Rectangle(0, 0, 4, 4);
    VRLp_PolyRasterizer<GW_Pixel8> rasterizer(*shape, true, 0, 1, g_canceler, nullptr);
    rasterizer.SetRenderBox({10, 0, 18, 1});
    std::array<GW_Pixel8, 9> line;
    int first = 0;
    int end = 0;
    const auto row = [&] {
        line.fill(7);
        return rasterizer.RasterizeY(0, 200, line.data(), &first, &end);
    };

    g_coverage = {9, 9, 255, 128, 1, 0, 0, 0};
    g_runs = {{0, 8}, {0, 12}, {2, 15}, {1, 16}, {5, 17}, {0, 40}};  // starts left of the box and passes it
    EXPECT_EQ(row(), 18);
    EXPECT_THAT(line, ElementsAre(0, 0, 200, 100, 1, 200, 7, 0, 7));  // an unknown kind writes nothing
    EXPECT_EQ(first, 12);
    EXPECT_EQ(end, 16);

    g_runs = {{1, 9}, {1, 99}};
    row();
    EXPECT_THAT(line, ElementsAre(200, 200, 200, 200, 200, 200, 200, 200, 7));
    EXPECT_EQ(first, 10);
    EXPECT_EQ(end, 18);

    g_runs = {{0, 18}};
    row();
    EXPECT_EQ(first, 18);
    EXPECT_EQ(end, 10);

    rasterizer.SetRenderBox({10, 0, 10, 1});
    g_row_calls = 0;
    g_runs = {{1, 10}};
    row();
    EXPECT_EQ(g_row_calls, 1);
    EXPECT_EQ(line[0], 7);
    EXPECT_EQ(first, 10);
}

TEST(PolyRasterizer, ARowBeforeTheBoxIsAFailedCheck) {
    const auto shape = Rectangle(0, 0, 4, 4);
    VRLp_PolyRasterizer<GW_Pixel16> rasterizer(*shape, true, 0, 1, g_canceler, nullptr);
    const support::QuietReports quiet;
    GW_Pixel16 line[4] = {};
    int first = -7;
    EXPECT_EQ(ThrownInt([&] { rasterizer.RasterizeY(0, 1, line, &first, &first); }), 3);
    const auto reports = refhost::TakeReports();
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].line, 272);
    EXPECT_EQ(reports[0].text, "must set SetRenderBox() before calling RasterizeY");
    EXPECT_EQ(first, -7);
}

TEST(CoverageScale, FollowsTheRoundingOfBothDepthsExactly) {
    for (std::uint32_t c = 0; c <= 255; ++c) {
        for (std::uint32_t v = 0; v <= 255; ++v)
            ASSERT_EQ(VRLp_ScaledCoverage<GW_Pixel8>(std::uint8_t(c), std::uint16_t(v)), (2 * c * v + 255) / 510)
                << c << ' ' << v;
        for (std::uint32_t v = 0; v <= 32768; v += 63) {
            const double wide = c * 32768.0 / 255;  // within half a step of it
            ASSERT_NEAR(VRLp_ScaledCoverage<GW_Pixel16>(std::uint8_t(c), std::uint16_t(v)), wide * v / 32768, 1.01)
                << c << ' ' << v;
        }
    }
    EXPECT_EQ(VRLp_ScaledCoverage<GW_Pixel8>(255, 256 + 255), 255);  // only the low 8 bits count
    EXPECT_EQ(VRLp_ScaledCoverage<GW_Pixel16>(255, 32768), 32768);
    EXPECT_EQ(VRLp_ScaledCoverage<GW_Pixel16>(254, 32768), 32640);
    EXPECT_EQ(VRLp_ScaledCoverage<GW_Pixel16>(128, 32768), 16448);
    EXPECT_EQ(VRLp_ScaledCoverage<GW_Pixel16>(0, 32768), 0);
}

template <class P>
void ExpectPacketsEqualSingles(std::uint16_t value) {
    std::mt19937 random(5);
    std::array<std::uint8_t, 200> coverage;
    for (auto& c : coverage) c = static_cast<std::uint8_t>(random());
    for (std::size_t offset = 0; offset < 20; ++offset) {
        for (std::size_t count = 0; count < 100; ++count) {
            std::array<P, 128> line;
            line.fill(P{77});
            VRLp_ScaleCoverage(coverage.data() + offset / 2, static_cast<std::int64_t>(count), value, line.data() + offset);
            for (std::size_t i = 0; i < line.size(); ++i) {
                const bool inside = i >= offset && i < offset + count;
                ASSERT_EQ(line[i], inside ? VRLp_ScaledCoverage<P>(coverage[i - offset + offset / 2], value) : P{77});
            }
        }
    }
}

TEST(CoverageScale, PacketsGiveTheSamplesOfTheScalarFormula) {
    ExpectPacketsEqualSingles<GW_Pixel8>(201);
    ExpectPacketsEqualSingles<GW_Pixel16>(32111);

    // In place: the coverage is overwritten while it is read.
    std::array<std::uint8_t, 64> line;
    for (std::size_t i = 0; i < line.size(); ++i) line[i] = static_cast<std::uint8_t>(4 * i);
    auto expected = line;
    for (auto& c : expected) c = VRLp_ScaledCoverage<GW_Pixel8>(c, 100);
    VRLp_ScaleCoverage<GW_Pixel8>(line.data(), 64, 100, line.data());
    EXPECT_EQ(line, expected);
}
