#pragma once

#include <cstdint>

#include "base/owner.h"
#include "fit/path_generator.h"
#include "trace/trace.h"

/// Base of what turns a trace into the art of its regions.
class KVArtGenerator {
 public:
    virtual ~KVArtGenerator() = default;
};

/// Fits every edge of a trace once and puts closed outlines together for every region, so that neighbours share their
/// curves exactly. All of it happens in the constructor; afterwards the trace has its art and no graph.
class KVOutlineGenerator : public KVArtGenerator {
 public:
    /// `tolerance` in pixels, `corner_angle` in degrees, `window` in points on either side. Borrows the trace.
    /// @throws int  kFailedCheck without a trace, kBrokenInvariant for a window below 1 or a trace without regions
    KVOutlineGenerator(RPTrace* trace, float tolerance, float corner_angle, std::int32_t window, bool skip_outlines);

 private:
    RPTrace* trace_;
    bool skip_outlines_;
    ts::auto_ptr<KVPathGenerator> path_generator_;
};
