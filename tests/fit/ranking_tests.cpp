#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <random>

#include "fit/ranking_builder.h"
#include "tests/support/pixel_outlines.h"

namespace {

using Complex = std::complex<double>;

Complex ComplexOf(CFPoint point) { return {static_cast<double>(point.x), static_cast<double>(point.y)}; }

CFSegment ClosedChain(const support::LatticeLine& points) { return support::ChainOf(points, kSpacingUnitSteps, kChainClosed); }

// ---- A plain version of the whole ranking: direct sums, no tables, lists instead of arrays.

struct PlainSmoother {
    explicit PlainSmoother(const CFSegment& chain) : count(static_cast<std::size_t>(chain.Count())) {
        std::size_t length = 1;
        while (length < count) length *= 2;
        std::vector<Complex> samples;
        for (std::int32_t i = 0; i < chain.Count(); ++i) samples.push_back(ComplexOf(chain.Point(i)));
        const Complex middle = (samples.back() + samples.front()) / 2.0;
        samples.resize(length, middle);
        spectrum = Transformed(samples, -1.0);
    }

    static std::vector<Complex> Transformed(const std::vector<Complex>& from, double sign) {
        std::vector<Complex> to(from.size());
        const double turn = sign * 2.0 * std::numbers::pi / static_cast<double>(from.size());
        for (std::size_t k = 0; k < from.size(); ++k) {
            for (std::size_t j = 0; j < from.size(); ++j) {
                to[k] += from[j] * std::polar(1.0, turn * static_cast<double>(k * j % from.size()));
            }
        }
        return to;
    }

    double Factor(std::size_t k, double scale) const {
        const double w =
            2.0 - 2.0 * std::cos(2.0 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(spectrum.size()));
        return 1.0 / (1.0 + scale * w * w);
    }

    double Excess(double scale) const {
        double sum = 0.0;
        for (std::size_t k = 0; k < spectrum.size(); ++k) sum += std::norm(spectrum[k] * (1.0 - Factor(k, scale)));
        return sum / static_cast<double>(spectrum.size()) - static_cast<double>(count - 1) / 12.0;
    }

    double Scale() const {
        double high = 50.0;
        while (high <= 500000.0 && Excess(high) <= 0.0) high += 50.0;
        if (high > 500000.0) return 0.0;
        double low = 0.0;
        for (int i = 0; i < 60; ++i) (Excess((low + high) / 2.0) > 0.0 ? high : low) = (low + high) / 2.0;
        return low;
    }

    std::vector<Complex> Points(double scale) const {
        std::vector<Complex> product = spectrum;
        for (std::size_t k = 0; k < product.size(); ++k) product[k] *= Factor(k, scale) / static_cast<double>(product.size());
        product = Transformed(product, 1.0);
        product.resize(count);
        return product;
    }

    std::size_t count;
    std::vector<Complex> spectrum;
};

template <class Values>
auto Around(const Values& values, std::ptrdiff_t i) {
    const auto count = static_cast<std::ptrdiff_t>(values.size());
    return values[static_cast<std::size_t>((i % count + count) % count)];
}

std::vector<float> PlainCurvatures(const std::vector<Complex>& points) {
    std::vector<float> curvatures;
    for (std::ptrdiff_t i = 0; i < std::ssize(points); ++i) {
        const auto at = [&](std::ptrdiff_t offset) { return Around(points, i + offset); };
        const Complex first = (8.0 * (at(1) - at(-1)) - at(2) + at(-2)) / 12.0;
        const Complex second = (16.0 * (at(1) + at(-1)) - 30.0 * at(0) - at(2) - at(-2)) / 12.0;
        const double cubed = std::pow(std::abs(first), 3.0);
        curvatures.push_back(cubed <= 1e-6 ? 0.0F : static_cast<float>(std::imag(std::conj(first) * second) / cubed));
    }
    return curvatures;
}

std::vector<float> PlainScores(const std::vector<float>& curvatures) {
    const std::ptrdiff_t count = std::ssize(curvatures);
    const auto k = [&](std::ptrdiff_t i) { return static_cast<double>(Around(curvatures, i)); };
    std::vector<std::ptrdiff_t> marked;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const double rise = k(i) - k(i - 1), fall = k(i) - k(i + 1);
        if (std::min(rise, fall) > -1e-6 || std::max(rise, fall) < 1e-6) marked.push_back(i);
    }
    std::vector<double> sums(curvatures.size());
    for (std::ptrdiff_t i = 0; i < count && marked.size() >= 2; ++i) {
        const auto next = std::lower_bound(marked.begin(), marked.end(), i);
        const std::ptrdiff_t after = next == marked.end() ? marked.front() : *next;
        const std::ptrdiff_t before = next == marked.begin() ? marked.back() : *std::prev(next);
        std::ptrdiff_t receiver = i;
        if (after != i) {
            if (std::abs(k(i)) <= 1e-6) continue;
            // Between two extrema the values only rise or only fall, so one end at least bends like them or not at all.
            const bool like_before = k(before) * k(i) > 0.0 && std::abs(k(before)) > 1e-6;
            const bool like_after = k(after) * k(i) > 0.0 && std::abs(k(after)) > 1e-6;
            receiver = like_after && (!like_before || std::abs(k(after)) >= std::abs(k(before))) ? after : before;
        }
        sums[static_cast<std::size_t>(receiver)] += std::abs(k(i));
    }
    std::vector<float> scores;
    for (const double sum : sums) scores.push_back(static_cast<float>(sum) < 0.1F ? 0.0F : static_cast<float>(sum));
    return scores;
}

