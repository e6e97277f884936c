#pragma once

#include <cstdint>

#include "base/owner.h"
#include "fit/curve_fitter.h"

/// A junction of fitted curves, or an end of a chain of them.
struct CFLocation {
    static void* operator new(std::size_t bytes) { return CFPool::Take(bytes); }
    static void operator delete(void* block, std::size_t bytes) noexcept { CFPool::GiveBack(block, bytes); }

    CFResult* before;  // the curve that ends here, owned by the location it starts at; none at the start of an open chain
    ts::auto_ptr<CFResult> after;  // the curve that starts here; none at the end of an open chain
    std::int32_t index;            // of the chain's point
    bool corner;                   // neither curve follows a tangent here
};

/// The curves fitted to one chain, in its order. A closed chain starts at its seam and has as many junctions as curves.
class CFSplineResult : public CFCurveSink {
 public:
    using Junctions = CFPoolList<CFLocation*>;
    using Iterator = Junctions::iterator;

    CFSplineResult() : locations_(new Junctions) {}

    /// Appends the next curve. One that ends where the first starts closes the chain.
    /// @throws int  kBrokenInvariant when it does not connect to the last one
    void Add(ts::auto_ptr<CFResult> result) override;
    /// Puts `merged` in place of the curves before and after `junction`, which goes away. Gives the junction that followed in
    /// the list, or its end.
    /// @throws int  kBrokenInvariant at an end of an open chain or when only one curve is left; kFailedCheck without a curve
    Iterator Replace(Iterator junction, ts::auto_ptr<CFResult> merged);

    const Junctions& Locations() const { return *locations_; }
    Iterator begin() { return locations_->begin(); }
    Iterator end() { return locations_->end(); }
    bool IsClosed() const { return !locations_->empty() && locations_->front()->before != nullptr; }

 private:
    void AddLoop(ts::auto_ptr<CFResult> result);
    void AddFirst(ts::auto_ptr<CFResult> result);
    void AddNext(ts::auto_ptr<CFResult> result);
    CFLocation& Append(CFResult* before, std::int32_t index, bool corner);

    ts::auto_ctr<Junctions> locations_;
};
