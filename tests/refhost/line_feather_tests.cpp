#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

#include "base/fixed16.h"
#include "host/image.h"
#include "refhost/image/line_feather.h"

namespace {

constexpr unsigned char kQualities[] = {0, 1};

std::int32_t ToFixed(double radius) { return static_cast<std::int32_t>(std::lround(radius * kFixedOne)); }

/// Feathers `line` and checks that nothing behind its end is touched. Without hints it is all coverage.
template <class P>
std::vector<P> Feather(std::vector<P> line, unsigned char quality, double radius, std::int32_t lo, std::int32_t hi) {
    const auto length = static_cast<std::int32_t>(line.size());
    std::vector<P> scratch(line.size() + 1);
    line.push_back(113);
    const GW_FeatherLineProc feather = sizeof(P) == 1 ? refhost::FeatherLine8 : refhost::FeatherLine16;
    EXPECT_EQ(feather(quality, length, lo, hi, ToFixed(radius), scratch.data(), line.data()), 0);
    EXPECT_EQ(line.back(), 113);
    line.pop_back();
    return line;
}

template <class P>
std::vector<P> Feather(const std::vector<P>& line, unsigned char quality, double radius) {
    return Feather(line, quality, radius, -1, static_cast<std::int32_t>(line.size()) + 1);
}

// The slow plain version: every sample of every box summed up on its own, nothing skipped.
struct PlainBoxes {
    std::int64_t count, reach;
    double edge;
};

PlainBoxes BoxesFor(bool fine, double radius) {
    for (std::int64_t count = fine ? 4 : 2;; --count) {
        const double v = radius * radius / static_cast<double>(count);
        double b = 1.0;
        while (b * (b + 1.0) < v) ++b;
        const auto reach = static_cast<std::int64_t>(b);
        if (count > 2 && static_cast<double>(count * reach) > 2.0 * std::ceil(radius)) continue;
        return {count, reach, (2.0 * b - 1.0) * (v - b * (b - 1.0)) / (2.0 * (3.0 * b * b - v))};
    }
}

template <class P>
std::vector<P> PlainFeather(const std::vector<P>& line, unsigned char quality, double radius) {
    const auto [count, reach, edge] = BoxesFor(quality != 0, ToFixed(radius) / 65536.0);
    const double width = static_cast<double>(2 * reach - 1) + 2.0 * edge;
    const double scale = sizeof(P) == 1 ? 4112.0 : 32.0;
    std::vector<std::int64_t> now(line.begin(), line.end());
    now.insert(now.begin(), static_cast<std::size_t>(count * reach), 0);
    now.resize(now.size() + static_cast<std::size_t>(count * reach), 0);
    const auto size = static_cast<std::int64_t>(now.size());
    for (std::int64_t box = 1; box <= count; ++box) {
        const double gain = (box == 1 ? scale : box == count ? 1.0 / scale : 1.0) / width;
        const auto inner = static_cast<float>(gain * (1.0 - edge)), outer = static_cast<float>(gain * edge);
        std::vector<std::int64_t> next;
        for (std::int64_t i = 0; i < size; ++i) {
            const auto sum = [&](std::int64_t far) {
                return std::accumulate(now.begin() + std::max<std::int64_t>(i - far, 0),
                                       now.begin() + std::min(i + far + 1, size), std::int64_t{0});
            };
            next.push_back(std::lrint(static_cast<float>(sum(reach - 1)) * inner + static_cast<float>(sum(reach)) * outer));
        }
        now = next;
    }
    return {now.begin() + count * reach, now.end() - count * reach};
}

/// Plateaus and ramps of random lengths, some of a sample or two, some far apart.
template <class P>
std::vector<P> RandomLine(std::mt19937& random, std::size_t length) {
    constexpr std::uint32_t max = SampleTraits<P>::kMax;
    std::vector<P> line;
    while (line.size() < length) {
        const auto value = random() % 3 == 0 ? random() % (max + 1) : random() % 2 * max;
        line.resize(std::min(length, line.size() + 1 + random() % (random() % 2 ? 4 : 400)), static_cast<P>(value));
    }
    return line;
}

template <class P>
class LineFeather : public ::testing::Test {};
using Depths = ::testing::Types<GW_Pixel8, GW_Pixel16>;
TYPED_TEST_SUITE(LineFeather, Depths);

TEST(LineFeatherByHand, SmallKernelsHaveTheirRationalWeights) {
    // r = 2, two boxes of three samples: 1 2 3 2 1 over 9. Edges lose what falls outside the line.
    const std::vector<GW_Pixel8> two = {255, 0, 0, 255, 0, 0, 0};
    EXPECT_EQ(Feather(two, 0, 2.0), (std::vector<GW_Pixel8>{85, 85, 85, 85, 57, 28, 0}));
    // r = 3 with quality: four boxes would reach 8 samples, so three of 1 6 6 6 1 over 20.
    std::vector<GW_Pixel16> impulse(15, 0), cube;
    impulse[7] = 32768;
    for (const int weight : {0, 1, 18, 126, 450, 975, 1548, 1764, 1548, 975, 450, 126, 18, 1, 0}) {
        cube.push_back(static_cast<GW_Pixel16>(std::lround(weight * 32768 / 8000.0)));
    }
    EXPECT_EQ(Feather(impulse, 1, 3.0), cube);
}

TYPED_TEST(LineFeather, EqualsThePlainVersionToTheBit) {
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        const std::size_t length = 1 + random() % (round % 3 == 0 ? 20 : 1500);
        const double radius = std::exp(std::uniform_real_distribution(-4.0, 5.3)(random));
        const std::vector<TypeParam> line = RandomLine<TypeParam>(random, length);
        for (const unsigned char quality : kQualities) {
            ASSERT_EQ(Feather(line, quality, radius), PlainFeather(line, quality, radius))
                << "round " << round << ", quality " << int{quality} << ", radius " << radius << ", length " << length;
        }
    }
}

