#include "fit/window.h"

#include <utility>

#include "base/errors.h"

namespace {

constexpr std::int32_t kFewestPoints = 2;

}  // namespace

CFWindow::CFWindow(const CFSegment& segment, ts::auto_ptr<CFBound> bound) : segment_(&segment), bound_(std::move(bound)) {
    if (!bound_) throw kFailedCheck;
    if (&bound_->Segment() != segment_ || segment.Count() < kFewestPoints) throw kBrokenInvariant;
    count_ = bound_->Count();
    bound_->GetEnds(start_, end_);
}

void CFWindow::Split(std::int32_t k, ts::auto_ptr<CFWindow>& first, ts::auto_ptr<CFWindow>& second) const {
    ts::auto_ptr<CFBound> first_bound, second_bound;
    bound_->Split(first_bound, second_bound, k);
    first = ts::make_auto<CFWindow>(*segment_, std::move(first_bound));
    second = ts::make_auto<CFWindow>(*segment_, std::move(second_bound));
}

ts::auto_ptr<CFWindow> MergeWindows(const CFWindow& first, const CFWindow& second) {
    const CFSegment& segment = first.Segment();
    if (&first == &second || &second.Segment() != &segment) throw kBrokenInvariant;
    if (first.IsClosed() || second.IsClosed() || first.EndIndex() != second.StartIndex()) throw kBrokenInvariant;
    ts::auto_ptr<CFBound> bound;
    if (first.StartIndex() == second.EndIndex()) {
        bound = ts::make_auto<CFClosedBound>(segment, first.StartIndex());
    } else {
        bound = ts::make_auto<CFOpenBound>(segment, first.StartIndex(), second.EndIndex());
    }
    return ts::make_auto<CFWindow>(segment, std::move(bound));
}
