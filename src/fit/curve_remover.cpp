#include "fit/curve_remover.h"

#include <iterator>
#include <utility>

#include "base/errors.h"

void CFMergeRemover::Remove(CFSplineResult& result, bool skip_corners) {
    if (result.Locations().empty()) throw kBrokenInvariant;
    auto junction = std::next(result.begin());
    while (junction != result.end()) {
        const CFLocation& location = **junction;
        if (location.before == nullptr) throw kFailedCheck;
        if (!location.after) return;  // the end of an open chain
        if (skip_corners && location.corner) {
            ++junction;
            continue;
        }
        auto attempt = fitter_->FitOnce(ts::make_auto<CF1CurveView>(location.before->View(), location.after->View()));
        junction = attempt.passed ? result.Replace(junction, std::move(attempt.result)) : std::next(junction);
    }
}
