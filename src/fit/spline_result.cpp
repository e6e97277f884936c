#include "fit/spline_result.h"

#include <iterator>
#include <utility>

#include "base/errors.h"

namespace {

void Require(bool condition) {
    if (!condition) throw kBrokenInvariant;
}

}  // namespace

void CFSplineResult::Add(ts::auto_ptr<CFResult> result) {
    if (!result) throw kFailedCheck;
    if (result->IsLoop()) return AddLoop(std::move(result));
    if (locations_->empty()) return AddFirst(std::move(result));
    AddNext(std::move(result));
}

void CFSplineResult::AddLoop(ts::auto_ptr<CFResult> result) {
    Require(locations_->empty() && result->StartsAtCorner() == result->EndsAtCorner());
    CFLocation& seam = Append(result.get(), result->StartIndex(), result->StartsAtCorner());
    seam.after = std::move(result);
}

void CFSplineResult::AddFirst(ts::auto_ptr<CFResult> result) {
    Require(result->StartIndex() != result->EndIndex());
    CFLocation& start = Append(nullptr, result->StartIndex(), result->StartsAtCorner());
    Append(result.get(), result->EndIndex(), result->EndsAtCorner());
    start.after = std::move(result);
}

void CFSplineResult::AddNext(ts::auto_ptr<CFResult> result) {
    CFLocation& first = *locations_->front();
    CFLocation& last = *locations_->back();
    Require(!last.after && last.index == result->StartIndex() && last.corner == result->StartsAtCorner());
    if (first.index == result->EndIndex()) {
        Require(first.before == nullptr);
        first.before = result.get();
    } else {
        Append(result.get(), result->EndIndex(), result->EndsAtCorner());
    }
    last.after = std::move(result);
}

CFLocation& CFSplineResult::Append(CFResult* before, std::int32_t index, bool corner) {
    ts::auto_ptr<CFLocation> location(new CFLocation{before, {}, index, corner});
    locations_->push_back(location.get());
    return *location.release();
}

CFSplineResult::Iterator CFSplineResult::Replace(Iterator junction, ts::auto_ptr<CFResult> merged) {
    if (!merged) throw kFailedCheck;
    const Iterator first = begin(), last = std::prev(end());
    const bool closed = IsClosed();
    Require(closed ? locations_->size() >= 2 : locations_->size() >= 3 && junction != first && junction != last);

    CFLocation& previous = **(junction == first ? last : std::prev(junction));
    CFLocation& next = **(junction == last ? first : std::next(junction));
    const ts::auto_ptr<CFLocation> removed(*junction);
    const Iterator following = locations_->erase(junction);
    next.before = merged.get();
    previous.after = std::move(merged);
    return following;
}
