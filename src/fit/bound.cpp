#include "fit/bound.h"

#include "base/errors.h"

namespace {

void Require(bool condition) {
    if (!condition) throw kBrokenInvariant;
}

bool IsIndex(const CFSegment& segment, std::int32_t k) { return 0 <= k && k < segment.Count(); }

}  // namespace

CFOpenBound::CFOpenBound(const CFSegment& segment, std::int32_t start, std::int32_t end)
    : CFBound(segment, false, start), end_(end) {
    Require(IsIndex(segment, start) && IsIndex(segment, end));
    Require(segment.IsClosed() ? start != end : start < end);
}

void CFOpenBound::Split(ts::auto_ptr<CFBound>& first, ts::auto_ptr<CFBound>& second, std::int32_t k) const {
    Require(Contains(k));
    first = ts::make_auto<CFOpenBound>(*segment_, start_, k);
    second = ts::make_auto<CFOpenBound>(*segment_, k, end_);
}

void CFOpenBound::GetEnds(std::int32_t& start, std::int32_t& end) const {
    start = start_;
    end = end_;
}

std::int32_t CFOpenBound::Count() const { return end_ - start_ + 1 + (start_ < end_ ? 0 : segment_->Count()); }

bool CFOpenBound::Contains(std::int32_t k) const {
    if (!IsIndex(*segment_, k) || k == start_ || k == end_) return false;
    return start_ < end_ ? start_ < k && k < end_ : k > start_ || k < end_;
}

CFClosedBound::CFClosedBound(const CFSegment& segment, std::int32_t start) : CFBound(segment, true, start) {
    Require(segment.IsClosed() && IsIndex(segment, start));
}

void CFClosedBound::Split(ts::auto_ptr<CFBound>& first, ts::auto_ptr<CFBound>& second, std::int32_t k) const {
    Require(Contains(k));
    first = ts::make_auto<CFOpenBound>(*segment_, start_, k);
    second = ts::make_auto<CFOpenBound>(*segment_, k, start_);
}

void CFClosedBound::GetEnds(std::int32_t& start, std::int32_t& end) const { start = end = start_; }

std::int32_t CFClosedBound::Count() const { return segment_->Count() + 1; }

bool CFClosedBound::Contains(std::int32_t k) const { return IsIndex(*segment_, k) && k != start_; }

ts::auto_ptr<CFBound> WholeBound(const CFSegment& segment) {
    if (segment.IsClosed()) return ts::make_auto<CFClosedBound>(segment, 0);
    return ts::make_auto<CFOpenBound>(segment, 0, segment.Count() - 1);
}
