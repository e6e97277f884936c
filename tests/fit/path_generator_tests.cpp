#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

#include "base/errors.h"
#include "fit/outline_preparation.h"
#include "fit/path_generator.h"
#include "fit/spline_result.h"
#include "tests/support/outlines.h"
#include "tests/support/pixel_outlines.h"

namespace {

using support::ChainOf;
using support::LatticeLine;

constexpr float kCornerAngle = 72;  // degrees
constexpr std::int32_t kHalfWidth = 16;

/// An outline made ready.
struct Prepared {
    explicit Prepared(const LatticeLine& line, std::int32_t type = kChainClosed) : raw(ChainOf(line, kSpacingUnitSteps, type)) {
        if (type == kChainClosed) {
            const CFOutlineEdge edge{&raw, false, &chain};
            CFOutlinePreparer().Prepare({&edge, 1});
        } else {
            chain.derived = ts::make_auto<CFSegment>(ChainOf(line, kSpacingDerived, type));
            chain.ranking = ts::make_auto<CFRanking>(raw.Count());
        }
    }
    FitInput Input() const { return {raw, *chain.derived, *chain.ranking}; }

    CFSegment raw;
    CFPreparedChain chain;
};

RPPath Fitted(const Prepared& outline, float tolerance, float corner_angle = kCornerAngle) {
    ts::auto_ptr<RPPath> path;
    KVPathGenerator(tolerance, corner_angle, kHalfWidth).FitEdge(outline.Input(), path);
    return *path;
}

/// The two passes in the words of their description, with everything left to look at.
class TwoPasses {
 public:
    TwoPasses(const Prepared& outline, float tolerance) : tolerance_(tolerance), check_(tolerance) {
        const auto& [raw, derived, ranking] = outline.Input();
        fitter_.SetSmoothSplits(false);
        CFAnchorSet first_anchors(raw, ranking);
        std::vector<std::int32_t> candidates;
        for (std::int32_t i = 0; i < raw.Count(); ++i) {
            if (ranking.values[static_cast<std::size_t>(i)] > 0.8F) candidates.push_back(i);
        }
        CFLinTest(40, kHalfWidth).TestCandidates(CFWindow(raw, WholeBound(raw)), candidates, first_anchors);
        CFSplineResult first;
        fitter_.Fit(first_anchors, first);

        candidates.clear();
        for (const CFLocation* location : first.Locations()) candidates.push_back(location->index);
        std::sort(candidates.begin(), candidates.end());
        fitter_.SetSmoothSplits(true);
        CFAnchorSet second_anchors(raw, ranking);
        CFQuadTest(kCornerAngle, kHalfWidth).TestCandidates(CFWindow(derived, WholeBound(derived)), candidates, second_anchors);
        fitter_.Fit(second_anchors, result);
        CFMergeRemover(fitter_).Remove(result, true);
    }

    /// Checks what holds for every result; gives the number of spans longer than two points that are not near enough.
    int ExpectSound() {
        int far = 0;
        for (auto location = result.begin(); location != result.end(); ++location) {
            const CFResult* const curve = (*location)->after.get();
            if (curve == nullptr) continue;
            const auto next = std::next(location) == result.end() ? result.begin() : std::next(location);
            EXPECT_EQ(curve->StartIndex(), (*location)->index);
            EXPECT_EQ(curve->EndIndex(), (*next)->index);
            EXPECT_EQ(curve->StartsAtCorner(), (*location)->corner);
            EXPECT_EQ(curve->EndsAtCorner(), (*next)->corner);
            EXPECT_EQ((*next)->before, curve);
            EXPECT_EQ(curve->Curve().Control(0), curve->View().Window().Segment().Point(curve->StartIndex()));
            for (int i = 0; i < 8; ++i) EXPECT_TRUE(std::isfinite(i < 4 ? curve->Curve().x[i] : curve->Curve().y[i - 4]));
            far += IsNear(*curve) ? 0 : 1;
        }
        return far;
    }

    CFSplineResult result;

