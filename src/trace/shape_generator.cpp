#include "trace/shape_generator.h"

#include "base/errors.h"
#include "base/narrow.h"

namespace {

VRLp_ArtMode ModeOf(const VRLp_TraceOptions& options) {
    const bool outline = options.outline_kind != 0, second = options.second_kind != 0;
    if (!outline && !second) throw kUnsupportedKind;
    if (!second) return kArtModeOutline;
    return outline ? kArtModeBoth : kArtModeSecond;
}

}  // namespace

VRLp_ShapeGenerator::VRLp_ShapeGenerator(RPTrace* trace, const VRLp_TraceOptions& options)
    : layer_transform_(options.layer_transform) {
    if (trace == nullptr) throw kFailedCheck;
    mode_ = ModeOf(options);
    if (mode_ != kArtModeOutline) throw kUnsupportedKind;
    const auto window = TruncateTo<std::int32_t>(static_cast<double>(options.sample_window));
    art_generator_ =
        ts::make_auto<KVOutlineGenerator>(trace, options.tolerance, options.corner_angle, window, options.skip_outlines != 0);
}
