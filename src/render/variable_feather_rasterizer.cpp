#include "render/variable_feather_rasterizer.h"

#include <algorithm>
#include <cmath>
#include <limits>

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
    const auto radius = static_cast<double>(contour_maker.GetMaxRadius(false));
    const double across = static_cast<double>(this->pixel_aspect) * radius;
    double extent_x = across;
    double extent_y = radius;
    if (this->transform != nullptr) {
        const auto& m = this->transform->m;
        extent_x = std::abs(m[0][0] * across + m[1][0] * radius);
        extent_y = std::abs(m[0][1] * across + m[1][1] * radius);
    }
    const float grow_x = NarrowToFloat(std::ceil(extent_x));
    const float grow_y = NarrowToFloat(std::ceil(extent_y));
    VRLp_PathBounds& b = this->bounds;
    b = {b.left - grow_x, b.top - grow_y, b.right + grow_x, b.bottom + grow_y};
    this->SetBoxToBounds();
}

template <class P>
void VRLp_PolyVariableFeatherRasterizer<P>::SetRenderBox(const M_LRect& box) {
    this->render_box = box;
    contours.resize(static_cast<std::size_t>(RingCount()));
    MakeRings();
    reached = ReachOfRings();
    accumulator.resize(static_cast<std::size_t>(CheckedCount(WidthOf(reached) * (std::int64_t{reached.bottom} - reached.top))));
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

// The box may be far wider than the shape, for a wide blur to come: pixels that no ring reaches are not kept.
template <class P>
M_LRect VRLp_PolyVariableFeatherRasterizer<P>::ReachOfRings() const {
    const M_LRect& box = this->render_box;
    constexpr float kFar = std::numeric_limits<float>::infinity();
    VRLp_PathBounds reach = {kFar, kFar, -kFar, -kFar};
    for (const Contour& contour : contours) {
        if (contour.result == kContourAll) reach = {-kFar, -kFar, kFar, kFar};
        if (contour.result != kContourPath) continue;
        for (const auto [x, y] : contour.path.Data().points) {
            reach = {std::min(reach.left, x), std::min(reach.top, y), std::max(reach.right, x), std::max(reach.bottom, y)};
        }
    }
    const auto column = [&](int x) { return std::clamp(x, box.left, std::max(box.left, box.right)); };
    const auto row = [&](int y) { return std::clamp(y, box.top, std::max(box.top, box.bottom)); };
    return {column(FloorToInt(static_cast<double>(reach.left))), row(FloorToInt(static_cast<double>(reach.top))),
            column(CeilToInt(static_cast<double>(reach.right))), row(CeilToInt(static_cast<double>(reach.bottom)))};
}

template <class P>
void VRLp_PolyVariableFeatherRasterizer<P>::FillBands() {
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
    const std::int32_t top = std::max(band.top, reached.top);
    const std::int32_t bottom = WidthOf(reached) == 0 ? top : std::min(band.bottom, reached.bottom);
    for (const Contour& contour : contours) {
        if (contour.result == kContourAll) {
            for (std::int32_t y = top; y < bottom; ++y) *AccumulatorRow(y) += kFullCoverage;
        } else if (contour.result == kContourPath && !contour.path.IsNull()) {
            const auto fill = VRLp_FillPainter::OfPath(contour.path.Data(), this->quality, band);
            for (std::int32_t y = top; y < bottom; ++y) AddRow(fill, band, y, line.data());
        }
    }
    for (std::int32_t y = top; y < bottom; ++y) {
        float* row = AccumulatorRow(y);
        for (std::int64_t x = 1; x < WidthOf(reached); ++x) row[x] += row[x - 1];
    }
}

template <class P>
void VRLp_PolyVariableFeatherRasterizer<P>::AddRow(const VRLp_FillPainter& fill, const M_LRect& band, std::int32_t y, P* line) {
    float* row = AccumulatorRow(y);
    const std::int64_t width = WidthOf(reached);
    const std::int64_t margin = std::int64_t{reached.left} - band.left;  // columns of the band before the row
    const auto add = [&](std::int64_t begin, std::int64_t end, float coverage) {
        row[begin] += coverage;
        if (end < width) row[end] -= coverage;
    };
    const PIVRun* run = fill.Row(y, line);
    for (std::int64_t x = 0; x < width; ++run) {
        const std::int64_t end = std::min(std::int64_t{run->end} - reached.left, width);
        if (end <= x) continue;
        if (run->kind == kPIVRunFull) add(x, end, kFullCoverage);
        if (run->kind == kPIVRunPartial) {
            const std::uint8_t* coverage = fill.Coverage(margin, std::int64_t{y} - band.top);
            for (std::int64_t i = x; i < end; ++i) add(i, i + 1, coverage[i]);
        }
        x = end;
    }
}

template <class P>
float* VRLp_PolyVariableFeatherRasterizer<P>::AccumulatorRow(std::int32_t y) {
    return accumulator.data() + (std::int64_t{y} - reached.top) * WidthOf(reached);
}

template <class P>
int VRLp_PolyVariableFeatherRasterizer<P>::RasterizeY(int y, std::uint16_t value, P* line, int* first_x, int* end_x) {
    constexpr auto kMax = static_cast<float>(SampleTraits<P>::kMax);
    *first_x = this->render_box.right;
    *end_x = this->render_box.left;
    std::fill_n(line, WidthOf(this->render_box), P{0});
    if (y < reached.top || y >= reached.bottom) return this->render_box.right;
    const float full = NarrowToFloat(static_cast<double>(contours.size()) * 255.0);
    const float level = static_cast<float>(static_cast<P>(value)) / kMax;
    const float* row = AccumulatorRow(y);
    P* samples = line + (std::int64_t{reached.left} - this->render_box.left);
    const auto width = static_cast<std::int32_t>(WidthOf(reached));
    for (std::int32_t column = 0; column < width; ++column) {
        float t = row[column] / full;
        if (smooth) t = (3.0F - 2.0F * t) * (t * t);
        samples[column] = static_cast<P>(t * level * kMax + 0.5F);
    }
    const auto lit = [](P sample) { return sample != 0; };
    const P* end = samples + width;
    const P* first = std::find_if(static_cast<const P*>(samples), end, lit);
    if (first != end) {
        const P* last = end - 1;
        while (*last == 0) --last;
        *first_x = reached.left + static_cast<std::int32_t>(first - samples);
        *end_x = reached.left + static_cast<std::int32_t>(last - samples);
    }
    return this->render_box.right;
}

template class VRLp_PolyVariableFeatherRasterizer<GW_Pixel8>;
template class VRLp_PolyVariableFeatherRasterizer<GW_Pixel16>;
