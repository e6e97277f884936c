#pragma once

#include <cstdint>

#include "api/mask_params.h"
#include "host/geometry_records.h"
#include "host/image.h"
#include "render/poly_rasterizer.h"

/// Fills the whole of `buffer` from `rasterizer`, full coverage becoming `value`, and softens the mask's edge: every row
/// is rasterized and feathered, then every column the shape can reach. Coverage up to twice the feather outside the
/// buffer takes part. `touched` (may be null) receives the shape's pixel bounds grown by the feather's reach and clipped
/// to the buffer grown by it. Nothing of the buffer's earlier content survives.
/// @throws int  a host status, the progress callback's stop code, or the status for exhausted memory; the buffer keeps
///              what was written
template <class P>
void VRLp_RenderFeatheredMask(VRLp_PolyRasterizer<P>* rasterizer, std::uint16_t value, const VRL_MaskParams* params,
                              GW_UnoBuffer* buffer, M_LRect* touched);

extern template void VRLp_RenderFeatheredMask<GW_Pixel8>(VRLp_PolyRasterizer<GW_Pixel8>*, std::uint16_t, const VRL_MaskParams*,
                                                         GW_UnoBuffer*, M_LRect*);
extern template void VRLp_RenderFeatheredMask<GW_Pixel16>(VRLp_PolyRasterizer<GW_Pixel16>*, std::uint16_t, const VRL_MaskParams*,
                                                          GW_UnoBuffer*, M_LRect*);

/// Sets every sample of `buffer` to 0.
/// @throws int  the host's status
void VRLp_ClearBuffer(GW_UnoBuffer* buffer);
