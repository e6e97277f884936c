#include "fit/path_generator.h"

#include <algorithm>
#include <utility>

#include "base/errors.h"
#include "fit/spline_result.h"

namespace {

constexpr float kCandidateScore = 0.8F;     // radians of turning above which a point may be a corner in the first pass
constexpr float kFirstCornerAngle = 40.0F;  // degrees

CFPoolVector<std::int32_t> HighScores(const CFRanking& ranking);

/// Keeps where curves meet and drops them, so that the next ones find their storage still at hand.
class JunctionIndices : public CFCurveSink {
 public:
    void Add(ts::auto_ptr<CFResult> result) override;
    /// In increasing order: a closed chain may start anywhere.
    CFPoolVector<std::int32_t> Sorted() &&;

 private:
    CFPoolVector<std::int32_t> indices_;
};

}  // namespace

KVPathGenerator::KVPathGenerator(float tolerance, float corner_angle, std::int32_t half_width)
    : first_corner_test_(kFirstCornerAngle, half_width) {
    estimator_ = ts::make_auto<CFQuadEstimator>(half_width);
    check_ = ts::make_auto<CFEvalCheck>(tolerance);
    fitter_ = ts::make_auto<CF1CurveFitter>(tolerance, estimator_.get(), check_.get());
    corner_test_ = ts::make_auto<CFQuadTest>(corner_angle, half_width);
    remover_ = ts::make_auto<CFMergeRemover>(*fitter_);
}

void KVPathGenerator::FitEdge(const FitInput& edge, ts::auto_ptr<RPPath>& output) {
    const std::int32_t count = edge.raw.Count();
    if (edge.derived.Count() != count || edge.ranking.Count() != count) throw kBrokenInvariant;
    known_.clear();
    const CFPoolVector<std::int32_t> junctions = FirstJunctions(edge);
    CFSplineResult result;
    FitSecond(edge, junctions, result);
    remover_->Remove(result, true);
    output = ts::make_auto<RPPath>(result);
}

/// The points where the curves of the first pass meet.
CFPoolVector<std::int32_t> KVPathGenerator::FirstJunctions(const FitInput& edge) {
    CFAnchorSet anchors(edge.raw, edge.ranking);
    const CFWindow window(edge.raw, WholeBound(edge.raw));
    first_corner_test_.TestCandidates(window, HighScores(edge.ranking), anchors);
    fitter_->SetSmoothSplits(false);
    JunctionIndices junctions;
    fitter_->Fit(anchors, junctions, known_);
    return std::move(junctions).Sorted();
}

void KVPathGenerator::FitSecond(const FitInput& edge, std::span<const std::int32_t> junctions, CFSplineResult& result) {
    CFAnchorSet anchors(edge.raw, edge.ranking);  // the tested chain has the same points by number
    const CFWindow window(edge.derived, WholeBound(edge.derived));
    corner_test_->TestCandidates(window, junctions, anchors);
    fitter_->SetSmoothSplits(true);
    fitter_->Fit(anchors, result, known_);
}

namespace {

CFPoolVector<std::int32_t> HighScores(const CFRanking& ranking) {
    CFPoolVector<std::int32_t> indices;
    for (std::int32_t i = 0; i < ranking.Count(); ++i) {
        if (ranking.values[static_cast<std::size_t>(i)] > kCandidateScore) indices.push_back(i);
    }
    return indices;
}

void JunctionIndices::Add(ts::auto_ptr<CFResult> result) {
    if (indices_.empty()) indices_.push_back(result->StartIndex());
    if (result->EndIndex() != indices_.front()) indices_.push_back(result->EndIndex());  // else the chain closes
}

CFPoolVector<std::int32_t> JunctionIndices::Sorted() && {
    std::sort(indices_.begin(), indices_.end());
    return std::move(indices_);
}

}  // namespace
