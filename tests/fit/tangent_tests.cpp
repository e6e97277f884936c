#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "base/errors.h"
#include "fit/linear_solver.h"
#include "fit/quad_fit.h"
#include "fit/tangent_estimator.h"

namespace {

CFSegment Chain(std::int32_t count, std::int32_t spacing, std::int32_t type) {
    CFSegment segment(count, spacing, type);
    for (std::int32_t i = 0; i < count; ++i) segment.SetPoint(i, {static_cast<float>(i), static_cast<float>(2 * i)});
    return segment;
}

using Numbers = std::vector<float>;

/// The solution of the system with that matrix, row by row; empty when it is singular.
Numbers SolutionOf(const Numbers& matrix, const Numbers& rhs) {
    CFVectorX<float> rows(matrix.size()), values(rhs.size());
    for (std::size_t i = 0; i < matrix.size(); ++i) rows[i] = matrix[i];
    for (std::size_t i = 0; i < rhs.size(); ++i) values[i] = rhs[i];
    if (!Solve(rows, values)) return {};
    Numbers solution;
    for (std::size_t i = 0; i < rhs.size(); ++i) solution.push_back(values[i]);
    return solution;
}

TEST(LinearSolver, SolvesSystemsWorkedByHand) {
    const auto expect = [](const Numbers& matrix, const Numbers& rhs, const Numbers& solution) {
        const Numbers found = SolutionOf(matrix, rhs);
        ASSERT_EQ(found.size(), solution.size());
        for (std::size_t i = 0; i < solution.size(); ++i) EXPECT_NEAR(found[i], solution[i], 1e-5F);
    };
    expect({2, 1, 1, 3}, {4, 7}, {1, 2});
    expect({0, 1, 1, 0}, {5, -3, 2, 9}, {-3, 5, 9, 2});                   // the pivot lies below; two right-hand sides
    expect({1, 2, 3, 2, 4, 1, 1, 1, 1}, {10, 9, 4}, {0.2F, 1.6F, 2.2F});  // the second one too
    expect({2, 0, 0, 1, 0, 3, 1, 0, 0, 1, 4, 0, 1, 0, 0, 5}, {6, 9, 14, 21}, {1, 2, 3, 4});
    // A row of large numbers must not win the pivot by its size alone: x would come out as 0.
    expect({10, 1e9F, 1, 1}, {1e9F, 2}, {1, 1});
}

TEST(LinearSolver, ReportsSingularSystems) {
    EXPECT_TRUE(SolutionOf({1, 2, 2, 4}, {1, 2}).empty());
    EXPECT_TRUE(SolutionOf({0, 0, 1, 1}, {1, 2}).empty());
    EXPECT_TRUE(SolutionOf({1, 2, 3, 4, 5, 6, 5, 7, 9}, {1, 2, 3}).empty());
    EXPECT_TRUE(SolutionOf({1e-7F, 0, 0, 1}, {1, 2}).empty());
    EXPECT_FALSE(SolutionOf({1e-5F, 0, 0, 1}, {1, 2}).empty());
}

TEST(QuadView, ReachesToBothSidesWithinTheWindow) {
    struct Case {
        std::int32_t half_width, k, first, last, centre;
    };
    const CFSegment open = Chain(30, kSpacingUnitSteps, kChainOpen);
    const CFWindow window(open, WholeBound(open));
    for (const Case& c : {Case{16, 3, 0, 17, 3},
                          {16, 28, 14, 29, 14},
                          {12, 3, 0, 15, 3},
                          {12, 28, 16, 29, 12},
                          {12, 14, 2, 26, 12},
                          {16, 0, 0, 14, 0}}) {
        const CF1QuadView view(window, c.k, c.half_width);
        EXPECT_EQ(view.Range().First(), c.first);
        EXPECT_EQ(view.Range().First() + view.Range().Count() - 1, c.last);
        EXPECT_EQ(view.Centre(), c.centre);
        EXPECT_EQ(view.Range().Point(view.Centre()), open.Point(c.k));
        const CF2QuadView sides(window, c.k, c.half_width);
        EXPECT_EQ(sides.Left().First(), c.first);
        EXPECT_EQ(sides.Left().Count(), c.k - c.first + 1);
        EXPECT_EQ(sides.Right().First(), c.k);
        EXPECT_EQ(sides.Right().Count(), c.last - c.k + 1);
    }
    EXPECT_THROW(CF1QuadView(window, 30, 16), int);
    EXPECT_THROW(CF2QuadView(window, -1, 16), int);

    const CFSegment closed = Chain(5, kSpacingGeneral, kChainClosed);
    for (const std::int32_t start : {0, 3}) {
        const CFWindow loop(closed, ts::make_auto<CFClosedBound>(closed, start));
        for (std::int32_t k = 0; k <= 5; ++k) {
            const CF1QuadView view(loop, k, 16);
            ASSERT_EQ(view.Range().Count(), 5);
            EXPECT_EQ(view.Centre(), 2);
            for (std::int32_t j = 0; j < 5; ++j) EXPECT_EQ(view.Range().Point(j), closed.Point(start + k - 2 + j));
            const CF2QuadView sides(loop, k, 16);
            for (std::int32_t j = 0; j < 3; ++j) {
                EXPECT_EQ(sides.Left().Point(j), closed.Point(start + k - 2 + j));
                EXPECT_EQ(sides.Right().Point(j), closed.Point(start + k + j));
            }
        }
    }
}

TEST(QuadEstimator, DifferentiatesAQuadraticExactly) {
    // Unit spacing is taken as even, so points at even steps of a quadratic are fitted exactly, far out too.
    const CFBezier2 curve({-8, 30}, {40, -10}, {50, 60});
    for (const float offset : {0.0F, 8000.0F}) {
        CFSegment segment(41, kSpacingUnitSteps, kChainOpen);
        for (std::int32_t i = 0; i < 41; ++i)
            segment.SetPoint(i, curve.At(static_cast<float>(i) / 40.0F) + CFPoint{offset, offset});
        const CFWindow window(segment, WholeBound(segment));
        for (const std::int32_t k : {0, 1, 7, 20, 39, 40}) {
            const CFPoint tangent = CFQuadEstimator(16).Estimate(window, k);
            const CFPoint exact = curve.DerivativeAt(static_cast<float>(k) / 40.0F);
            const float across = tangent.x * exact.y - tangent.y * exact.x, along = tangent.x * exact.x + tangent.y * exact.y;
            EXPECT_GT(along, 0.0F);
            EXPECT_NEAR(across / along, 0.0F, offset == 0.0F ? 1e-5F : 1e-3F) << k;
        }
    }
}

TEST(QuadEstimator, FollowsLinesAndLoops) {
    const CFSegment line = Chain(30, kSpacingGeneral, kChainOpen);
    for (const std::int32_t end : {29, 2, 1}) {  // down to 2 points, where the fit is open
        const CFWindow window(line, ts::make_auto<CFOpenBound>(line, 0, end));
        for (std::int32_t k = 0; k <= end; ++k) {
            const CFPoint tangent = CFQuadEstimator(16).Estimate(window, k);
            EXPECT_GT(tangent.x, 0.0F);
            EXPECT_NEAR(tangent.y / tangent.x, 2.0F, 1e-4F);
        }
    }
    CFSegment circle(80, kSpacingGeneral, kChainClosed);
    for (std::int32_t i = 0; i < 80; ++i) {
        circle.SetPoint(i,
                        {static_cast<float>(25.0 * std::cos(i * 0.0785398)), static_cast<float>(25.0 * std::sin(i * 0.0785398))});
    }
    const CFWindow loop(circle, ts::make_auto<CFClosedBound>(circle, 11));
    for (std::int32_t k = 0; k <= 80; ++k) {
        const CFPoint tangent = CFQuadEstimator(16).Estimate(loop, k), radius = loop.Point(k);
        const float across = std::hypot(tangent.x, tangent.y) * 25.0F;
        EXPECT_NEAR((tangent.x * radius.x + tangent.y * radius.y) / across, 0.0F, 1e-3F);
        EXPECT_GT(tangent.y * radius.x - tangent.x * radius.y, 0.9F * across);
    }
    EXPECT_EQ(CFQuadEstimator(16).Estimate(loop, 80), CFQuadEstimator(16).Estimate(loop, 0));
}

TEST(QuadEstimator, CoincidentPointsGiveNoNan) {
    const CFSegment same(9, kSpacingGeneral, kChainClosed);
    const CFWindow window(same, WholeBound(same));
    const CFPoint tangent = CFQuadEstimator(16).Estimate(window, 3);
    EXPECT_TRUE(std::isfinite(tangent.x) && std::isfinite(tangent.y));
}

TEST(QuadFit, SidesMeetInThePointAndFollowTheirQuadratics) {
    const CFBezier2 left({0, 0}, {10, 20}, {30, 30}), right({30, 30}, {30, 10}, {60, 0});
    CFSegment segment(33, kSpacingUnitSteps, kChainOpen);
    for (std::int32_t i = 0; i <= 16; ++i) {
        segment.SetPoint(i, left.At(static_cast<float>(i) / 16.0F));
        segment.SetPoint(16 + i, right.At(static_cast<float>(i) / 16.0F));
    }
    const CFWindow window(segment, WholeBound(segment));
    const auto curves = FitQuadratics(CF2QuadView(window, 16, 16));
    ASSERT_TRUE(curves);
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(curves->left.x[i], left.x[i], 1e-3F);
        EXPECT_NEAR(curves->left.y[i], left.y[i], 1e-3F);
        EXPECT_NEAR(curves->right.x[i], right.x[i], 1e-3F);
        EXPECT_NEAR(curves->right.y[i], right.y[i], 1e-3F);
    }
    // A side of 2 points is straight, one of a single point shrinks to it; the other side is not touched by that.
    const auto second = FitQuadratics(CF2QuadView(window, 1, 16)), first = FitQuadratics(CF2QuadView(window, 0, 16));
    ASSERT_TRUE(second && first);
    EXPECT_EQ(second->left.Control(1), (segment.Point(0) + segment.Point(1)) * 0.5F);
    EXPECT_EQ(first->left.Control(0), segment.Point(0));
    EXPECT_EQ(first->left.Control(1), segment.Point(0));
}

}  // namespace
