#include <gmock/gmock.h>

#include <cmath>
#include <numbers>

#include "base/errors.h"
#include "fit/curve_remover.h"
#include "tests/support/pixel_outlines.h"

namespace {

using support::ChainOf;
using support::LatticeLine;
using testing::ElementsAre;

/// Points of a circle of radius 100, evenly from angle 0 on.
LatticeLine Arc(double angle, int count) {
    LatticeLine points;
    for (int j = 0; j < count; ++j) {
        const double a = angle * j / count;
        points.push_back({static_cast<float>(100 * std::cos(a)), static_cast<float>(100 * std::sin(a))});
    }
    return points;
}

class CurveRemover : public testing::Test {
 protected:
    /// Adds the nearest curve from point `start` to point `end` of the chain, along the circle at ends that are no corners.
    void Add(const CFSegment& chain, std::int32_t start, std::int32_t end, bool start_corner = false, bool end_corner = false) {
        const auto tangent = [&](std::int32_t k, bool corner) {
            const CFPoint p = chain.Point(k);
            return CFTangentConstraint(!corner, {-p.y, p.x});
        };
        auto view =
            ts::make_auto<CF1CurveView>(ts::make_auto<CFWindow>(chain, ts::make_auto<CFOpenBound>(chain, start, end)),
                                        tangent(start, start_corner), tangent(end, end_corner), ts::make_auto<CFMidpointRule>());
        result_.Add(fitter_.FitOnce(std::move(view)).result);
    }

    std::vector<std::int32_t> Junctions() const {
        std::vector<std::int32_t> indices;
        for (const CFLocation* location : result_.Locations()) indices.push_back(location->index);
        return indices;
    }

    void SetTolerance(float tolerance) { check_ = CFEvalCheck(tolerance); }

    CFQuadEstimator estimator_{16};
    CFEvalCheck check_{0.5F};
    CF1CurveFitter fitter_{0.5F, &estimator_, &check_};
    CFSplineResult result_;
};

TEST_F(CurveRemover, ArcsOfOneCircleBecomeOneCurve) {
    SetTolerance(1);  // a merged range starts with uneven parameters, which costs half a pixel
    const CFSegment chain = ChainOf(Arc(std::numbers::pi / 2, 91), kSpacingGeneral, kChainOpen);
    Add(chain, 0, 30);
    Add(chain, 30, 60);
    Add(chain, 60, 90);
    CFMergeRemover(fitter_).Remove(result_, true);
    EXPECT_THAT(Junctions(), ElementsAre(0, 90));
    const CFResult& merged = *result_.Locations().front()->after;
    EXPECT_EQ(result_.Locations().back()->before, &merged);
    for (const float t : {0.2F, 0.5F, 0.8F}) {
        const CFPoint p = merged.Curve().At(t);
        EXPECT_NEAR(std::hypot(p.x, p.y), 100, 1);
    }
}

TEST_F(CurveRemover, WhatOneCurveCannotFollowStays) {
    SetTolerance(0.01F);
    const CFSegment chain = ChainOf(Arc(1.9 * std::numbers::pi, 400), kSpacingGeneral, kChainOpen);
    for (int start = 0; start < 320; start += 80) Add(chain, start, start + 80);
    CFMergeRemover(fitter_).Remove(result_, true);
    EXPECT_THAT(Junctions(), ElementsAre(0, 80, 160, 240, 320));
}

TEST_F(CurveRemover, CornersStayUnlessTheyAreAskedFor) {
    SetTolerance(1);
    const CFSegment chain = ChainOf(Arc(std::numbers::pi / 2, 91), kSpacingGeneral, kChainOpen);
    Add(chain, 0, 30, true, true);
    Add(chain, 30, 60, true, false);
    Add(chain, 60, 90, false, true);
    CFMergeRemover remover(fitter_);
    remover.Remove(result_, true);
    EXPECT_THAT(Junctions(), ElementsAre(0, 30, 90));
    remover.Remove(result_, false);
    EXPECT_THAT(Junctions(), ElementsAre(0, 90));
    EXPECT_TRUE(result_.Locations().front()->corner);
    remover.Remove(result_, false);
    EXPECT_THAT(Junctions(), ElementsAre(0, 90)) << "nothing is left to merge";
}

TEST_F(CurveRemover, AClosedChainMayEndAsOneLoopFromItsSeam) {
    const CFSegment chain = ChainOf(Arc(2 * std::numbers::pi, 200), kSpacingGeneral, kChainClosed);
    for (const bool near_enough : {false, true}) {
        SetTolerance(near_enough ? 250 : 1);  // a loop along one tangent is flat
        result_ = CFSplineResult();
        Add(chain, 150, 50);
        Add(chain, 50, 150);
        CFMergeRemover(fitter_).Remove(result_, true);
        if (near_enough) {
            EXPECT_THAT(Junctions(), ElementsAre(150)) << "the seam stays";
            EXPECT_TRUE(result_.Locations().front()->after->IsLoop());
            EXPECT_EQ(result_.Locations().front()->before, result_.Locations().front()->after.get());
        } else {
            EXPECT_THAT(Junctions(), ElementsAre(150, 50)) << "one cubic is no circle";
        }
        CFMergeRemover(fitter_).Remove(result_, true);
    }
    CFSplineResult nothing;
    EXPECT_THROW(CFMergeRemover(fitter_).Remove(nothing, true), int);
}

}  // namespace
