#include "render/variable_feather_rasterizer.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "base/errors.h"
#include "base/narrow.h"
#include "host/matrix.h"
#include "host/parallel.h"
#include "host/status_of.h"

namespace {

constexpr float kFullCoverage = 255.0F;     // what a ring adds to a pixel it covers
constexpr float kRingSpacing = 1.0040916F;  // pixels; the length of (0.71, 0.71)
constexpr double kSpacingVector = 0.71;
constexpr std::int32_t kMostRings = 360;        // 255 / 0.707: more cannot be told apart in 8 bits
constexpr std::int32_t kMostSmoothRings = 540;  // 382 / 0.707: the falloff's middle is half again as steep
constexpr float kBands = 12.0F;
constexpr double kClipMargin = 2.0;  // pixels round the clip in which contours stay as they are

M_FloatRect ToFloatRect(const M_LRect& rect) {
    return {static_cast<double>(rect.left), static_cast<double>(rect.top), static_cast<double>(rect.right),
            static_cast<double>(rect.bottom)};
}

// Runs `step` for every index on the host's threads; whatever leaves a step becomes its status.
template <class Step>
void Iterate(std::int32_t count, Step&& step) {
    const GW_IterateStep call = [](void* context, std::int32_t thread_index, std::int32_t index) -> int {
        return VRLp_StatusOf([&] { (*static_cast<std::remove_reference_t<Step>*>(context))(index, thread_index); });
    };
    ThrowIfFailed(GW_IterateGeneric(count, &step, call));
}

std::int64_t WidthOf(const M_LRect& rect) { return std::max<std::int64_t>(std::int64_t{rect.right} - rect.left, 0); }

VRLp_PathBounds GrownBy(const VRLp_PathBounds& b, float x, float y) { return {b.left - x, b.top - y, b.right + x, b.bottom + y}; }

// The pixels of `box` inside `b`.
M_LRect PixelsOf(const VRLp_PathBounds& b, const M_LRect& box) {
    const auto floor = [](float edge) { return FloorToInt(static_cast<double>(edge)); };
    const auto ceil = [](float edge) { return CeilToInt(static_cast<double>(edge)); };
    const std::int32_t right = std::max(box.left, box.right);
    const std::int32_t bottom = std::max(box.top, box.bottom);
    const std::int32_t left = std::clamp(floor(b.left), box.left, right);
    const std::int32_t top = std::clamp(floor(b.top), box.top, bottom);
    return {left, top, std::clamp(ceil(b.right), left, right), std::clamp(ceil(b.bottom), top, bottom)};
}

std::vector<M_LRect> BandsOf(const M_LRect& box) {
    const auto height = static_cast<double>(std::int64_t{box.bottom} - box.top);
    const std::int32_t rows = std::max(CeilToInt(static_cast<double>(NarrowToFloat(height) / kBands)), 1);
    std::vector<M_LRect> bands;
    for (std::int64_t top = box.top; top < box.bottom; top += rows) {
        bands.push_back({box.left, static_cast<std::int32_t>(top), box.right,
                         static_cast<std::int32_t>(std::min<std::int64_t>(top + rows, box.bottom))});
    }
    return bands;
}

}  // namespace

template <class P>
VRLp_PolyVariableFeatherRasterizer<P>::VRLp_PolyVariableFeatherRasterizer(const DY_Shape& source, bool best, float expansion,
                                                                          float aspect, bool smooth_falloff,
                                                                          const VRLp_ProgPtrCanceler& stop,
                                                                          const M_Matrix3* matrix)
    : VRLp_PolyRasterizer<P>(source, best, 0.0F, aspect, stop, matrix),
      smooth(smooth_falloff),
      contour_maker(const_cast<DY_Shape*>(&source), 1.0F / aspect, stop, expansion) {  // the host only reads the shape
    GrowBoundsByFeather();
}

template <class P>
void VRLp_PolyVariableFeatherRasterizer<P>::GrowBoundsByFeather() {
    const float outermost = contour_maker.GetMaxRadius(false);
    const auto radius = static_cast<double>(outermost);
    const double across = static_cast<double>(this->pixel_aspect) * radius;
    double extent_x = static_cast<double>(this->pixel_aspect * outermost);  // as a float: 1.2 times 10 is 12, and no more
    double extent_y = radius;
    double reach_x = std::abs(across);
    double reach_y = std::abs(radius);
    if (this->transform != nullptr) {
        const auto& m = this->transform->m;
        extent_x = std::abs(m[0][0] * across + m[1][0] * radius);
        extent_y = std::abs(m[0][1] * across + m[1][1] * radius);
        reach_x = std::abs(m[0][0] * across) + std::abs(m[1][0] * radius);
        reach_y = std::abs(m[0][1] * across) + std::abs(m[1][1] * radius);
    }
    ring_bounds = GrownBy(this->bounds, NarrowToFloat(std::ceil(reach_x) + 1.0), NarrowToFloat(std::ceil(reach_y) + 1.0));
    this->bounds = GrownBy(this->bounds, NarrowToFloat(std::ceil(extent_x)), NarrowToFloat(std::ceil(extent_y)));
    this->SetBoxToBounds();
}

