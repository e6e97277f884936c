#include <gmock/gmock.h>

#include <cmath>
#include <random>

#include "base/errors.h"
#include "fit/curve_equations.h"
#include "fit/curve_fitter.h"
#include "fit/curve_refinement.h"
#include "fit/curve_view_proxy.h"
#include "fit/spline_result.h"
#include "tests/support/pixel_outlines.h"

namespace {

using support::ChainOf;
using support::LatticeLine;
using testing::Each;
using testing::ElementsAre;
using testing::Ge;

const CFTangentConstraint kCorner(false, {});

ts::auto_ptr<CFWindow> Span(const CFSegment& chain, std::int32_t start, std::int32_t end) {
    return ts::make_auto<CFWindow>(chain, ts::make_auto<CFOpenBound>(chain, start, end));
}

CF1CurveView ViewOf(const CFSegment& chain, CFTangentConstraint start = kCorner, CFTangentConstraint end = kCorner) {
    return {Span(chain, 0, chain.Count() - 1), start, end, ts::make_auto<CFMidpointRule>()};
}

/// The same with parameters of its own.
CF1CurveView ViewAt(const CFSegment& chain, std::vector<float> ts, CFTangentConstraint start, CFTangentConstraint end) {
    const CF1CurveViewConstraints constraints{CFPointConstraint(chain.Point(0)),
                                              CFPointConstraint(chain.Point(chain.Count() - 1)), start, end};
    return {Span(chain, 0, chain.Count() - 1), CFTVals({ts.begin(), ts.end()}), constraints, ts::make_auto<CFMidpointRule>()};
}

LatticeLine PointsOf(const CFBezier3& curve, std::int32_t count) {
    LatticeLine points;
    for (std::int32_t j = 0; j < count; ++j) points.push_back(curve.At(static_cast<float>(j) / static_cast<float>(count - 1)));
    return points;
}

double Wide(float value) { return static_cast<double>(value); }

double Distance(CFPoint a, CFPoint b) { return std::hypot(Wide(a.x - b.x), Wide(a.y - b.y)); }

double FurthestControl(const CFBezier3& a, const CFBezier3& b) {
    double furthest = 0;
    for (int i = 0; i < 4; ++i) furthest = std::max(furthest, Distance(a.Control(i), b.Control(i)));
    return furthest;
}

// --- The least squares of one span ---

CFBezier3 Fit(CFCurveEquations& equations, const CF1CurveView& view) { return equations.Fit(view.Points(), view.Constraints()); }

/// Plain least squares in double: the handles are P0 and P3 plus sums of unknown multiples of directions.
CFBezier3 PlainFit(const CF1CurveView& view) {
    using Vector = std::array<double, 2>;
    struct Unknown {
        bool end;
        Vector direction;
    };
    std::vector<Unknown> unknowns;
    const CF1CurveViewConstraints& c = view.Constraints();
    for (const bool end : {false, true}) {
        const CFTangentConstraint& tangent = end ? c.end_tangent : c.start_tangent;
        if (tangent.active) {
            unknowns.push_back({end, {Wide(tangent.value.x), Wide(tangent.value.y)}});
        } else {
            unknowns.push_back({end, {1, 0}});
            unknowns.push_back({end, {0, 1}});
        }
    }
    const std::size_t n = unknowns.size();
    std::vector<std::vector<double>> rows(n, std::vector<double>(n + 1));
    for (std::int32_t j = 0; j < view.Window().Count(); ++j) {
        const double t = Wide(view.Parameters()[j]), s = 1 - t;
        const double b[4] = {s * s * s, 3 * t * s * s, 3 * t * t * s, t * t * t};
        const CFPoint p = view.Window().Point(j);
        const double left_x = Wide(p.x) - (b[0] + b[1]) * Wide(c.start.value.x) - (b[2] + b[3]) * Wide(c.end.value.x);
        const double left_y = Wide(p.y) - (b[0] + b[1]) * Wide(c.start.value.y) - (b[2] + b[3]) * Wide(c.end.value.y);
        for (std::size_t r = 0; r < n; ++r) {
            const Unknown& u = unknowns[r];
            for (std::size_t k = 0; k < n; ++k) {
                const Unknown& v = unknowns[k];
                rows[r][k] +=
                    b[u.end ? 2 : 1] * b[v.end ? 2 : 1] * (u.direction[0] * v.direction[0] + u.direction[1] * v.direction[1]);
            }
            rows[r][n] += b[u.end ? 2 : 1] * (u.direction[0] * left_x + u.direction[1] * left_y);
        }
    }
    for (std::size_t k = 0; k < n; ++k) {  // positive definite: no pivoting needed
        for (std::size_t r = 0; r < n; ++r) {
            if (r == k) continue;
            const double factor = rows[r][k] / rows[k][k];
            for (std::size_t i = k; i <= n; ++i) rows[r][i] -= factor * rows[k][i];
        }
    }
    Vector handles[2] = {{Wide(c.start.value.x), Wide(c.start.value.y)}, {Wide(c.end.value.x), Wide(c.end.value.y)}};
    for (std::size_t k = 0; k < n; ++k) {
        for (std::size_t i = 0; i < 2; ++i)
            handles[unknowns[k].end ? 1 : 0][i] += rows[k][n] / rows[k][k] * unknowns[k].direction[i];
    }
    const auto narrow = [](Vector v) { return CFPoint{static_cast<float>(v[0]), static_cast<float>(v[1])}; };
    return {c.start.value, narrow(handles[0]), narrow(handles[1]), c.end.value};
}

TEST(CurveEquations, AgreeWithPlainLeastSquaresInDouble) {
    std::mt19937 random(3);
    const auto uniform = [&](double from, double to) {
        return static_cast<float>(std::uniform_real_distribution(from, to)(random));
    };
    CFCurveEquations equations;
    for (int round = 0; round < 200; ++round) {
        const std::int32_t count = 7 + static_cast<std::int32_t>(random() % 400);
        LatticeLine points;
        std::vector<float> ts;
        for (std::int32_t j = 0; j < count; ++j) {
            const float along = static_cast<float>(j);
            points.push_back({900 + along + uniform(-1, 1), 40 * std::sin(along / 60) + uniform(-1, 1)});
            ts.push_back(std::clamp((along + uniform(-0.5, 0.5)) / static_cast<float>(count - 1), 0.0F, 1.0F));
        }
        ts.front() = 0;
        ts.back() = 1;
        const CFSegment chain = ChainOf(points, kSpacingUnitSteps, kChainOpen);
        const CFTangentConstraint start(random() % 2 == 0, {uniform(5, 20), uniform(-9, 9)}),
            end(random() % 2 == 0, {uniform(5, 20), 3});
        const CF1CurveView view = ViewAt(chain, ts, start, end);
        EXPECT_LT(FurthestControl(Fit(equations, view), PlainFit(view)), 1e-3) << round;
    }
}

TEST(CurveEquations, WhatThePointsDoNotFixIsAStraightLine) {
    const CFSegment chain = ChainOf({{3, 3}, {4, 3}, {5, 3}, {6, 3}, {7, 3}, {8, 3}, {9, 3}}, kSpacingUnitSteps, kChainOpen);
    const CFTangentConstraint no_direction(true, {}), not_a_number(true, {std::nanf(""), 1});
    CFCurveEquations equations;
    for (const auto& [start, end] :
         {std::pair{no_direction, no_direction}, std::pair{kCorner, no_direction}, std::pair{not_a_number, kCorner}}) {
        EXPECT_LT(FurthestControl(Fit(equations, ViewOf(chain, start, end)), CFBezier3({3, 3}, {5, 3}, {7, 3}, {9, 3})), 1e-6);
    }
    const CFSegment heap = ChainOf(LatticeLine(9, {4, 4}), kSpacingUnitSteps, kChainOpen);
    EXPECT_LT(FurthestControl(Fit(equations, ViewOf(heap, kCorner, no_direction)), CFBezier3({4, 4}, {4, 4}, {4, 4}, {4, 4})),
              1e-6);
}

// --- Short spans ---

TEST(CurveViewProxy, AddsPointsToSpansOfTwoAndThreeAndSmoothsAll) {
    const auto proxy_of = [](const LatticeLine& points) {
        const CFSegment chain = ChainOf(points, kSpacingUnitSteps, kChainOpen);
        return CF1CurveViewProxy(*Span(chain, 0, chain.Count() - 1));
    };
    const CF1CurveViewProxy proxy_of_two = proxy_of({{0, 0}, {3, 0}}), proxy_of_three = proxy_of({{0, 0}, {2, 2}, {4, 0}});
    const CFCurvePoints of_two = proxy_of_two.Points(), of_three = proxy_of_three.Points();
    ASSERT_EQ(of_two.count, 4);
    for (int j = 0; j < 4; ++j) {
        EXPECT_NEAR(of_two.xs[j], static_cast<float>(j), 1e-5F) << "straight points do not move";
        EXPECT_FLOAT_EQ(of_two.ts[j], static_cast<float>(j) / 3);
    }

    // One inner point between fixed ends: every sweep moves it by a share of its way to the middle, (2, 0).
    ASSERT_EQ(of_three.count, 5);
    double y[5] = {0, 1, 2, 1, 0};
    for (const double factor : {0.47464985, -0.48618832, 0.47464985, -0.48618832, 0.47464985}) {
        for (int j = 1; j < 4; ++j) y[j] -= factor * (y[j] - (y[j - 1] + y[j + 1]) / 2);
    }
    for (int j = 0; j < 5; ++j) EXPECT_NEAR(of_three.ys[j], y[j], 1e-5);
    EXPECT_EQ(proxy_of({{0, 0}, {1, 0}, {1, 1}, {2, 1}, {2, 2}, {3, 2}}).Points().count, 6);
}

// --- The search for the nearest parameter ---

class Polynomial : public CFNewtonFunc {
 public:
    explicit Polynomial(std::vector<float> factors) : factors_(std::move(factors)) {}
    void Evaluate(float t, float& f, float& df) const override {
        f = df = 0;
        for (auto factor = factors_.rbegin(); factor != factors_.rend(); ++factor) {
            df = df * t + f;
            f = f * t + *factor;
        }
    }

