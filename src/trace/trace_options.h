#pragma once

#include <cstdint>

#include "api/auto_trace_params.h"
#include "base/owner.h"
#include "host/world.h"

/// What one call of auto-trace works on.
struct VRLp_TraceContext {
    std::int32_t channel;  // VRL_TraceChannel
    float threshold;       // 0 to 255
    float blur_radius;     // pixels
    float tolerance;       // pixels
    std::uint8_t invert;
    float minimum_area;  // pixels
    float corner_angle;  // percent of 180 degrees
    const M_Matrix3* layer_transform;
    const GW_World* source;          // the caller's
    ts::auto_ptr<GW_World> bitmap;   // set pixels white, clear ones black
    ts::auto_ptr<GW_World> blurred;  // empty when no blur is asked for
};

/// What the stages after the threshold read.
struct VRLp_TraceOptions {
    std::uint8_t outline_kind = 1;  // the kinds of art: outlines, and a second one that is not served
    std::uint8_t second_kind = 0;
    float tolerance;              // pixels
    float corner_angle;           // degrees
    float sample_window = 12.0F;  // points looked at on either side of one
    std::int32_t minimum_area;    // pixels; 0 or less: no regions are merged
    std::uint8_t skip_outlines = 0;
    const M_Matrix3* layer_transform;  // may be null
};

/// The context of a call, without its worlds.
VRLp_TraceContext VRLp_FillContext(const VRL_AutoTraceParams& params, const GW_World& source);

VRLp_TraceOptions VRLp_BuildOptions(const VRLp_TraceContext& context);