 private:
    bool IsNear(const CFResult& fitted) const {
        const CFWindow& window = fitted.View().Window();
        for (std::int32_t j = 0; j < window.Count() && window.Count() > 2; ++j) {
            const CFPoint p = fitted.Curve().At(fitted.View().Parameters()[j]), q = window.Point(j);
            if (std::hypot(p.x - q.x, p.y - q.y) > tolerance_ * 1.0001F) return false;
        }
        return true;
    }

    float tolerance_;
    CFQuadEstimator estimator_{kHalfWidth};
    CFEvalCheck check_;
    CF1CurveFitter fitter_{tolerance_, &estimator_, &check_};
};

/// Distance of every outline point to the path, sampled; the largest.
double Furthest(const LatticeLine& line, const RPPath& path) {
    std::vector<CFPoint> samples;
    for (std::size_t i = 0; i + (path.closed ? 0U : 1U) < path.anchors.size(); ++i) {
        const RPAnchor &a = path.anchors[i], &b = path.anchors[(i + 1) % path.anchors.size()];
        for (int k = 0; k < 200; ++k)
            samples.push_back(CFBezier3(a.position, a.out, b.in, b.position).At(static_cast<float>(k) / 200));
    }
    double furthest = 0;
    for (const CFPoint p : line) {
        double nearest = 1e9;
        for (const CFPoint q : samples)
            nearest = std::min(nearest, std::hypot(static_cast<double>(p.x - q.x), static_cast<double>(p.y - q.y)));
        furthest = std::max(furthest, nearest);
    }
    return furthest;
}

LatticeLine Spiral() {
    return support::Staircase(
        [](double t) {
            const double angle = 20 * t, r = 10 + 60 * t;
            return CFPoint{static_cast<float>(r * std::cos(angle)), static_cast<float>(r * std::sin(angle))};
        },
        200000, false);
}

/// Steps of random lengths down a slope, and straight back.
LatticeLine Stairs(std::uint32_t seed) {
    std::mt19937 random(seed);
    LatticeLine line = {{0, 0}};
    const auto go = [&](float dx, float dy, std::uint32_t steps) {
        for (; steps > 0; --steps) line.push_back(line.back() + CFPoint{dx, dy});
    };
    for (int i = 0; i < 12; ++i) {
        go(1, 0, 1 + static_cast<std::uint32_t>(random() % 9));
        go(0, 1, 1 + static_cast<std::uint32_t>(random() % 5));
    }
    go(-1, 0, static_cast<std::uint32_t>(line.back().x));
    go(0, -1, static_cast<std::uint32_t>(line.back().y) - 1);
    return line;
}

std::vector<LatticeLine> ClosedOutlines() {
    std::vector<LatticeLine> lines = {{{0, 0}, {1, 0}, {1, 1}, {0, 1}}, {{0, 0}, {1, 0}, {2, 0}, {2, 1}, {1, 1}, {0, 1}}};
    for (std::uint32_t seed = 1; seed <= 12; ++seed) {
        lines.push_back(support::SmoothOutline(30 << seed % 6, seed));
        lines.push_back(Stairs(seed));
        lines.push_back(support::NoisyOutline(12, seed));
    }
    for (const char32_t character : U"agR&8%") {
        if (character == 0) continue;
        for (const LatticeLine& line : support::OutlinesOf(support::GlyphBits(support::kSerifBold, character, 100)))
            lines.push_back(line);
    }
    return lines;
}

TEST(PathGenerator, TwoPassLawsHoldForEveryKindOfOutline) {
    int far = 0, curves = 0;
    for (const LatticeLine& line : ClosedOutlines()) {
        for (const float tolerance : {0.5F, 1.0F, 2.0F}) {
            SCOPED_TRACE(testing::Message() << line.size() << " points at " << tolerance);
            const Prepared outline(line);
            TwoPasses passes(outline, tolerance);
            far += passes.ExpectSound();
            curves += static_cast<int>(passes.result.Locations().size());
            EXPECT_TRUE(passes.result.IsClosed());
            const RPPath path = Fitted(outline, tolerance);
            EXPECT_EQ(path.anchors, RPPath(passes.result).anchors) << "the generator is these two passes";
            EXPECT_EQ(path.anchors, Fitted(outline, tolerance).anchors) << "the same on every run";
        }
    }
    EXPECT_EQ(far, 0) << "of " << curves << ": only the depth limit excuses a span that is too far, and none here is that deep";
    EXPECT_GT(curves, 1000);
}

TEST(PathGenerator, OpenEdgesEndAtCorners) {
    for (const LatticeLine& line : {Spiral(), LatticeLine{{4, 4}, {5, 4}}, LatticeLine{{4, 4}, {5, 4}, {5, 5}}}) {
        const Prepared edge(line, kChainOpen);
        TwoPasses passes(edge, 1);
        EXPECT_EQ(passes.ExpectSound(), 0);
        const RPPath path = Fitted(edge, 1);
        EXPECT_FALSE(path.closed);
        EXPECT_EQ(path.anchors, RPPath(passes.result).anchors);
        EXPECT_EQ(path.anchors.front().position, line.front());
        EXPECT_EQ(path.anchors.back().position, line.back());
        EXPECT_TRUE(path.anchors.front().corner && path.anchors.back().corner);
    }
}

TEST(PathGenerator, WalkingBackFitsAsWell) {
    for (std::uint32_t seed = 1; seed <= 6; ++seed) {
        LatticeLine line = Spiral();
        line.resize(100 * seed + 50);
        const RPPath there = Fitted(Prepared(line, kChainOpen), 1);
        std::reverse(line.begin(), line.end());
        const RPPath back = Fitted(Prepared(line, kChainOpen), 1);
        EXPECT_NEAR(static_cast<double>(there.anchors.size()), static_cast<double>(back.anchors.size()),
                    2.0 + 0.3 * static_cast<double>(there.anchors.size()));
        EXPECT_LT(Furthest(line, there), 1.1);
        EXPECT_LT(Furthest(line, back), 1.1);
    }
}

TEST(PathGenerator, ADiscTakesFewSmoothCurves) {
    const LatticeLine line = support::Disc(50);
    const RPPath path = Fitted(Prepared(line), 1);
    EXPECT_EQ(path.anchors.size(), 7U);
    EXPECT_TRUE(std::none_of(path.anchors.begin(), path.anchors.end(), [](const RPAnchor& a) { return a.corner; }));
    EXPECT_LT(Furthest(line, path), 1.1);
}

TEST(PathGenerator, ASquareKeepsItsFourCornersAtALowAngle) {
    support::Bits bits(40, 40);
    for (int i = 0; i < 40 * 40; ++i) bits.Set(i % 40, i / 40);
    const RPPath path = Fitted(Prepared(support::OutlinesOf(bits).front()), 1, 45);
    int corners = 0;
    for (const RPAnchor& anchor : path.anchors) {
        if (!anchor.corner) continue;
        ++corners;
        for (const float value : {anchor.position.x, anchor.position.y})
            EXPECT_LE(std::min(value, 40 - value), 2) << "near a corner";
    }
    EXPECT_EQ(corners, 4);
}

TEST(PathGenerator, RefusesWhatDoesNotBelongTogether) {
    const Prepared outline(support::Disc(9)), other(support::Disc(12));
    KVPathGenerator generator(1, kCornerAngle, kHalfWidth);
    ts::auto_ptr<RPPath> path = ts::make_auto<RPPath>();
    const RPPath* const before = path.get();
    EXPECT_THROW(generator.FitEdge({outline.raw, *other.chain.derived, *outline.chain.ranking}, path), int);
    EXPECT_THROW(generator.FitEdge({outline.raw, *outline.chain.derived, *other.chain.ranking}, path), int);
    EXPECT_EQ(path.get(), before) << "a failure changes nothing";
    EXPECT_THROW(KVPathGenerator(1, kCornerAngle, 0), int);
}

}  // namespace
