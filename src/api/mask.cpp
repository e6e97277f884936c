#include <memory>
#include <new>

#include "api/vrl.h"
#include "host/refuse.h"
#include "host/status_of.h"
#include "render/mask_driver.h"

namespace {

bool HasSamples(const GW_UnoBuffer& buffer) {
    if (buffer.width < 0 || buffer.height < 0) return false;
    return (buffer.data != nullptr && *buffer.data != nullptr) || buffer.width == 0 || buffer.height == 0;
}

}  // namespace

std::int32_t VRL_MaskWithShape(const DY_Shape* shape, const VRL_MaskParams* params, const M_Matrix3* transform,
                               GW_UnoBuffer* buffer, M_LRect* touched) {
    return VRLp_StatusOf([&] {
        if (params == nullptr || buffer == nullptr || !HasSamples(*buffer)) {
            VRLp_Refuse("a mask needs parameters and a buffer with samples");
        }
        VRLp_RenderMask(shape, *params, transform, *buffer, touched);
    });
}

std::int32_t VRL_MaskWithWorld(const DY_Shape* shape, const VRL_MaskParams* params, GW_LayerDef* layer, M_LRect* touched) {
    return VRLp_StatusOf([&] {
        if (params == nullptr || layer == nullptr) VRLp_Refuse("a mask needs parameters and a layer");
        constexpr std::int32_t kCoverageDepth = 8;
        GW_UnoBuffer coverage(layer->width, layer->height, kCoverageDepth);
        M_LRect merged = {0, 0, 0, 0};
        VRLp_RenderMask(shape, *params, nullptr, coverage, &merged);  // when it fails the layer stays as it is
        if (touched != nullptr) *touched = merged;
        const std::unique_ptr<GW_World> world(GW_World::NewReference(layer));
        if (world == nullptr) throw std::bad_alloc();
        GW_MergeMaskAlpha(params->progress, 0, 0, &merged, &coverage, nullptr, world.get());
    });
}