std::vector<float> PlainRanking(const CFMappedSegment& centres, double scale) {
    const CFSegment& outline = centres.Source();
    std::vector<float> ranking(static_cast<std::size_t>(outline.Count()));
    const std::vector<float> curvatures = PlainCurvatures(PlainSmoother(centres).Points(scale));
    std::vector<float> scores = PlainScores(curvatures);
    while (*std::max_element(scores.begin(), scores.end()) > 0.0F) {
        const auto best = std::max_element(scores.begin(), scores.end());
        const auto i = static_cast<std::int32_t>(best - scores.begin());
        std::vector<std::int32_t> range;
        std::int32_t k = centres.Mapping().Creator((i + centres.Count() - 1) % centres.Count());
        for (range.push_back(k); k != centres.Mapping().Creator(i); range.push_back(k)) k = (k + 1) % outline.Count();
        const auto disagreement = [&](std::int32_t r) {
            const CFPoint in = outline.Point(r) - outline.Point(r - 1), out = outline.Point(r + 1) - outline.Point(r);
            const float turn = in.x * out.y - out.x * in.y, bend = curvatures[static_cast<std::size_t>(i)];
            return bend == 0.0F ? 0 : turn == 0.0F ? 1 : (turn > 0.0F) == (bend > 0.0F) ? 0 : 2;
        };
        std::stable_sort(range.begin(), range.end(), [&](auto a, auto b) { return disagreement(a) < disagreement(b); });
        for (const std::int32_t r : range) {
            if (ranking[static_cast<std::size_t>(r)] != 0.0F) continue;
            ranking[static_cast<std::size_t>(r)] = *best;
            break;
        }
        *best = 0.0F;
    }
    return ranking;
}

// ----

TEST(NoiseSmoother, AgreesWithDirectSums) {
    CFNoiseSmoother smoother;
    for (int round = 0; round < 40; ++round) {
        const CFSegment outline = ClosedChain(support::SmoothOutline(12 + 9 * round, static_cast<std::uint32_t>(round)));
        const CFMappedSegment centres(outline);
        const PlainSmoother plain(centres);
        smoother.Smooth(centres);
        const double scale = plain.Scale();
        ASSERT_NEAR(smoother.Scale(), scale, 1e-4 + 2e-7 * scale) << round;
        const std::vector<Complex> points = plain.Points(smoother.Scale());
        const Complex origin = ComplexOf(centres.Point(0));
        for (std::size_t i = 0; i < points.size(); ++i) {
            ASSERT_NEAR(std::abs(smoother.Points()[i] + origin - points[i]), 0.0, 1e-9) << round << ' ' << i;
        }
    }
}

TEST(NoiseSmoother, AChainThatCannotMoveByTheNoiseOfTheGridStays) {
    CFNoiseSmoother smoother;
    CFSegment small(16, kSpacingGeneral, kChainClosed);
    for (std::int32_t i = 0; i < 16; ++i) small.SetPoint(i, {i % 2 == 0 ? 0.2F : 0.0F, 0.0F});
    smoother.Smooth(small);
    EXPECT_EQ(smoother.Scale(), 0.0);
    EXPECT_NEAR(smoother.Points()[1].real(), -0.2, 1e-7);
    EXPECT_THROW(smoother.Smooth(ClosedChain(support::Square(5))), int);
}

