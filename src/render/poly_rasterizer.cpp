#include "render/poly_rasterizer.h"

#include <algorithm>

#include "base/errors.h"
#include "base/narrow.h"
#include "host/services.h"
#include "render/coverage_scale.h"

namespace {

void FillSamples(GW_Pixel8* samples, std::int64_t count, std::uint16_t value) {
    std::fill_n(samples, count, static_cast<GW_Pixel8>(value));
}
void FillSamples(GW_Pixel16* samples, std::int64_t count, std::uint16_t value) { YQp_Memset16(value, count, samples); }

}  // namespace

template <class P>
VRLp_PolyRasterizer<P>::VRLp_PolyRasterizer(const DY_Shape& source, bool best, float expansion, float aspect,
                                            const VRLp_ProgPtrCanceler& stop, const M_Matrix3* matrix)
    : pixel_aspect(aspect), quality(best), shape(&source), transform(matrix), canceler(&stop) {
    VRLp_MakeMaskPath(source, best, static_cast<double>(expansion), static_cast<double>(aspect), matrix, path, bounds);
    SetBoxToBounds();
}

template <class P>
void VRLp_PolyRasterizer<P>::SetBoxToBounds() {
    render_box = {FloorToInt(static_cast<double>(bounds.left)), FloorToInt(static_cast<double>(bounds.top)),
                  CeilToInt(static_cast<double>(bounds.right)), CeilToInt(static_cast<double>(bounds.bottom))};
}

template <class P>
void VRLp_PolyRasterizer<P>::SetRenderBox(const M_LRect& box) {
    render_box = box;
    painter = VRLp_FillPainter::OfPath(path.Data(), quality, box);
}

template <class P>
int VRLp_PolyRasterizer<P>::RasterizeY(int y, std::uint16_t value, P* line, int* first_x, int* end_x) {
    if (painter.IsNull()) {
        constexpr int kCheckLine = 272;
        YQ_ReportFailedVerification(0, kCheckLine, 0, "must set SetRenderBox() before calling RasterizeY");
        throw kFailedCheck;
    }
    *first_x = render_box.right;
    *end_x = render_box.left;
    const PIVRun* run = painter.Row(y, line);
    for (std::int32_t x = render_box.left; x < render_box.right; ++run) {
        if (run->end <= x) continue;
        const std::int32_t end = std::min(run->end, render_box.right);
        const std::int64_t column = static_cast<std::int64_t>(x) - render_box.left;
        const std::int64_t count = static_cast<std::int64_t>(end) - x;
        switch (run->kind) {
            case kPIVRunEmpty:
                FillSamples(line + column, count, 0);
                break;
            case kPIVRunFull:
                FillSamples(line + column, count, value);
                break;
            case kPIVRunPartial:
                VRLp_ScaleCoverage(painter.Coverage(column, static_cast<std::int64_t>(y) - render_box.top), count, value,
                                   line + column);
                break;
            default:
                break;
        }
        if (run->kind == kPIVRunFull || run->kind == kPIVRunPartial) {
            *first_x = std::min(*first_x, x);
            *end_x = std::max(*end_x, end);
        }
        x = end;
    }
    return render_box.right;
}

template class VRLp_PolyRasterizer<GW_Pixel8>;
template class VRLp_PolyRasterizer<GW_Pixel16>;
