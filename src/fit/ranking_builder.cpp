#include "fit/ranking_builder.h"

#include <algorithm>
#include <cmath>

#include "base/errors.h"
#include "base/narrow.h"

namespace {

constexpr std::int32_t kFewestCentres = 4;
constexpr double kSameCurvature = 1e-6;
constexpr float kLowestScore = 0.1F;       // radians
constexpr float kNoTurn = 1e-6F;           // square pixels
constexpr std::int32_t kFewestPoints = 2;  // of the outline beside two neighbouring centres
constexpr std::int32_t kMostPoints = 5;

int SignOf(double curvature) {
    if (curvature > kSameCurvature) return 1;
    return curvature < -kSameCurvature ? -1 : 0;
}

/// A local maximum or minimum, ties included.
bool IsExtremum(double before, double here, double after) {
    const double rise = here - before, fall = here - after;
    return (rise > -kSameCurvature && fall > -kSameCurvature) || (rise < kSameCurvature && fall < kSameCurvature);
}

/// True when the extremum after a point of curvature `here` takes over that curvature, false when the one before does.
/// @throws int  kBrokenInvariant when both bend the other way, which no sequence of values between them allows
bool GoesToNext(double here, double before, double after) {
    const int sign = SignOf(here), sign_before = SignOf(before), sign_after = SignOf(after);
    if (sign_before == sign && sign_after == sign) return std::abs(after) >= std::abs(before);
    if (sign_before == sign || sign_after == sign) return sign_after == sign;
    if (sign_before == 0 && sign_after == 0) return sign > 0;
    if (sign_before != 0 && sign_after != 0) throw kBrokenInvariant;
    return sign_after == 0;
}

/// The turn of a closed chain at point `k`: its sign is that of the curvature of a chain that turns the same way.
int TurnAt(const CFSegment& chain, std::int32_t k) {
    const std::int32_t n = chain.Count();
    const CFPoint before{chain.X()[k + n - 1], chain.Y()[k + n - 1]}, after{chain.X()[k + 1], chain.Y()[k + 1]};
    const CFPoint in = CFPoint{chain.X()[k], chain.Y()[k]} - before, across = after - before;
    const float cross = in.x * across.y - across.x * in.y;
    if (cross > kNoTurn) return 1;
    return cross < -kNoTurn ? -1 : 0;
}

}  // namespace

void ScoreExtrema(std::span<const float> curvatures, std::span<double> scores) {
    std::fill(scores.begin(), scores.end(), 0.0);
    const std::size_t count = curvatures.size();
    const auto next = [&](std::size_t i) { return i + 1 == count ? 0 : i + 1; };
    const auto curvature = [&](std::size_t i) { return static_cast<double>(curvatures[i]); };
    const auto is_extremum = [&](std::size_t i) {
        return IsExtremum(curvature(i == 0 ? count - 1 : i - 1), curvature(i), curvature(next(i)));
    };
    const auto extremum_after = [&](std::size_t i) {
        do i = next(i);
        while (!is_extremum(i));
        return i;
    };
    std::size_t first = 0;
    while (first < count && !is_extremum(first)) ++first;
    if (count <= 2 || first == count || extremum_after(first) == first) return;
    std::size_t before = first;
    do {
        const std::size_t after = extremum_after(before);
        scores[before] += std::abs(curvature(before));
        for (std::size_t i = next(before); i != after; i = next(i)) {
            if (SignOf(curvature(i)) == 0) continue;
            const bool to_next = GoesToNext(curvature(i), curvature(before), curvature(after));
            scores[to_next ? after : before] += std::abs(curvature(i));
        }
        before = after;
    } while (before != first);
}

ts::auto_ptr<CFRanking> CFRankingBuilder::Build(const CFMappedSegment& centres) {
    auto ranking = ts::make_auto<CFRanking>(centres.Source().Count());
    if (centres.Count() < kFewestCentres) return ranking;
    smoother_.Smooth(centres);
    curvatures_.Fill(smoother_.Points());
    scores_.resize(curvatures_.Values().size());
    ScoreExtrema(curvatures_.Values(), scores_);
    PlaceAll(centres, *ranking);
    return ranking;
}

/// Higher scores choose their points first. Only neighbouring centres have a point to choose in common, so each run of
/// neighbours is placed by itself. Starts at a centre without a score, so that no run is cut in two.
void CFRankingBuilder::PlaceAll(const CFMappedSegment& centres, CFRanking& ranking) {
    const std::size_t count = scores_.size();
    const auto score = [&](std::size_t i) { return NarrowToFloat(scores_[i]); };
    const auto add_from_to = [&](std::size_t from, std::size_t to) {
        for (std::size_t i = from; i < to; ++i) {
            if (score(i) >= kLowestScore) {
                candidates_.push_back({score(i), static_cast<std::int32_t>(i)});
            } else if (!candidates_.empty()) {
                PlaceCandidates(centres, ranking);
            }
        }
    };
    std::size_t start = 0;
    while (start < count && score(start) >= kLowestScore) ++start;
    candidates_.clear();
    add_from_to(start, count);
    add_from_to(0, start);
    PlaceCandidates(centres, ranking);
}

/// Highest score first, of equal ones the first on the chain.
void CFRankingBuilder::PlaceCandidates(const CFMappedSegment& centres, CFRanking& ranking) {
    std::sort(candidates_.begin(), candidates_.end(), [](const Candidate& a, const Candidate& b) {
        return a.score > b.score || (a.score == b.score && a.centre < b.centre);  // equal exactly: then by place
    });
    for (const Candidate& candidate : candidates_) Place(candidate, centres, ranking);
    candidates_.clear();
}

/// Gives the score to one of the outline's points from the one at which the centre before was first met to the one at which
/// this centre was: to the first free one that turns as the chain bends, else to one that runs straight on, else to any. On a
/// chain that does not bend it goes to the first free one.
void CFRankingBuilder::Place(const Candidate& candidate, const CFMappedSegment& centres, CFRanking& ranking) const {
    const CFSegment& outline = centres.Source();
    const CFSegmentMapping& mapping = centres.Mapping();
    const std::int32_t first = mapping.Creator(RoundLoop(candidate.centre - 1, mapping.CentreCount()));
    const std::int32_t last = mapping.Creator(candidate.centre);
    const std::int32_t points = RoundLoop(last - first, outline.Count()) + 1;
    if (points < kFewestPoints || points > kMostPoints) throw kBrokenInvariant;

    const float curvature = curvatures_.Values()[static_cast<std::size_t>(candidate.centre)];
    const int bend = curvature > 0.0F ? 1 : curvature < 0.0F ? -1 : 0;
    float* best = nullptr;
    int best_agreement = -2;
    for (std::int32_t j = 0; j < points; ++j) {
        const std::int32_t k = RoundLoop(first + j, outline.Count());
        float& value = ranking.values[static_cast<std::size_t>(k)];
        if (value != 0.0F) continue;  // taken by a higher score
        const int agreement = bend * TurnAt(outline, k);
        if (agreement > best_agreement) {
            best = &value;
            best_agreement = agreement;
        }
    }
    if (best != nullptr) *best = candidate.score;
}
