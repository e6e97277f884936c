#pragma once

#include "base/point.h"
#include "fit/pool.h"

class CFSplineResult;

/// A vertex of a fitted path. Handles are absolute positions; without a curve on a side the handle is the position.
struct RPAnchor {
    CFPoint position, in, out;
    bool corner = false;

    friend bool operator==(const RPAnchor&, const RPAnchor&) = default;
};

/// A chain of cubic curves: from every anchor to the next by its out-handle and the next one's in-handle.
class RPPath : public CFPooled {
 public:
    RPPath() = default;
    /// The path of a fitted chain, one anchor for each junction.
    /// @throws int  kFailedCheck for a junction without any curve
    explicit RPPath(const CFSplineResult& result);

    /// Adds `other` at the end. With `join` its first anchor becomes one with the last of this path (unless this is empty).
    /// @throws int  kBrokenInvariant when an empty path is to be joined
    void Append(const RPPath& other, bool join);
    /// The same with `other` walked from its end to its start.
    void AppendReversed(const RPPath& other, bool join);
    /// Makes the first and the last anchor one when they coincide.
    void Close();

    CFPoolVector<RPAnchor> anchors;
    bool closed = false;
};
