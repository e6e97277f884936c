#include "fit/path.h"

#include <algorithm>
#include <functional>
#include <iterator>

#include "base/errors.h"
#include "fit/spline_result.h"

namespace {

RPAnchor AnchorAt(const CFLocation& location);
RPAnchor Reversed(const RPAnchor& anchor) { return {anchor.position, anchor.out, anchor.in, anchor.corner}; }
/// Adds what `anchor_of` makes of the anchors from `from` on; with `join` the first one only gives its out-handle to the last of
/// `anchors`.
template <class Iterator, class AnchorOf>
void AppendRange(CFPoolVector<RPAnchor>& anchors, Iterator from, Iterator to, bool join, AnchorOf anchor_of);

}  // namespace

RPPath::RPPath(const CFSplineResult& result) : closed(result.IsClosed()) {
    anchors.reserve(result.Locations().size());
    for (const CFLocation* location : result.Locations()) anchors.push_back(AnchorAt(*location));
}

void RPPath::Append(const RPPath& other, bool join) {
    AppendRange(anchors, other.anchors.begin(), other.anchors.end(), join, std::identity());
}

void RPPath::AppendReversed(const RPPath& other, bool join) {
    AppendRange(anchors, other.anchors.rbegin(), other.anchors.rend(), join, Reversed);
}

void RPPath::Close() {
    if (anchors.size() < 2 || !IsSamePoint(anchors.front().position, anchors.back().position)) return;
    anchors.front().in = anchors.back().in;
    anchors.pop_back();
}

namespace {

RPAnchor AnchorAt(const CFLocation& location) {
    const CFResult* const before = location.before;
    const CFResult* const after = location.after.get();
    if (before == nullptr && after == nullptr) throw kFailedCheck;
    const CFPoint position = before != nullptr ? before->Curve().Control(3) : after->Curve().Control(0);
    return {position, before != nullptr ? before->Curve().Control(2) : position,
            after != nullptr ? after->Curve().Control(1) : position, location.corner};
}

template <class Iterator, class AnchorOf>
void AppendRange(CFPoolVector<RPAnchor>& anchors, Iterator from, Iterator to, bool join, AnchorOf anchor_of) {
    if (join && !anchors.empty()) {
        if (from == to) throw kBrokenInvariant;
        anchors.back().out = anchor_of(*from).out;
        ++from;
    }
    std::transform(from, to, std::back_inserter(anchors), anchor_of);
}

}  // namespace
