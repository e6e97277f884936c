#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <set>

#include "host/fill_painter.h"
#include "refhost/shape/feather_points.h"
#include "render/variable_feather_rasterizer.h"
#include "tests/support/shapes.h"

namespace {

std::int32_t g_code = 0;
const VRLp_ProgPtrCanceler g_canceler(nullptr, &g_code);

std::unique_ptr<DY_Shape> FeatheredBlob(float inner, float outer) {
    auto shape = Blob(12, 60, 50, 30);
    refhost::SetFeatherPoints(*shape, {{1.5, outer}, {4.0, 0.5F * outer}, {7.25, inner}, {10.5, outer}});
    return shape;
}

template <class P>
std::vector<std::vector<P>> AllRows(VRLp_PolyRasterizer<P>& rasterizer, const M_LRect& box, std::uint16_t value) {
    rasterizer.SetRenderBox(box);
    std::vector<std::vector<P>> rows;
    for (int y = box.top; y < box.bottom; ++y) {
        auto& row = rows.emplace_back(static_cast<std::size_t>(box.right - box.left), P{99});
        int first = 0;
        int end = 0;
        EXPECT_EQ(rasterizer.RasterizeY(y, value, row.data(), &first, &end), box.right);
        const auto lit = std::find_if(row.begin(), row.end(), [](P s) { return s != 0; });
        const auto last = std::find_if(row.rbegin(), row.rend(), [](P s) { return s != 0; });
        const bool dark = lit == row.end();
        EXPECT_EQ(first, dark ? box.right : box.left + (lit - row.begin()));
        EXPECT_EQ(end, dark ? box.left : box.left + (row.rend() - last) - 1);  // the last lit column itself
    }
    return rows;
}

// Every covered pixel of every ring touched on its own.
std::vector<float> PlainAccumulation(DY_Shape& shape, float aspect, float expansion, const M_Matrix3* transform, int rings,
                                     const M_LRect& box) {
    const DY_FeatherContourMaker maker(&shape, 1 / aspect, g_canceler, expansion);
    const M_FloatRect everything = {-1e4, -1e4, 1e4, 1e4};
    const float step = static_cast<float>(1.0 / rings);
    const int width = box.right - box.left;
    std::vector<float> sums(static_cast<std::size_t>(width * (box.bottom - box.top)));
    for (int ring = 0; ring < rings; ++ring) {
        DY_ContourResults result = kContourPath;
        CGRXPath path = CGRXPath::Adopt(maker.MakeGRXPath(static_cast<float>(ring) * step, 1, &everything, &result));
        if (result != kContourPath || path.IsNull()) continue;
        if (transform != nullptr) {
            const auto& m = transform->m;
            path = path.Transformed(
                {float(m[0][0]), float(m[0][1]), float(m[1][0]), float(m[1][1]), float(m[2][0]), float(m[2][1])});
        }
        const auto painter = VRLp_FillPainter::OfPath(path.Data(), true, box);
        std::vector<std::uint8_t> line(static_cast<std::size_t>(width));
        for (int y = box.top; y < box.bottom; ++y) {
            const PIVRun* run = painter.Row(y, line.data());
            for (int x = box.left; x < box.right; ++x) {
                while (run->end <= x) ++run;
                float& sum = sums[static_cast<std::size_t>((y - box.top) * width + x - box.left)];
                if (run->kind == kPIVRunFull) sum += 255;
                if (run->kind == kPIVRunPartial) sum += *painter.Coverage(x - box.left, y - box.top);
            }
        }
    }
    return sums;
}

}  // namespace

