#pragma once

#include <span>
#include <vector>

#include "base/owner.h"
#include "fit/aggregate_segment.h"
#include "fit/derived_chain.h"
#include "fit/ranking_builder.h"

/// What curve fitting needs of a chain besides its points: one repositioned point and one corner score for each of them.
struct CFPreparedChain {
    ts::auto_ptr<CFSegment> derived;
    ts::auto_ptr<CFRanking> ranking;
};

/// One chain of an outline, and where its preparation goes.
struct CFOutlineEdge {
    const CFSegment* raw;    // unit steps
    bool reversed;           // walked from its last point to its first
    CFPreparedChain* slots;  // none where it is not needed
};

/// Prepares outlines for curve fitting. One preparer serves all outlines of a trace and keeps its working storage.
class CFOutlinePreparer {
 public:
    /// Fills the empty slots of the edges of one closed outline, given in the order of the walk round it with its region on
    /// the right: a single closed chain, or open chains of which each starts where the one before ends. Slots that are filled,
    /// from the outline on the other side of the edge, stay as they are.
    /// @throws int  kBrokenInvariant when the chains do not make up such an outline
    void Prepare(std::span<const CFOutlineEdge> edges);

 private:
    CFPreparedChain PrepareClosed(const CFSegment& outline);
    void PrepareJoined(std::span<const CFOutlineEdge> edges);

    CFDerivedChainBuilder derived_builder_;
    CFRankingBuilder ranking_builder_;
    std::vector<CFDirectedSegment> path_;
};
