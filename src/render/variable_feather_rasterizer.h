#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "host/feather_contour.h"
#include "render/poly_rasterizer.h"

/// Renders a mask whose feather varies along its outline: the outline at evenly spaced fractions of the feather span is
/// filled, and a pixel's value is the share of these rings that cover it. All rings are made and filled, in parallel, by
/// SetRenderBox; RasterizeY converts. Statuses of the parallel steps are thrown as integers.
template <class P>
class VRLp_PolyVariableFeatherRasterizer : public VRLp_PolyRasterizer<P> {
 public:
    /// `smooth` shapes the falloff with 3t^2 - 2t^3. The other arguments are those of the base.
    /// @throws as the base and the contour maker
    VRLp_PolyVariableFeatherRasterizer(const DY_Shape& shape, bool quality, float expansion, float pixel_aspect, bool smooth,
                                       const VRLp_ProgPtrCanceler& canceler, const M_Matrix3* transform);

    /// To be called once.
    /// @throws int, std::length_error, std::bad_alloc
    void SetRenderBox(const M_LRect& box) override;

    /// As the base's, for rows of the box; but `end_x` is the last column with a non-zero sample itself.
    int RasterizeY(int y, std::uint16_t value, P* line, int* first_x, int* end_x) override;

 private:
    struct Contour {
        CGRXPath path;
        DY_ContourResults result = kContourPath;
    };

    void GrowBoundsByFeather();
    float RingSpacing() const;
    std::int32_t RingCount() const;
    M_FloatRect ContourClip() const;

    void MakeRings();
    void MakeRing(std::int32_t index, std::int32_t thread_index, float step, const M_FloatRect& clip);
    void FillBands();
    void FillBand(const M_LRect& band, std::int32_t thread_index);
    void AddRow(const VRLp_FillPainter& fill, const M_LRect& band, std::int32_t y, P* line);  // `line` is lent to the painter
    std::span<float> KeptRow(std::int32_t y);

    std::vector<Contour> contours;
    bool smooth;
    float everywhere = 0;              // 255 for every ring that covers the whole box
    VRLp_PathBounds ring_bounds = {};  // no outline of a ring leaves them
    M_LRect kept = {};                 // the box's pixels in these bounds; for a blur to come, the box may be far wider
    std::vector<float> accumulator;    // one for each kept pixel: 255 for every other ring that covers it
    DY_FeatherContourMaker contour_maker;
};

extern template class VRLp_PolyVariableFeatherRasterizer<GW_Pixel8>;
extern template class VRLp_PolyVariableFeatherRasterizer<GW_Pixel16>;
