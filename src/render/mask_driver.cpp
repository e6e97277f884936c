#include "render/mask_driver.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "base/errors.h"
#include "base/fixed16.h"
#include "base/narrow.h"
#include "base/same_number.h"
#include "host/canceler.h"
#include "host/message_table.h"
#include "host/refuse.h"
#include "host/services.h"
#include "render/feather_pass.h"
#include "render/poly_rasterizer.h"
#include "render/variable_feather_rasterizer.h"

namespace {

// The level full coverage receives.
template <class P>
std::uint16_t MaskValue(std::int32_t opacity) {
    const double level = FixedToDouble(opacity) * SampleTraits<P>::kMax + 0.5;
    return static_cast<P>(TruncateTo<std::int32_t>(level));  // keeps the sample's low bits
}

template <class P>
std::unique_ptr<VRLp_PolyRasterizer<P>> MakeRasterizer(const DY_Shape& shape, const VRL_MaskParams& params,
                                                       const VRLp_ProgPtrCanceler& canceler, const M_Matrix3* transform) {
    constexpr std::uint8_t kBestQuality = 1;
    const bool quality = params.quality == kBestQuality;
    const float expansion = NarrowToFloat(FixedToDouble(params.expansion));
    const float stored_aspect = NarrowToFloat(params.pixel_aspect);
    if (!std::isfinite(stored_aspect)) VRLp_Refuse("a pixel aspect ratio is out of range");
    const float aspect = IsSameNumber(static_cast<double>(stored_aspect), 0.0) ? 1.0F : stored_aspect;  // 0: not set
    if (shape.GetFeatherPtCount(0) != 0) {
        const bool smooth = params.variable_feather_option == 0;
        return std::make_unique<VRLp_PolyVariableFeatherRasterizer<P>>(shape, quality, expansion, aspect, smooth, canceler,
                                                                       transform);
    }
    return std::make_unique<VRLp_PolyRasterizer<P>>(shape, quality, expansion, aspect, canceler, transform);
}

template <class P>
void RenderBezierMask(const DY_Shape& shape, const VRL_MaskParams& params, std::uint16_t value, const M_Matrix3* transform,
                      GW_UnoBuffer& buffer, M_LRect* touched) {
    std::int32_t cancel_code = 0;
    const VRLp_ProgPtrCanceler canceler(params.progress, &cancel_code);
    const auto rasterizer = MakeRasterizer<P>(shape, params, canceler, transform);
    if (params.invert == 0) {
        VRLp_RenderFeatheredMask<P>(rasterizer.get(), value, &params, &buffer, touched);
        return;
    }
    // Rendered at the full level: the opacity fades the complement.
    VRLp_RenderFeatheredMask<P>(rasterizer.get(), SampleTraits<P>::kMax, &params, &buffer, nullptr);
    ThrowIfFailed(GW_InvertAndFadeUnoBuffer(params.progress, params.opacity, &buffer));
}

void ReportInvalidShapeType() {
    constexpr int kInvalidShapeTypeCode = 0x260004;
    constexpr int kInvalidShapeTypeText = 0;
    const char* text = YQ_ZLookupLStrCache(VRL_G_zref, kInvalidShapeTypeText, 0, 0);
    ThrowIfFailed(YQp_ReportCodedErrString(kInvalidShapeTypeCode, 8, 3, text));
}

template <class P>
void RenderInto(const DY_Shape* shape, const VRL_MaskParams& params, const M_Matrix3* transform, GW_UnoBuffer& buffer,
                M_LRect* touched) {
    const std::uint16_t value = MaskValue<P>(params.opacity);
    if (value == 0) {
        VRLp_ClearBuffer(&buffer);  // whatever the shape, even none
    } else if (shape == nullptr) {
        VRLp_Refuse("a mask needs a shape");
    } else if (shape->type == kShapeTypeBezier) {
        RenderBezierMask<P>(*shape, params, value, transform, buffer, touched);
    } else {
        ReportInvalidShapeType();
    }
}

void ClampToBuffer(M_LRect& rect, const GW_UnoBuffer& buffer) {
    rect.left = std::min(std::max(rect.left, 0), buffer.width);
    rect.top = std::min(std::max(rect.top, 0), buffer.height);
    rect.right = std::min(std::max(rect.right, 0), buffer.width);
    rect.bottom = std::min(std::max(rect.bottom, 0), buffer.height);
}

}  // namespace

void VRLp_RenderMask(const DY_Shape* shape, const VRL_MaskParams& params, const M_Matrix3* transform, GW_UnoBuffer& buffer,
                     M_LRect* touched) {
    if (touched != nullptr) *touched = {0, 0, buffer.width, buffer.height};
    if (buffer.IsDeep()) {
        RenderInto<GW_Pixel16>(shape, params, transform, buffer, touched);
    } else {
        RenderInto<GW_Pixel8>(shape, params, transform, buffer, touched);
    }
    if (touched != nullptr && params.invert == 0) ClampToBuffer(*touched, buffer);
}
