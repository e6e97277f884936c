#pragma once

#include <cstdint>

#include "geometry/mask_path.h"
#include "host/canceler.h"
#include "host/fill_painter.h"
#include "host/geometry_records.h"
#include "host/grx_path.h"
#include "host/image.h"
#include "host/shape.h"

/// Turns one mask shape into rows of coverage samples: construct, SetRenderBox, then RasterizeY for any rows of the box.
/// P is the sample type, `GW_Pixel8` or `GW_Pixel16`. Used by one thread at a time.
template <class P>
class VRLp_PolyRasterizer {
 public:
    /// Builds the outline, expanded by `expansion` pixels and transformed; borrows shape, canceler and transform, which
    /// may be null, for its life.
    /// @throws as VRLp_MakeMaskPath
    VRLp_PolyRasterizer(const DY_Shape& shape, bool quality, float expansion, float pixel_aspect,
                        const VRLp_ProgPtrCanceler& canceler, const M_Matrix3* transform);
    VRLp_PolyRasterizer(const VRLp_PolyRasterizer&) = delete;
    VRLp_PolyRasterizer& operator=(const VRLp_PolyRasterizer&) = delete;

    /// Fixes the rectangle to produce and scan-converts the outline in it. May be called again.
    /// When it throws, the painter of the call before stays.
    /// @throws CNUBError, std::bad_alloc
    virtual void SetRenderBox(const M_LRect& box);

    /// Writes row `y` of the box to `line`, whose first sample is the one at the box's left edge; full coverage becomes
    /// `value`. `first_x` and `end_x` (exclusive) receive the extent of the non-empty runs, the box's right and left
    /// edge when there are none. Returns the box's right edge.
    /// @throws int  kFailedCheck, reported, when there was no SetRenderBox
    virtual int RasterizeY(int y, std::uint16_t value, P* line, int* first_x, int* end_x);

    virtual ~VRLp_PolyRasterizer() = default;

    const VRLp_PathBounds& Bounds() const { return bounds; }
    const VRLp_ProgPtrCanceler& Canceler() const { return *canceler; }

 protected:
    void SetBoxToBounds();  // rounded outwards

    VRLp_FillPainter painter;
    VRLp_PathBounds bounds = {};
    M_LRect render_box = {};
    CGRXPath path;
    float pixel_aspect;
    bool quality;
    const DY_Shape* shape;
    const M_Matrix3* transform;
    const VRLp_ProgPtrCanceler* canceler;
};

extern template class VRLp_PolyRasterizer<GW_Pixel8>;
extern template class VRLp_PolyRasterizer<GW_Pixel16>;
