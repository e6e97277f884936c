#include "trace/trace_options.h"

#include "base/narrow.h"

VRLp_TraceContext VRLp_FillContext(const VRL_AutoTraceParams& params, const GW_World& source) {
    constexpr double kFullScale = 255.0, kFullPercent = 100.0;
    return {.channel = params.channel,
            .threshold = NarrowToFloat(static_cast<double>(params.threshold) * kFullScale / kFullPercent),
            .blur_radius = params.blur_radius,
            .tolerance = params.tolerance,
            .invert = params.invert,
            .minimum_area = params.minimum_area,
            .corner_angle = params.corner_angle,
            .layer_transform = params.layer_transform,
            .source = &source,
            .bitmap = {},
            .blurred = {}};
}

VRLp_TraceOptions VRLp_BuildOptions(const VRLp_TraceContext& context) {
    constexpr float kHalfTurn = 180.0F, kFullPercent = 100.0F;
    return {.tolerance = context.tolerance,
            .corner_angle = context.corner_angle * kHalfTurn / kFullPercent,
            .minimum_area = TruncateTo<std::int32_t>(static_cast<double>(context.minimum_area)),
            .layer_transform = context.layer_transform};
}
