#pragma once

#include <cstdint>

#include "base/export.h"
#include "host/image.h"

class GW_World;

/// A layer of the host.
struct GW_LayerDef {
    std::int32_t width, height;
    GW_World* pixels;  // the host's
};

/// An image of the host with four components a pixel in the order alpha, red, green, blue: bytes 0 to 255, or 16-bit
/// words 0 to 32768. Rows may be padded.
class VRL_HOST_API GW_World {
 public:
    /// A world that refers to the layer's pixels; null for a layer without any. The caller deletes it; the pixels stay the
    /// layer's.
    static GW_World* NewReference(GW_LayerDef* layer);
    /// A world of its own with all components 0; `depth` 8 or 16 bits a component. Null when it cannot be had.
    static GW_World* New(std::int32_t width, std::int32_t height, std::int32_t depth, std::int32_t flags);

    GW_World(const GW_World&) = delete;
    GW_World& operator=(const GW_World&) = delete;
    virtual ~GW_World() = default;
    virtual std::int32_t Depth() const = 0;  // bits a component

    std::int32_t width, height;
    std::int32_t row_bytes;
    void* data;

 protected:
    GW_World(std::int32_t w, std::int32_t h, std::int32_t row_stride, void* first_row)
        : width(w), height(h), row_bytes(row_stride), data(first_row) {}
};

/// Merges `mask` into the alpha of `world` inside `rect`: alpha' = alpha + (max - alpha) * mask / max, rounded. Depths may
/// differ. `progress` may be null.
VRL_HOST_API void GW_MergeMaskAlpha(const GW_ProgressInfo* progress, int, int, const M_LRect* rect, const GW_UnoBuffer* mask,
                                    void*, GW_World* world);

/// One pass of a separable gaussian blur with a standard deviation of about 0.58 `radius` (pixels) over all components of an
/// 8-bit world: along rows when `down` is 0, else along columns. Beyond the world its edge pixels go on. `destination` has
/// the size of `source` and may be the same world (the caller then also passes 1 for the second and third flag). The
/// unnamed arguments are the host's. Status result: 0 is success.
VRL_HOST_API int GW_GaussianBlur1D(const GW_ProgressInfo* progress, const GW_World* source, float radius, int, int down, int, int,
                                   int, int, GW_World* destination);
