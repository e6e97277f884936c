#pragma once

#include <cstdint>

#include "base/owner.h"
#include "fit/pool.h"
#include "fit/segment.h"

class CFOpenBound;

/// A range of point indices of a chain. Borrows the chain.
class CFBound {
 public:
    virtual ~CFBound() = default;
    /// Cuts the range at point `k` into two that share it.
    /// @throws int  kBrokenInvariant unless Contains(k)
    virtual void Split(ts::auto_ptr<CFBound>& first, ts::auto_ptr<CFBound>& second, std::int32_t k) const = 0;
    virtual void GetEnds(std::int32_t& start, std::int32_t& end) const = 0;
    virtual std::int32_t Count() const = 0;  // points covered
    /// True for an inner point, where the range may be cut.
    virtual bool Contains(std::int32_t k) const = 0;

    const CFSegment& Segment() const { return *segment_; }
    bool IsClosed() const { return closed_; }

 protected:
    CFBound(const CFSegment& segment, bool closed, std::int32_t start) : segment_(&segment), closed_(closed), start_(start) {}

    const CFSegment* segment_;
    bool closed_;
    std::int32_t start_;
};

/// The points start, start + 1, ... end; on a closed chain past its last point when `start` exceeds `end`.
class CFOpenBound : public CFBound, public CFPooled {
 public:
    /// @throws int  kBrokenInvariant for an index outside the chain, equal ends, or ends in the wrong order on an open chain
    CFOpenBound(const CFSegment& segment, std::int32_t start, std::int32_t end);
    void Split(ts::auto_ptr<CFBound>& first, ts::auto_ptr<CFBound>& second, std::int32_t k) const override;
    void GetEnds(std::int32_t& start, std::int32_t& end) const override;
    std::int32_t Count() const override;
    bool Contains(std::int32_t k) const override;

 private:
    std::int32_t end_;
};

/// A whole closed chain from `start` round to `start`, which counts at both ends.
class CFClosedBound : public CFBound, public CFPooled {
 public:
    /// @throws int  kBrokenInvariant for an open chain or an index outside it
    CFClosedBound(const CFSegment& segment, std::int32_t start);
    void Split(ts::auto_ptr<CFBound>& first, ts::auto_ptr<CFBound>& second, std::int32_t k) const override;
    void GetEnds(std::int32_t& start, std::int32_t& end) const override;
    std::int32_t Count() const override;
    bool Contains(std::int32_t k) const override;
};

/// The whole of `segment`: closed from point 0 round to it, or open from its first point to its last.
ts::auto_ptr<CFBound> WholeBound(const CFSegment& segment);
