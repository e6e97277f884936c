#pragma once

#include <cstdint>

#include "base/owner.h"
#include "fit/bound.h"
#include "fit/pool.h"

/// The points of one range of a chain, numbered from 0. Borrows the chain, owns the range.
class CFWindow : public CFPooled {
 public:
    /// @throws int  kBrokenInvariant when the range belongs to another chain, the chain has fewer than 2 points, or a closed
    ///              range lies on an open chain
    CFWindow(const CFSegment& segment, ts::auto_ptr<CFBound> bound);
    virtual ~CFWindow() = default;

    const CFSegment& Segment() const { return *segment_; }
    const CFBound& Bound() const { return *bound_; }
    std::int32_t Count() const { return count_; }
    std::int32_t SegmentCount() const { return segment_->Count(); }
    std::int32_t Kind() const { return segment_->Kind(); }  // spacing of the chain
    std::int32_t StartIndex() const { return start_; }
    std::int32_t EndIndex() const { return end_; }
    bool IsClosed() const { return bound_->IsClosed(); }
    bool Wraps() const { return IsClosed() || start_ > end_; }  // runs past the chain's last point

    /// Point `j` of the window, 0 to Count() - 1; not checked.
    CFPoint Point(std::int32_t j) const { return {X()[j], Y()[j]}; }
    /// The Count() coordinates of the window.
    const float* X() const { return segment_->X() + start_; }
    const float* Y() const { return segment_->Y() + start_; }

    /// The window number of the chain's point `k`, which must lie in the window.
    std::int32_t LocalIndex(std::int32_t k) const { return k < start_ ? k - start_ + SegmentCount() : k - start_; }

    /// Cuts the window at the chain's point `k` into two that share it.
    /// @throws int  kBrokenInvariant unless `k` lies inside the range
    void Split(std::int32_t k, ts::auto_ptr<CFWindow>& first, ts::auto_ptr<CFWindow>& second) const;

 private:
    const CFSegment* segment_;
    ts::auto_ptr<CFBound> bound_;
    std::int32_t count_, start_, end_;
};

/// One window over two open neighbours of the same chain; the whole loop when the second ends where the first starts.
/// @throws int  kBrokenInvariant when the first does not end where the second starts
ts::auto_ptr<CFWindow> MergeWindows(const CFWindow& first, const CFWindow& second);