 private:
    std::vector<float> factors_;  // of 1, t, t^2, ...
};

TEST(FindRoot, StaysInItsBracket) {
    EXPECT_NEAR(FindRoot(Polynomial({-0.3F, 1}), 0, 1, 0.9F), 0.3F, 1e-6F);
    EXPECT_NEAR(FindRoot(Polynomial({0.3F, -1}), 0, 1, 0.9F), 0.3F, 1e-6F) << "falling";
    EXPECT_EQ(FindRoot(Polynomial({1, 1}), 0.2F, 0.6F, 0.4F), 0.2F) << "positive at both ends, least at the first";
    EXPECT_EQ(FindRoot(Polynomial({-2, 1}), 0.2F, 0.6F, 0.4F), 0.6F);
    EXPECT_EQ(FindRoot(Polynomial({1}), 0.2F, 0.6F, 0.4F), 0.6F) << "a tie goes to the second end";
    EXPECT_EQ(FindRoot(Polynomial({0.3F, -1, 1}), 0, 1, 0.5F), 0.5F) << "between the ends it is less";
    EXPECT_EQ(FindRoot(Polynomial({0, 1}), 0, 1, 0.5F), 0.0F) << "a root at an end";
    EXPECT_EQ(FindRoot(Polynomial({-1, 1}), 0, 1, 0.5F), 1.0F);
    EXPECT_EQ(FindRoot(Polynomial({-0.125F, 0.75F, -1.5F, 1}), 0, 1, 0.5F), 0.5F) << "a triple root: no derivative either";
    // Level at the start, so the first step halves the bracket, to where the search already is.
    EXPECT_NEAR(FindRoot(Polynomial({-0.189F, 0.75F, -1.5F, 1}), 0, 1, 0.5F), 0.9F, 1e-3F);
}

/// Refinement in plain words, one point at a time.
std::vector<float> PlainlyRefined(const CFBezier3& curve, const CFWindow& window, const CFTVals& from) {
    const auto count = static_cast<std::size_t>(from.Count());
    const float reach = 1.0F / static_cast<float>(count - 1);
    std::vector<float> ts;
    for (std::int32_t j = 0; j < from.Count(); ++j) {
        const float lo = std::max(from[j] - reach, 0.0F), hi = std::min(from[j] + reach, 1.0F);
        ts.push_back(FindRoot(CFRefineFunc(curve, window.Point(j)), lo, hi, from[j]));
    }
    for (std::size_t j = 1; j < count; ++j) {
        const float t = ts[j], before = ts[j - 1];
        if (t >= before) continue;
        ts[j] = before;
        if (j == 1 || t >= ts[j - 2]) ts[j - 1] = t;
    }
    const float grid = 4.0F * static_cast<float>(count - 1);
    for (float& t : ts) t = std::min(static_cast<float>(std::floor(static_cast<double>(t * grid + 0.5F))), grid) / grid;
    ts.front() = 0;
    ts.back() = 1;
    return ts;
}

TEST(RefineParameters, BringsTheCurveNearerInOrderOnTheGridWhateverTheBlocks) {
    std::mt19937 random(5);
    const auto uniform = [&](double from, double to) {
        return static_cast<float>(std::uniform_real_distribution(from, to)(random));
    };
    int nearer = 0;
    constexpr int kRounds = 300;
    for (int round = 0; round < kRounds; ++round) {
        const CFBezier3 cubic({0, 0}, {uniform(-20, 60), uniform(-60, 60)}, {uniform(20, 90), uniform(-60, 60)}, {90, 10});
        const std::int32_t count = 7 + static_cast<std::int32_t>(random() % 65);
        LatticeLine points = PointsOf(cubic, count);
        for (CFPoint& p : points) p = {std::round(p.x * 2) / 2, p.y + uniform(-2, 2)};
        const CFSegment chain = ChainOf(points, kSpacingUnitSteps, kChainOpen);
        CF1CurveView view = ViewOf(chain);
        CFTVals& ts = view.Parameters();
        const auto sum_of_squares = [&] {
            double sum = 0;
            for (std::int32_t j = 0; j < count; ++j) sum += std::pow(Distance(cubic.At(ts[j]), chain.Point(j)), 2);
            return sum;
        };
        const double before = sum_of_squares();
        const std::vector<float> expected = PlainlyRefined(cubic, view.Window(), ts);
        RefineParameters(cubic, view.Window(), ts);
        EXPECT_EQ(std::vector<float>(ts.Data(), ts.Data() + count), expected) << round;
        nearer += sum_of_squares() <= before ? 1 : 0;
    }
    EXPECT_GE(nearer, kRounds * 97 / 100) << "only the grid and the order can move a point away";
}

TEST(ParameterSearches, FindTheSameOnEveryProcessor) {
    const CFBezier3 cubic({0, 0}, {30, -40}, {70, 50}, {90, 10});
    for (std::int32_t count = 4; count < 40; ++count) {
        LatticeLine line = PointsOf(cubic, count);
        for (CFPoint& p : line) p = {std::round(p.x), std::round(p.y)};
        const CFSegment chain = ChainOf(line, kSpacingUnitSteps, kChainOpen);
        std::vector<float> expected;
        for (const CFParameterSearch search : ParameterSearches()) {
            CFTVals ts(chain.X(), chain.Y(), count, kSpacingGeneral);
            search(CurvePowers(cubic), {count, chain.X(), chain.Y(), ts.Data()}, &ts[0]);
            const std::vector<float> found(ts.Data(), ts.Data() + count);
            if (expected.empty()) expected = found;
            EXPECT_EQ(found, expected) << count;
        }
    }
}

TEST(RefineParameters, LeavesFewPointsAloneAndEndsOnChordLengthsForALittleMore) {
    const CFBezier3 straight({0, 0}, {2, 0}, {4, 0}, {6, 0});
    const LatticeLine points = {{0, 0}, {1, 0}, {2, 0}, {4, 0}, {6, 0}};
    for (const std::size_t count : {3U, 4U, 5U}) {
        LatticeLine part(points.begin(), points.begin() + static_cast<std::ptrdiff_t>(count));
        const CFSegment chain = ChainOf(part, kSpacingUnitSteps, kChainOpen);
        CF1CurveView view = ViewOf(chain);
        RefineParameters(straight, view.Window(), view.Parameters());
        for (std::int32_t j = 0; j < chain.Count(); ++j) {
            const float even = static_cast<float>(j) / static_cast<float>(count - 1),
                        chord = part[static_cast<std::size_t>(j)].x / part.back().x;
            EXPECT_FLOAT_EQ(view.Parameters()[j], count < 4 ? even : chord) << count;
        }
    }
    // All points at one place: every value of the function is a root, so each search ends where it starts to look.
    const CFSegment heap = ChainOf(LatticeLine(12, {5, 5}), kSpacingUnitSteps, kChainOpen);
    CF1CurveView view = ViewOf(heap);
    RefineParameters(CFBezier3({5, 5}, {5, 5}, {5, 5}, {5, 5}), view.Window(), view.Parameters());
    for (std::int32_t j = 0; j < 12; ++j)
        EXPECT_FLOAT_EQ(view.Parameters()[j], j == 11 ? 1.0F : static_cast<float>(std::max(j - 1, 0)) / 11);
}

// --- The fidelity check ---

TEST(EvalCheck, PassesUpToTheDistanceAtEveryPoint) {
    const CFBezier3 level({0, 0}, {99, 0}, {198, 0}, {297, 0});
    const CFEvalCheck check(2.0F);
    for (const std::int32_t culprit : {0, 1, 63, 64, 99}) {
        LatticeLine points = PointsOf(level, 100);
        points[static_cast<std::size_t>(culprit)].y = 2.0F;
        const CFSegment at_limit = ChainOf(points, kSpacingUnitSteps, kChainOpen);
        EXPECT_TRUE(check.Check(*Span(at_limit, 0, 99), CFTVals(at_limit.X(), at_limit.Y(), 100, kSpacingUnitSteps), level));
        points[static_cast<std::size_t>(culprit)].y = -2.0001F;
        const CFSegment beyond = ChainOf(points, kSpacingUnitSteps, kChainOpen);
        EXPECT_FALSE(check.Check(*Span(beyond, 0, 99), CFTVals(beyond.X(), beyond.Y(), 100, kSpacingUnitSteps), level))
            << culprit;
    }
    const CFSegment chain = ChainOf(PointsOf(level, 5), kSpacingUnitSteps, kChainOpen);
    EXPECT_THROW(check.Check(*Span(chain, 0, 4), CFTVals({0, 1}), level), int);
}

// --- Where spans are cut ---

class FixedTangent : public CFTangentEstimator {
 public:
    CFPoint Estimate(const CFWindow&, std::int32_t) const override { return {3, 4}; }
};

/// A judge that never agrees, so that every span is cut as far as it can be.
class NeverNear : public CFFidelityCheck {
 public:
    bool Check(const CFWindow& window, const CFTVals&, const CFBezier3&) const override {
        counts.push_back(window.Count());
        return false;
    }
    mutable std::vector<std::int32_t> counts;  // points of the spans it saw
};

std::int32_t CutOf(const CFSegment& chain, ts::auto_ptr<CFBound> bound, const std::vector<float>& scores) {
    CFRanking ranking(static_cast<std::int32_t>(scores.size()));
    ranking.values.assign(scores.begin(), scores.end());
    const CF1CurveView view(ts::make_auto<CFWindow>(chain, std::move(bound)), kCorner, kCorner, ts::make_auto<CFCRRule>(ranking));
    return view.Rule().SplitIndex(view, FixedTangent(), true);
}

TEST(SubdivisionRules, CutAtTheFirstOfTheHighestScoresOrInTheMiddle) {
    const CFSegment chain = ChainOf(support::SmoothOutline(60, 1), kSpacingUnitSteps, kChainClosed);
    const std::int32_t n = chain.Count();
    const auto open = [&](std::int32_t s, std::int32_t e) { return ts::make_auto<CFOpenBound>(chain, s, e); };
    std::vector<float> scores(static_cast<std::size_t>(n), 0.0F);
    EXPECT_EQ(CutOf(chain, open(3, 10), scores), 7) << "in the middle: 3 + 8 / 2";
    EXPECT_EQ(CutOf(chain, open(n - 4, 5), scores), 1) << "in the middle of 10 points: 5 on from 4 before the wrap";
    EXPECT_EQ(CutOf(chain, ts::make_auto<CFClosedBound>(chain, 5), scores), 5 + n / 2);

    scores[3] = scores[25] = 9;
    scores[12] = scores[14] = scores[1] = 2;
    scores[13] = 1;
    EXPECT_EQ(CutOf(chain, open(3, 25), scores), 12) << "the ends do not count";
    EXPECT_EQ(CutOf(chain, open(13, 17), scores), 14);
    EXPECT_EQ(CutOf(chain, open(20, 15), scores), 25) << "past the last point: 25 before 3";
    EXPECT_EQ(CutOf(chain, open(26, 16), scores), 3);
    EXPECT_EQ(CutOf(chain, ts::make_auto<CFClosedBound>(chain, 3), scores), 25);
    EXPECT_EQ(CutOf(chain, open(n - 1, 1), scores), 0) << "a single inner point";
    EXPECT_THROW(CutOf(chain, open(4, 5), scores), int) << "no inner point";
    scores.pop_back();
    EXPECT_THROW(CutOf(chain, open(3, 25), scores), int) << "another chain's scores";

    const CFRanking ranking(n);
    EXPECT_EQ(MergeRules(CFMidpointRule(), CFMidpointRule())->Kind(), kSubdivMidpoint);
    EXPECT_EQ(MergeRules(CFCRRule(ranking), CFCRRule(ranking))->Kind(), kSubdivCornerRanking);
    EXPECT_THROW(MergeRules(CFMidpointRule(), CFCRRule(ranking)), int);
}

/// The chain's points where the fitted curves meet, in order.
std::vector<std::int32_t> Junctions(const CFSplineResult& result) {
    std::vector<std::int32_t> indices;
    for (const CFLocation* location : result.Locations()) indices.push_back(location->index);
    return indices;
}

TEST(CurveFitter, CutsDownToPairsAndKeepsTheOrderOfTheChain) {
    const CFSegment chain = ChainOf(support::SmoothOutline(100, 2), kSpacingUnitSteps, kChainClosed);
    const CFRanking ranking(chain.Count());
    const FixedTangent estimator;
    const NeverNear check;
    CF1CurveFitter fitter(1, &estimator, &check);
    for (const bool smooth : {true, false}) {
        fitter.SetSmoothSplits(smooth);
        CFAnchorSet anchors(chain, ranking);
        for (const std::int32_t index : {20, 30, 75}) anchors.Append({kAnchorCorner, index, 0});
        CFSplineResult result;
        fitter.Fit(anchors, result);
        std::vector<std::int32_t> expected;
        for (std::int32_t j = 0; j < chain.Count(); ++j) expected.push_back((20 + j) % chain.Count());
        EXPECT_EQ(Junctions(result), expected) << "every point, from the first anchor round";
        for (const CFLocation* location : result.Locations()) {
            const bool at_anchor = location->index == 20 || location->index == 30 || location->index == 75;
            EXPECT_EQ(location->corner, at_anchor || !smooth) << location->index;
            const auto& tangent = location->after->View().Constraints().start_tangent;
            if (tangent.active) {
                EXPECT_EQ(tangent.value, (CFPoint{3, 4}));
            }
            EXPECT_EQ(location->after->View().Window().Count(), 2) << "a pair is not cut";
        }
    }
}

TEST(CurveFitter, StopsCuttingAtTheDepthLimit) {
    const CFSegment chain = ChainOf(PointsOf(CFBezier3({0, 0}, {30, 30}, {60, 30}, {99, 0}), 100), kSpacingUnitSteps, kChainOpen);
    CFRanking ranking(100);
    for (std::size_t i = 0; i < 100; ++i) ranking.values[i] = 100.0F - static_cast<float>(i);  // cuts off one point at a time
    const FixedTangent estimator;
    const NeverNear check;
    CF1CurveFitter fitter(1, &estimator, &check);
    CFAnchorSet anchors(chain, ranking);
    anchors.Append({kAnchorCorner, 0, 0});
    anchors.Append({kAnchorCorner, 99, 0});
    CFSplineResult result;
    fitter.Fit(anchors, result);
    EXPECT_EQ(result.Locations().size(), 33U) << "31 pairs and the rest, 32 levels";
    EXPECT_EQ((*std::prev(result.end(), 2))->index, 31);
    EXPECT_EQ(check.counts.back(), 69);
}

TEST(CurveFitter, ALoopStartsAndEndsAlongOneTangent) {
    const CFSegment chain = ChainOf(support::SmoothOutline(100, 2), kSpacingUnitSteps, kChainClosed);
    const CFRanking ranking(chain.Count());
    const FixedTangent estimator;
    const CFEvalCheck check(1e6F);
    CF1CurveFitter fitter(1e6F, &estimator, &check);
    fitter.SetSmoothSplits(false);
    for (const CFAnchorType type : {kAnchorSmooth, kAnchorCorner}) {
        CFAnchorSet anchors(chain, ranking);
        anchors.Append({type, 7, 0});
        CFSplineResult result;
        fitter.Fit(anchors, result);
        ASSERT_EQ(Junctions(result), std::vector<std::int32_t>{7});
        const CFResult& loop = *result.Locations().front()->after;
        EXPECT_EQ(loop.View().Window().Count(), chain.Count() + 1);
        EXPECT_EQ(loop.StartsAtCorner(), type == kAnchorCorner);
        if (type == kAnchorCorner) continue;
        for (const CFPoint along : {loop.Curve().DerivativeAt(0), loop.Curve().DerivativeAt(1)}) {
            EXPECT_NEAR(along.x * 4 - along.y * 3, 0, 1e-3F * std::abs(along.x)) << "parallel to (3, 4)";
        }
    }
}

TEST(CurveFitter, RefusesAnchorsItCannotFitBetween) {
    const CFSegment chain = ChainOf({{0, 0}, {1, 0}, {1, 1}, {0, 1}}, kSpacingUnitSteps, kChainClosed);
    const CFRanking ranking(4);
    const FixedTangent estimator;
    const CFEvalCheck check(1);
    CF1CurveFitter fitter(1, &estimator, &check);
    CFAnchorSet anchors(chain, ranking);
    CFSplineResult result;
    EXPECT_THROW(fitter.Fit(anchors, result), int) << "none";
    anchors.Append({kAnchorCorner, 0, 0});
    anchors.Append({kAnchorSmooth, 2, 0});
    EXPECT_THROW(fitter.Fit(anchors, result), int) << "a smooth one of two";
    EXPECT_THROW(CF1CurveFitter(1, nullptr, &check), int);
    EXPECT_THROW(CF1CurveFitter(1, &estimator, nullptr), int);
}

}  // namespace
