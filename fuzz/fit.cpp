// Curves for chains of points: lattice outlines in two passes as a trace fits them, and any other points in one pass.

#include <algorithm>
#include <cmath>
#include <vector>

#include "base/errors.h"
#include "fit/outline_preparation.h"
#include "fit/path_generator.h"
#include "fit/spline_result.h"
#include "fuzz/byte_reader.h"
#include "fuzz/require.h"
#include "tests/support/pixel_outlines.h"

namespace fuzz {
namespace {

constexpr int kMostPoints = 120;

/// A closed walk of unit steps: there by the bytes' steps, back to the start by a mirrored order of the opposite ones.
std::vector<CFPoint> ReadWalk(ByteReader& in) {
    constexpr CFPoint kSteps[] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
    std::vector<CFPoint> points = {{64, 64}};
    const int steps = in.Between(1, kMostPoints / 2);
    std::vector<int> walked;
    for (int i = 0; i < steps; ++i) {
        walked.push_back(in.Byte() % 4);
        points.push_back(points.back() + kSteps[walked.back()]);
    }
    std::sort(walked.begin(), walked.end());
    for (const int step : walked) points.push_back(points.back() - kSteps[step]);
    points.pop_back();  // the first one again
    return points;
}

std::vector<CFPoint> ReadPoints(ByteReader& in) {
    std::vector<CFPoint> points;
    const int fewest = in.IsHostile() ? 1 : 2;
    for (int count = std::max(in.Between(1, kMostPoints), fewest); count > 0; --count) points.push_back({in.Float(), in.Float()});
    return points;
}

void RequirePath(const RPPath& path, bool finite) {
    Require(!path.anchors.empty(), "a path has anchors");
    for (const RPAnchor& anchor : path.anchors) {
        for (const CFPoint p : {anchor.position, anchor.in, anchor.out}) {
            Require(!finite || (std::isfinite(p.x) && std::isfinite(p.y)), "a path's points are finite");
        }
    }
}

struct Settings {
    float tolerance, corner_angle;
    std::int32_t half_width;
};

void FitOutline(ByteReader& in, const Settings& settings) {
    const CFSegment raw = support::ChainOf(ReadWalk(in), kSpacingUnitSteps, kChainClosed);
    CFPreparedChain prepared;
    const CFOutlineEdge edge = {&raw, in.Flag(), &prepared};
    CFOutlinePreparer().Prepare({&edge, 1});
    ts::auto_ptr<RPPath> path;
    KVPathGenerator(settings.tolerance, settings.corner_angle, settings.half_width)
        .FitEdge({raw, *prepared.derived, *prepared.ranking}, path);
    RequirePath(*path, !in.IsHostile());
}

void FitPoints(ByteReader& in, const Settings& settings) {
    const std::int32_t spacing = in.Flag() ? kSpacingGeneral : kSpacingDerived;
    const std::int32_t type = in.Between(kChainOpen, kChainClosed);
    const bool quadratic = in.Flag();
    const CFSegment chain = support::ChainOf(ReadPoints(in), spacing, type);
    CFRanking ranking(chain.Count());
    for (float& score : ranking.values) score = static_cast<float>(in.Number(0, 6));
    CFAnchorSet anchors(chain, ranking);
    const CFWindow window(chain, WholeBound(chain));
    if (quadratic) {
        CFQuadTest(settings.corner_angle, settings.half_width).TestAll(window, anchors);
    } else {
        CFLinTest(settings.corner_angle, settings.half_width).TestAll(window, anchors);
    }
    const CFQuadEstimator estimator(settings.half_width);
    const CFEvalCheck check(settings.tolerance);
    CF1CurveFitter fitter(settings.tolerance, &estimator, &check);
    fitter.SetSmoothSplits(in.Flag());
    CFSplineResult curves;
    fitter.Fit(anchors, curves);
    CFMergeRemover(fitter).Remove(curves, true);
    RequirePath(RPPath(curves), !in.IsHostile());
}

}  // namespace
}  // namespace fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace fuzz;
    ByteReader in({data, size});
    const bool outline = in.Flag();
    const auto tolerance = static_cast<float>(in.Number(0.1, 6)), corner_angle = static_cast<float>(in.Number(0, 180));
    const Settings settings = {tolerance, corner_angle, in.Between(1, 24)};
    try {
        outline ? FitOutline(in, settings) : FitPoints(in, settings);
    } catch (int code) {
        Require(code == kBrokenInvariant || code == kFailedCheck, "the code is documented");
        Require(outline || in.IsHostile(), "ordinary points can be fitted");  // a walk may be no outline
    }
    return 0;
}
