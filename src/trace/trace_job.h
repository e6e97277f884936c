#pragma once

#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <vector>

#include "base/owner.h"
#include "host/shape.h"
#include "host/world.h"
#include "trace/trace_options.h"

/// The way of one bitmap to shapes. Borrows the bitmap and the list.
struct VRLp_TraceJob {
    const GW_World* bitmap;
    VRLp_TraceOptions options;
    std::vector<boost::shared_ptr<DY_Shape>>* shapes;
    std::uint8_t flag;
};

/// A job with its own copy of the options, whose sample window it sets to 16 points.
ts::auto_ptr<VRLp_TraceJob> VRLp_CreateJob(const GW_World& bitmap, const VRLp_TraceOptions& options,
                                           std::vector<boost::shared_ptr<DY_Shape>>& shapes, std::uint8_t flag);

/// Traces the bitmap, merges small regions, fits the outlines and appends their shapes. Shapes appended before a failure
/// stay in the list.
/// @throws int               kFailedCheck without a job, kBrokenInvariant for a bitmap without pixels, the host's statuses
/// @throws kUnsupportedKind  for options that ask for anything but outlines
/// @throws std::bad_alloc
void VRLp_RunJob(const VRLp_TraceJob* job);
