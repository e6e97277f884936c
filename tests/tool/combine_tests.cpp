#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tool/combine.h"

namespace vrltool {
namespace {

template <class P>
std::vector<P> Combined(CombineMode mode, const std::vector<P>& total, const std::vector<P>& mask) {
    const auto width = static_cast<std::int32_t>(total.size());
    GW_UnoBuffer a(width, 1, sizeof(P) * 8), b(width, 1, sizeof(P) * 8);
    std::copy(total.begin(), total.end(), a.Row<P>(0));
    std::copy(mask.begin(), mask.end(), b.Row<P>(0));
    Combine(mode, b, {0, 0, width, 1}, a);
    return {a.Row<P>(0), a.Row<P>(0) + width};
}

TEST(Combine, FollowsEachModesArithmetic) {
    const std::vector<GW_Pixel8> a8 = {0, 10, 200, 255, 128, 255}, b8 = {0, 20, 100, 255, 128, 0};
    const std::vector<GW_Pixel16> a16 = {0, 32768, 30000, 16384, 1}, b16 = {0, 32768, 10000, 16384, 16384};
    const struct {
        CombineMode mode;
        std::vector<GW_Pixel8> expected8;
        std::vector<GW_Pixel16> expected16;
    } cases[] = {
        {CombineMode::kAdd, {0, 30, 255, 255, 255, 255}, {0, 32768, 32768, 32768, 16385}},
        {CombineMode::kSubtract, {0, 0, 100, 0, 0, 255}, {0, 0, 20000, 0, 0}},
        {CombineMode::kIntersect, {0, 1, 78, 255, 64, 0}, {0, 32768, 9155, 8192, 1}},
        {CombineMode::kLighten, {0, 20, 200, 255, 128, 255}, {0, 32768, 30000, 16384, 16384}},
        {CombineMode::kDarken, {0, 10, 100, 255, 128, 0}, {0, 32768, 10000, 16384, 1}},
        {CombineMode::kDifference, {0, 10, 100, 0, 0, 255}, {0, 0, 20000, 0, 16383}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Combined(c.mode, a8, b8), c.expected8) << NameOf(c.mode);
        EXPECT_EQ(Combined(c.mode, a16, b16), c.expected16) << NameOf(c.mode);
    }
}

template <class P>
void ExpectNoMaskOutside(const M_LRect& touched) {
    constexpr std::int32_t kWidth = 5, kHeight = 4;
    for (int mode = 0; mode < 6; ++mode) {
        GW_UnoBuffer total(kWidth, kHeight, sizeof(P) * 8), mask(kWidth, kHeight, sizeof(P) * 8),
            expected(kWidth, kHeight, sizeof(P) * 8);
        for (std::int32_t i = 0; i < kWidth * kHeight; ++i) {
            const std::int32_t x = i % kWidth, y = i / kWidth;
            const bool inside = x >= touched.left && x < touched.right && y >= touched.top && y < touched.bottom;
            const auto a = static_cast<P>(40 * y + x + 1), b = static_cast<P>(100 - 9 * i / 4);
            total.Row<P>(y)[x] = a;
            mask.Row<P>(y)[x] = b;
            expected.Row<P>(y)[x] = Combined<P>(static_cast<CombineMode>(mode), {a}, {inside ? b : P{0}}).front();
        }
        Combine(static_cast<CombineMode>(mode), mask, touched, total);
        EXPECT_TRUE(std::equal(total.Row<P>(0), total.Row<P>(kHeight), expected.Row<P>(0))) << kCombineNames[mode];
    }
}

TEST(Combine, TakesTheMaskForNothingOutsideOfWhatItTouched) {
    for (const M_LRect& touched :
         {M_LRect{1, 1, 4, 3}, M_LRect{0, 0, 5, 4}, M_LRect{0, 2, 5, 4}, M_LRect{3, 3, 3, 3}, M_LRect{2, 0, 2, 4}}) {
        ExpectNoMaskOutside<GW_Pixel8>(touched);
        ExpectNoMaskOutside<GW_Pixel16>(touched);
    }
}

}  // namespace
}  // namespace vrltool