TEST(NoiseSmoother, BridgesTheGapOfABridgedChain) {
    // A level run of 5 points with a gap of 4: with the bridge's 3 points it is a to-and-fro of 8 samples, mirrored about
    // its turning points, and so is what comes out.
    CFSegment run(5, kSpacingBridged, kChainClosed);
    for (std::int32_t i = 0; i < 5; ++i) run.SetPoint(i, {static_cast<float>(i), 0.0F});
    CFNoiseSmoother smoother;
    smoother.Smooth(run);
    ASSERT_GT(smoother.Scale(), 0.0);
    const auto points = smoother.Points();
    EXPECT_NEAR(points[0].real() + points[4].real(), 4.0, 1e-9);
    EXPECT_NEAR(points[1].real() + points[3].real(), 4.0, 1e-9);
    EXPECT_NEAR(points[2].real(), 2.0, 1e-9);
    double moved = 0.0;  // the bridge mirrors the three inner points
    for (int i = 0; i < 5; ++i)
        moved += std::norm(points[static_cast<std::size_t>(i)] - Complex(i, 0.0)) * (i % 4 == 0 ? 1.0 : 2.0);
    EXPECT_NEAR(moved, 4.0 / 48.0, 1e-4);
}

TEST(ScoreExtrema, GathersStretchesThatBendTheSameWay) {
    const auto scores_of = [](const std::vector<float>& curvatures) {
        std::vector<double> scores(curvatures.size(), 9.0);
        ScoreExtrema(curvatures, scores);
        return scores;
    };
    const auto expect = [&](const std::vector<float>& curvatures, const std::vector<double>& scores) {
        const std::vector<double> found = scores_of(curvatures);
        for (std::size_t i = 0; i < scores.size(); ++i) EXPECT_NEAR(found[i], scores[i], 1e-6) << i;
    };
    // A bend to the right and one to the left.
    expect({0.0F, 0.2F, 0.5F, 0.2F, 0.0F, -0.1F, -0.3F, -0.1F}, {0, 0, 0.9, 0, 0, 0, 0.5, 0});
    // Both extrema bend the same way: the stronger one gets what lies between. The first point's stretch wraps.
    expect({0.3F, 0.6F, 0.3F, 0.1F}, {0, 1.2, 0, 0.1});
    // Extrema that do not bend leave the rest to the ones that do; equal neighbours are extrema each.
    expect({0.0F, 0.0F, 0.2F, 0.4F, 0.2F, 0.0F}, {0, 0, 0, 0.8, 0, 0});
    expect({0.25F, 0.25F, 0.25F, 0.25F}, {0.25, 0.25, 0.25, 0.25});
    expect({0.5F, -0.5F}, {0, 0});
}

TEST(Ranking, AgreesWithThePlainVersion) {
    std::mt19937 random(17);
    CFRankingBuilder builder;
    CFNoiseSmoother smoother;
    int corners = 0;
    const auto check = [&](const CFSegment& outline) {
        const CFMappedSegment centres(outline);
        const auto ranking = builder.Build(centres);
        if (centres.Count() < 4) {
            for (const float value : ranking->values) ASSERT_EQ(value, 0.0F);
            return;
        }
        smoother.Smooth(centres);
        const std::vector<float> plain = PlainRanking(centres, smoother.Scale());
        for (std::size_t i = 0; i < plain.size(); ++i) {
            ASSERT_NEAR(ranking->values[i], plain[i], 2e-6) << i;
            corners += plain[i] > 0.8F ? 1 : 0;
        }
    };
    for (int round = 0; round < 120; ++round) {
        support::Bits bits(2 + static_cast<int>(random() % 14), 2 + static_cast<int>(random() % 14));
        for (int i = 0; i < bits.width * bits.height; ++i) {
            if (random() % 100 < 75) bits.Set(i % bits.width, i / bits.width);
        }
        for (const support::LatticeLine& line : support::OutlinesOf(bits)) check(ClosedChain(line));
    }
    for (int round = 0; round < 20; ++round)
        check(ClosedChain(support::SmoothOutline(30 + 12 * round, static_cast<std::uint32_t>(round))));
    EXPECT_GT(corners, 300);
}

}  // namespace