TEST(VariableFeather, DifferencesGiveThePlainAccumulation) {
    const M_Matrix3 turned = {{{0.8, 0.6, 0}, {-0.6, 0.8, 0}, {30, -20, 1}}};
    const M_Matrix3 halved = {{{0.5, 0, 0}, {0, 0.5, 0}, {20, 10, 1}}};
    const M_LRect box = {3, -5, 118, 96};  // 101 rows: twelve bands, the last one short
    struct Case {
        const M_Matrix3* transform;
        int rings;  // ceil(23.5 / 1.0040916), fewer where a pixel's diagonal is longer in the shape's space
    };
    for (const auto& [transform, rings] : {Case{nullptr, 24}, {&turned, 24}, {&halved, 12}}) {
        for (const float aspect : {1.0F, 2.0F}) {
            const auto shape = FeatheredBlob(-9, 14.5F);
            const auto sums = PlainAccumulation(*shape, aspect, 1.5F, transform, rings, box);
            VRLp_PolyVariableFeatherRasterizer<GW_Pixel16> deep(*shape, true, 1.5F, aspect, false, g_canceler, transform);
            VRLp_PolyVariableFeatherRasterizer<GW_Pixel8> smooth(*shape, true, 1.5F, aspect, true, g_canceler, transform);
            const auto deep_rows = AllRows<GW_Pixel16>(deep, box, 20000);
            const auto smooth_rows = AllRows<GW_Pixel8>(smooth, box, 256 + 200);  // the low 8 bits count
            double largest = 0;
            for (int y = 0; y < 101; ++y) {
                for (std::size_t x = 0; x < 115; ++x) {
                    const float t = sums[static_cast<std::size_t>(y) * 115 + x] / (static_cast<float>(rings) * 255.0F);
                    largest = std::max(largest, double(t));
                    ASSERT_EQ(deep_rows[std::size_t(y)][x], GW_Pixel16(t * (20000 / 32768.0F) * 32768 + 0.5F)) << x << ' ' << y;
                    const float s = (3 - 2 * t) * (t * t);
                    ASSERT_EQ(smooth_rows[std::size_t(y)][x], GW_Pixel8(s * (200 / 255.0F) * 255 + 0.5F));
                }
            }
            EXPECT_EQ(largest, 1);
        }
    }
}

TEST(VariableFeather, BoundsGrowByWholePixelsOfTheWidestFeather) {
    const auto shape = Rectangle(20, 20, 40, 30);
    refhost::SetFeatherPoints(*shape, {{0, 10.0F}});
    const VRLp_PolyVariableFeatherRasterizer<GW_Pixel8> wide(*shape, true, 0, 1.2F, true, g_canceler, nullptr);
    EXPECT_EQ(wide.Bounds().left, 8);  // 1.2 times 10, which in double is a little more than 12 where 1.2 is a float
    EXPECT_EQ(wide.Bounds().right, 52);
    EXPECT_EQ(wide.Bounds().top, 10);
    EXPECT_EQ(wide.Bounds().bottom, 40);
}

TEST(VariableFeather, ASpanOfNothingIsOneRingAndLongSpansAreCapped) {
    const auto shape = Rectangle(10, 10, 30, 30);
    refhost::SetFeatherPoints(*shape, {{0, 0.0F}});
    VRLp_PolyVariableFeatherRasterizer<GW_Pixel8> one(*shape, true, 0, 1, true, g_canceler, nullptr);
    const auto rows = AllRows<GW_Pixel8>(one, {0, 0, 40, 40}, 255);
    EXPECT_EQ(rows[20][20], 255);
    EXPECT_EQ(rows[20][5], 0);

    // 1000 pixels of feather: a mask value changes by one ring's share at a time.
    refhost::SetFeatherPoints(*shape, {{0, 1000.0F}});
    for (const bool smooth : {false, true}) {
        VRLp_PolyVariableFeatherRasterizer<GW_Pixel16> capped(*shape, true, 0, 1, smooth, g_canceler, nullptr);
        const auto line = AllRows<GW_Pixel16>(capped, {30, 20, 1030, 21}, 32768)[0];
        const auto steps = std::adjacent_find(line.begin(), line.end(), std::less<>()) == line.end();
        EXPECT_TRUE(steps);  // never rises outwards
        const std::set<GW_Pixel16> levels(line.begin(), line.end());
        EXPECT_GT(levels.size(), smooth ? 950U : 650U);  // of 540 and 360 rings, most of which end inside a pixel
    }
}