template <class P>
void VRLp_PolyVariableFeatherRasterizer<P>::SetRenderBox(const M_LRect& box) {
    this->render_box = box;
    contours.resize(static_cast<std::size_t>(RingCount()));
    kept = PixelsOf(ring_bounds, box);
    accumulator.resize(static_cast<std::size_t>(CheckedCount(WidthOf(kept) * (std::int64_t{kept.bottom} - kept.top))));
    MakeRings();
    FillBands();
}

// The distance in shape units that a pixel's diagonal spans at the most, so that no ring is further than that from the next.
template <class P>
float VRLp_PolyVariableFeatherRasterizer<P>::RingSpacing() const {
    M_Matrix3 inverse;
    if (this->transform == nullptr || M_InverseMatrixQuiet(this->transform, &inverse) != 0) return kRingSpacing;
    const auto& m = inverse.m;
    const double x = kSpacingVector * m[0][0] + kSpacingVector * m[1][0];
    const double y = kSpacingVector * m[0][1] + kSpacingVector * m[1][1];
    return std::max(NarrowToFloat(std::sqrt(x * x + y * y)), kRingSpacing);
}

template <class P>
std::int32_t VRLp_PolyVariableFeatherRasterizer<P>::RingCount() const {
    const float span = contour_maker.GetMaxRadius(false) - contour_maker.GetMaxRadius(true);
    const std::int32_t wanted = CeilToInt(static_cast<double>(span / RingSpacing()));
    return std::clamp(wanted, 1, smooth ? kMostSmoothRings : kMostRings);
}

// The box in the contour maker's space: seen from the shape, scaled by the pixel aspect.
template <class P>
M_FloatRect VRLp_PolyVariableFeatherRasterizer<P>::ContourClip() const {
    M_Matrix3 to_box;
    if (this->transform != nullptr) {
        to_box = *this->transform;
    } else {
        ThrowIfFailed(M_SetIdentityMatrix(&to_box));
    }
    ThrowIfFailed(M_ScaleMatrix(static_cast<double>(this->pixel_aspect), 1.0, 0.0, 0.0, &to_box));
    M_FloatRect clip = ToFloatRect(this->render_box);
    M_Matrix3 from_box;
    if (M_InverseMatrixQuiet(&to_box, &from_box) == 0) {
        const M_FloatRect box = clip;
        M_TransformBounds(&from_box, &box, &clip);
    }
    return {clip.left - kClipMargin, clip.top - kClipMargin, clip.right + kClipMargin, clip.bottom + kClipMargin};
}

template <class P>
void VRLp_PolyVariableFeatherRasterizer<P>::MakeRings() {
    const auto count = static_cast<std::int32_t>(contours.size());
    const float step = NarrowToFloat(1.0 / count);
    const M_FloatRect clip = ContourClip();
    Iterate(count, [&](std::int32_t index, std::int32_t thread_index) { MakeRing(index, thread_index, step, clip); });
}

template <class P>
void VRLp_PolyVariableFeatherRasterizer<P>::MakeRing(std::int32_t index, std::int32_t thread_index, float step,
                                                     const M_FloatRect& clip) {
    if (thread_index == 0) this->canceler->Check();
    DY_ContourResults result = kContourPath;
    CGRXPath ring = CGRXPath::Adopt(contour_maker.MakeGRXPath(static_cast<float>(index) * step, 1.0F, &clip, &result));
    if (this->transform != nullptr && result == kContourPath && !ring.IsNull()) {
        ring = ring.Transformed(VRLp_EngineMatrix(*this->transform));
    }
    contours[static_cast<std::size_t>(index)] = {std::move(ring), result};
}

