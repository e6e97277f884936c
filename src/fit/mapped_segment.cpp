#include "fit/mapped_segment.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/errors.h"

namespace {

constexpr std::int32_t kMappedTag = 1;

/// The centre of the pixel to the right of step `k`: half a pixel to the right of the middle of the step. With y downward the
/// right-hand side of a step (dx, dy) is (-dy, dx).
CFPoint CentreBeside(const CFSegment& outline, std::int32_t k) {
    const CFPoint from{outline.X()[k], outline.Y()[k]}, to{outline.X()[k + 1], outline.Y()[k + 1]};
    const CFPoint step = to - from;
    return (from + to + CFPoint{-step.y, step.x}) * 0.5F;
}

void RequireUnitSteps(const CFSegment& outline) {
    bool all_unit = true;
    for (std::int32_t k = 0; k < outline.Count(); ++k) {
        const float x = outline.X()[k + 1] - outline.X()[k], y = outline.Y()[k + 1] - outline.Y()[k];
        all_unit = all_unit && std::abs(x) + std::abs(y) == 1.0F;  // exact: grid points differ by whole numbers
    }
    if (!all_unit) throw kBrokenInvariant;
}

/// In the coordinate in which they are further apart.
float Distance(CFPoint a, CFPoint b) { return std::max(std::abs(a.x - b.x), std::abs(a.y - b.y)); }

}  // namespace

CFSegmentMapping::CFSegmentMapping(const CFSegment& outline) {
    if (!outline.IsClosed() || outline.Kind() != kSpacingUnitSteps) throw kBrokenInvariant;
    const std::int32_t count = outline.Count();
    centres_.resize(static_cast<std::size_t>(count));
    creators_.resize(static_cast<std::size_t>(count));
    centres_.front() = creators_.front() = 0;
    RequireUnitSteps(outline);
    const CFPoint first = CentreBeside(outline, 0);
    CFPoint last = first;
    std::size_t met = 1;
    for (std::int32_t k = 1; k < count; ++k) {
        const CFPoint centre = CentreBeside(outline, k);
        creators_[met] = k;  // kept only when the centre is a new one; free of jumps, as turns cannot be foreseen
        met += Distance(centre, last) > kSamePoint ? 1U : 0U;
        centres_[static_cast<std::size_t>(k)] = static_cast<std::int32_t>(met) - 1;
        last = centre;
    }
    creators_.resize(met);
    if (met > 1 && IsSamePoint(last, first)) MergeLastIntoFirst();
}

void CFSegmentMapping::MergeLastIntoFirst() {
    creators_.front() = creators_.back();
    creators_.pop_back();
    for (auto k = static_cast<std::size_t>(creators_.front()); k < centres_.size(); ++k) centres_[k] = 0;
}

CFMappedSegment::CFMappedSegment(const CFSegment& outline) : CFMappedSegment(outline, CFSegmentMapping(outline)) {}

CFMappedSegment::CFMappedSegment(const CFSegment& outline, CFSegmentMapping mapping)
    : CFSegment(Unset(), mapping.CentreCount(), kSpacingGeneral, kChainClosed, kMappedTag),
      source_(&outline),
      mapping_(std::move(mapping)) {
    SetPoints(0, Count(), [&, i = 0]() mutable { return CentreBeside(outline, mapping_.Creator(i++)); });
}
