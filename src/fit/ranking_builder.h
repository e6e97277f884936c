#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/owner.h"
#include "fit/curvature.h"
#include "fit/mapped_segment.h"
#include "fit/noise_smoother.h"
#include "fit/ranking.h"

/// Scores every point of a closed chain by the total curvature of the stretch around it that bends the same way: the extrema
/// of `curvatures` take over what the points between them have. Everything but an extremum scores 0. `scores` is as long as
/// `curvatures`.
void ScoreExtrema(std::span<const float> curvatures, std::span<double> scores);

/// Scores the points of outlines as corners, from the curvature of their smoothed pixel centres. One builder serves many
/// outlines and keeps its working storage.
class CFRankingBuilder {
 public:
    /// One score for each point of the outline of `centres`.
    ts::auto_ptr<CFRanking> Build(const CFMappedSegment& centres);

 private:
    struct Candidate {
        float score;
        std::int32_t centre;
    };

    void PlaceAll(const CFMappedSegment& centres, CFRanking& ranking);
    void PlaceCandidates(const CFMappedSegment& centres, CFRanking& ranking);
    void Place(const Candidate& candidate, const CFMappedSegment& centres, CFRanking& ranking) const;

    CFNoiseSmoother smoother_;
    CFKVals curvatures_;
    std::vector<double> scores_;         // by centre
    std::vector<Candidate> candidates_;  // of neighbouring centres
};
