#pragma once

#include <cstdint>

#include "base/owner.h"
#include "trace/art_generator.h"
#include "trace/trace.h"
#include "trace/trace_options.h"

/// What art a trace is turned into.
enum VRLp_ArtMode : std::int32_t { kArtModeOutline = 0, kArtModeSecond = 1, kArtModeBoth = 2 };

/// Turns a trace into outlines and keeps what is needed to make shapes of them. Borrows the trace and the transform.
class VRLp_ShapeGenerator {
 public:
    /// @throws int               what `KVOutlineGenerator` throws
    /// @throws kUnsupportedKind  when the options ask for anything but outlines
    VRLp_ShapeGenerator(RPTrace* trace, const VRLp_TraceOptions& options);

    KVArtGenerator& Art() { return *art_generator_; }
    const M_Matrix3* LayerTransform() const { return layer_transform_; }

 private:
    VRLp_ArtMode mode_;
    const M_Matrix3* layer_transform_;
    ts::auto_ptr<KVArtGenerator> art_generator_;
};