template <class P>
void VRLp_PolyVariableFeatherRasterizer<P>::FillBands() {
    const auto covers_all = [](const Contour& contour) { return contour.result == kContourAll; };
    everywhere = kFullCoverage * static_cast<float>(std::count_if(contours.begin(), contours.end(), covers_all));
    const std::vector<M_LRect> bands = BandsOf(this->render_box);
    Iterate(static_cast<std::int32_t>(bands.size()), [&](std::int32_t index, std::int32_t thread_index) {
        FillBand(bands[static_cast<std::size_t>(index)], thread_index);
    });
}

// The accumulator first takes the differences between neighbouring pixels, so that a run costs its two ends whatever its
// length, and is summed along the rows at the end. All values are whole numbers below 2^24: exact in any order.
template <class P>
void VRLp_PolyVariableFeatherRasterizer<P>::FillBand(const M_LRect& band, std::int32_t thread_index) {
    if (thread_index == 0) this->canceler->Check();
    if (WidthOf(band) == 0) return;
    std::vector<P> line(static_cast<std::size_t>(WidthOf(band)));
    for (const Contour& contour : contours) {
        if (contour.result != kContourPath || contour.path.IsNull()) continue;
        const auto fill = VRLp_FillPainter::OfPath(contour.path.Data(), this->quality, band);
        for (std::int32_t y = band.top; y < band.bottom; ++y) AddRow(fill, band, y, line.data());
    }
    for (std::int32_t y = band.top; y < band.bottom; ++y) {
        const std::span<float> row = KeptRow(y);
        std::partial_sum(row.begin(), row.end(), row.begin());
    }
}

template <class P>
void VRLp_PolyVariableFeatherRasterizer<P>::AddRow(const VRLp_FillPainter& fill, const M_LRect& band, std::int32_t y, P* line) {
    const std::span<float> row = KeptRow(y);
    const auto width = static_cast<std::int64_t>(row.size());
    const std::int64_t margin = std::int64_t{kept.left} - band.left;  // columns of the band before the row
    const auto add = [&](std::int64_t begin, std::int64_t end, float coverage) {
        row[static_cast<std::size_t>(begin)] += coverage;
        if (end < width) row[static_cast<std::size_t>(end)] -= coverage;
    };
    const PIVRun* run = fill.Row(y, line);
    for (std::int64_t x = 0; x < width; ++run) {
        const std::int64_t end = std::min(std::int64_t{run->end} - kept.left, width);
        if (end <= x) continue;
        if (run->kind == kPIVRunFull) add(x, end, kFullCoverage);
        if (run->kind == kPIVRunPartial) {
            const std::uint8_t* coverage = fill.Coverage(margin, std::int64_t{y} - band.top);
            for (std::int64_t i = x; i < end; ++i) add(i, i + 1, coverage[i]);
        }
        x = end;
    }
}

// The kept part of row `y`; empty outside.
template <class P>
std::span<float> VRLp_PolyVariableFeatherRasterizer<P>::KeptRow(std::int32_t y) {
    if (y < kept.top || y >= kept.bottom) return {};
    return {accumulator.data() + (std::int64_t{y} - kept.top) * WidthOf(kept), static_cast<std::size_t>(WidthOf(kept))};
}

template <class P>
int VRLp_PolyVariableFeatherRasterizer<P>::RasterizeY(int y, std::uint16_t value, P* line, int* first_x, int* end_x) {
    constexpr auto kMax = static_cast<float>(SampleTraits<P>::kMax);
    const M_LRect& box = this->render_box;
    const float full = NarrowToFloat(static_cast<double>(contours.size()) * 255.0);
    const float level = static_cast<float>(static_cast<P>(value)) / kMax;
    const auto sample = [&](float sum) {
        float t = sum / full;
        if (smooth) t = (3.0F - 2.0F * t) * (t * t);
        return static_cast<P>(t * level * kMax + 0.5F);
    };
    std::fill_n(line, WidthOf(box), sample(everywhere));
    P* kept_sample = line + (std::int64_t{kept.left} - box.left);
    for (const float sum : KeptRow(y)) *kept_sample++ = sample(everywhere + sum);
    *first_x = box.right;
    *end_x = box.left;
    const P* end = line + WidthOf(box);
    const P* first = std::find_if(static_cast<const P*>(line), end, [](P s) { return s != 0; });
    if (first != end) {
        const P* last = end - 1;
        while (*last == 0) --last;
        *first_x = box.left + static_cast<std::int32_t>(first - line);
        *end_x = box.left + static_cast<std::int32_t>(last - line);
    }
    return box.right;
}

template class VRLp_PolyVariableFeatherRasterizer<GW_Pixel8>;
template class VRLp_PolyVariableFeatherRasterizer<GW_Pixel16>;
