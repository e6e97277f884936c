#include "api/status_of.h"
#include "api/vrl.h"
#include "render/mask_driver.h"

std::int32_t VRL_MaskWithShape(const DY_Shape* shape, const VRL_MaskParams* params, const M_Matrix3* transform,
                               GW_UnoBuffer* buffer, M_LRect* touched) {
    return VRLp_StatusOf([&] { VRLp_RenderMask(*shape, *params, transform, *buffer, touched); });
}
