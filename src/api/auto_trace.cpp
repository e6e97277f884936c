#include <limits>
#include <new>

#include "api/vrl.h"
#include "base/errors.h"
#include "host/refuse.h"
#include "trace/preprocess.h"
#include "trace/trace_job.h"

namespace {

constexpr std::int32_t kTracedDepth = 8;
constexpr std::int32_t kLargestSide = std::numeric_limits<std::int16_t>::max();  // pixel corners are 16-bit

bool HasPixels(const GW_World& world) { return world.data != nullptr || world.width == 0 || world.height == 0; }

/// After a mirroring transform outlines run the wrong way, so this comes last.
void DirectOutlines(const std::vector<boost::shared_ptr<DY_Shape>>& shapes) {
    constexpr std::int32_t kFewestItems = 3;
    constexpr unsigned char kClockwise = 1;
    for (const auto& shape : shapes) {
        if (shape->IsOpen() || (*shape->GetPoints())->count < kFewestItems) continue;
        ThrowIfFailed(DY_SetPolyDir(kClockwise, shape.get()));
    }
}

}  // namespace

void VRL_NewMasksFromWorld(const GW_World* world, const VRL_AutoTraceParams* params,
                           std::vector<boost::shared_ptr<DY_Shape>>& shapes) {
    if (world == nullptr || params == nullptr || !HasPixels(*world)) {
        VRLp_Refuse("NewMaskFromWorld needs an image with pixels and parameters");
    }
    const std::int32_t depth = world->Depth();
    ts::auto_ptr<GW_World> bitmap(GW_World::New(world->width, world->height, depth, 0));
    if (!bitmap) throw std::bad_alloc();
    VRLp_TraceContext context = VRLp_FillContext(*params, *world);
    context.bitmap = std::move(bitmap);
    if (depth != kTracedDepth) VRLp_Refuse("NewMaskFromWorld only works for 8bpc");
    if (world->width > kLargestSide || world->height > kLargestSide) {
        VRLp_Refuse("NewMaskFromWorld only works for images up to 32767 pixels a side");
    }
    VRLp_Preprocess(context);
    constexpr std::uint8_t kFlag = 1;
    const auto job = VRLp_CreateJob(*context.bitmap, VRLp_BuildOptions(context), shapes, kFlag);
    if (!job) throw kFailedCheck;
    VRLp_RunJob(job.get());
    DirectOutlines(shapes);
}
