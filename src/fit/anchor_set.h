#pragma once

#include <cstdint>

#include "base/owner.h"
#include "fit/pool.h"
#include "fit/ranking.h"
#include "fit/segment.h"

enum CFAnchorType : std::int32_t { kAnchorSmooth = 0, kAnchorCorner = 1 };

/// A point of a chain that fitted curves must end at.
struct CFAnchor {
    static void* operator new(std::size_t bytes) { return CFPool::Take(bytes); }
    static void operator delete(void* block, std::size_t bytes) noexcept { CFPool::GiveBack(block, bytes); }

    std::int32_t type;   // CFAnchorType
    std::int32_t index;  // of the point in the set's chain
    float value;         // cosine of the corner, -1 straight on to 1 doubling back; 0 where no test gave one
};

using CFAnchorList = CFPoolList<CFAnchor*>;

/// The anchors of a chain in increasing index order. Borrows the chain and its ranking.
struct CFAnchorSet {
    CFAnchorSet(const CFSegment& chain, const CFRanking& scores) : anchors(new CFAnchorList), segment(&chain), ranking(&scores) {}

    void Append(CFAnchor anchor) {
        ts::auto_ptr<CFAnchor> owned = ts::make_auto<CFAnchor>(anchor);
        anchors->push_back(owned.get());
        owned.release();
    }

    ts::auto_ctr<CFAnchorList> anchors;
    const CFSegment* segment;
    const CFRanking* ranking;
};
