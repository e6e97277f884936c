#pragma once

#include <cstdint>
#include <functional>

#include "base/owner.h"
#include "fit/path_generator.h"
#include "trace/outline_art.h"
#include "trace/trace.h"

/// Base of what turns a trace into the art of its regions.
class KVArtGenerator {
 public:
    virtual ~KVArtGenerator() = default;
    /// Calls `visit` with the art of every region that `wants` it, in the order of the regions. The trace's graph and regions are
    /// used up.
    virtual void ForEachArt(const std::function<bool(const RPRegion&)>& wants,
                            const std::function<void(const RPOutlineArt&)>& visit) = 0;
};

/// Fits every edge of a trace once and puts closed outlines together for its regions, so that neighbours share their curves
/// exactly. Art is made region by region: what is behind is given back while the shapes made of it grow.
class KVOutlineGenerator : public KVArtGenerator {
 public:
    /// `tolerance` in pixels, `corner_angle` in degrees, `window` in points on either side. Borrows the trace.
    /// `skip_outlines`: there is no art.
    /// @throws int  kFailedCheck without a trace, kBrokenInvariant for a window below 1 or a trace without regions
    KVOutlineGenerator(RPTrace* trace, float tolerance, float corner_angle, std::int32_t window, bool skip_outlines);

    void ForEachArt(const std::function<bool(const RPRegion&)>& wants,
                    const std::function<void(const RPOutlineArt&)>& visit) override;

 private:
    RPTrace* trace_;
    bool skip_outlines_;
    ts::auto_ptr<KVPathGenerator> path_generator_;
};
