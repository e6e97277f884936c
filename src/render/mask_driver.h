#pragma once

#include "api/mask_params.h"
#include "host/geometry_records.h"
#include "host/image.h"
#include "host/shape.h"

/// Renders one mask into `buffer`, inverted and faded as `params` says. `transform` and `touched` may be null, and `shape`
/// where an opacity of 0 leaves nothing of it; see VRL_MaskWithShape for their meaning.
/// @throws int, std::exception  as the host, its engine and the caller's callbacks fail or stop
void VRLp_RenderMask(const DY_Shape* shape, const VRL_MaskParams& params, const M_Matrix3* transform, GW_UnoBuffer& buffer,
                     M_LRect* touched);