// A shape that runs past the top of the frame has coverage outside the hints: it counts, but is not written.
TYPED_TEST(LineFeather, HintsBoundOnlyWhatIsWritten) {
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min(), most = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t length = 300;
    const std::pair<std::int32_t, std::int32_t> hints[] = {{-1, length + 1}, {-1, 1},    {150, 151}, {299, 301}, {100, 90},
                                                           {400, 500},       {-90, -50}, {0, most},  {least, 9}, {most, least}};
    std::mt19937 random(11);
    for (int round = 0; round < 400; ++round) {
        const auto& [lo, hi] = hints[round % 10];
        const double radius = round % 3 == 0 ? 7.3 : 2.0;
        for (const unsigned char quality : kQualities) {
            const auto [count, reach, edge] = BoxesFor(quality != 0, radius);
            std::vector<TypeParam> expected = RandomLine<TypeParam>(random, length);
            const std::vector<TypeParam> line = expected, all = PlainFeather(line, quality, radius);
            for (std::int64_t i = std::max<std::int64_t>(lo - count * reach, 0); i < length && i < hi + count * reach; ++i) {
                expected[static_cast<std::size_t>(i)] = all[static_cast<std::size_t>(i)];
            }
            EXPECT_EQ(Feather(line, quality, radius, lo, hi), expected)
                << lo << " to " << hi << ", quality " << int{quality} << ", radius " << radius;
        }
    }
}

TYPED_TEST(LineFeather, TheLargestRadiusNeitherOverflowsNorLosesThePlateau) {
    constexpr TypeParam max = SampleTraits<TypeParam>::kMax;
    constexpr double largest = std::numeric_limits<std::int32_t>::max() / 65536.0 - 1e-5;
    for (const unsigned char quality : kQualities) {
        const std::vector<TypeParam> soft = Feather(std::vector<TypeParam>(140000, max), quality, largest);
        EXPECT_EQ(soft[70000], max);
        EXPECT_NEAR(soft.front(), max / 2, 2);
        EXPECT_NEAR(soft.back(), max / 2, 2);
        EXPECT_TRUE(std::is_sorted(soft.begin(), soft.begin() + 70000));
        EXPECT_EQ(Feather(std::vector<TypeParam>{max}, quality, largest).front(), max > 255 ? 1 : 0);  // 0.7 of a level
    }
}

TEST(LineFeatherArguments, RefusesNegativeRadiiAndMissingLines) {
    GW_Pixel16 line[] = {0, 32768, 0}, scratch[3] = {};
    for (const GW_FeatherLineProc feather : {refhost::FeatherLine8, refhost::FeatherLine16}) {
        EXPECT_EQ(feather(1, 3, 0, 3, -1, scratch, line), refhost::kStatusBadArgument);
        EXPECT_EQ(feather(1, 3, 0, 3, std::numeric_limits<std::int32_t>::min(), scratch, line), refhost::kStatusBadArgument);
        EXPECT_EQ(feather(1, 3, 0, 3, kFixedOne, nullptr, line), refhost::kStatusBadArgument);
        EXPECT_EQ(feather(1, 3, 0, 3, kFixedOne, scratch, nullptr), refhost::kStatusBadArgument);
        EXPECT_EQ(feather(1, 3, 0, 3, 0, scratch, line), 0);
        EXPECT_EQ(feather(1, 0, -1, 1, kFixedOne, nullptr, nullptr), 0);
        EXPECT_EQ(feather(1, std::numeric_limits<std::int32_t>::min(), -1, 1, kFixedOne, nullptr, nullptr), 0);
    }
    EXPECT_EQ(line[1], 32768);
}

}  // namespace
