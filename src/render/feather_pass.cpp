#include "render/feather_pass.h"

#include <algorithm>
#include <cmath>

#include "base/errors.h"
#include "base/fixed16.h"
#include "base/narrow.h"
#include "host/scratch_buffer.h"

namespace {

// How far one axis' feather reaches, in pixels. The record holds any 32-bit feather, so everything is 64 bits wide.
struct Reach {
    explicit Reach(std::int32_t feather)
        : margin(((std::int64_t{feather} + 0xFFFF) >> 15) & ~std::int64_t{1}), whole((std::int64_t{feather} + 0xFFFF) >> 16) {}

    std::int64_t margin;  // twice the feather rounded up to whole pixels
    std::int64_t whole;   // the feather rounded up
};

// The shape's bounds rounded outwards to whole pixels.
struct PixelBounds {
    explicit PixelBounds(const VRLp_PathBounds& b)
        : left(FloorToInt(static_cast<double>(b.left))),
          top(FloorToInt(static_cast<double>(b.top))),
          right(CeilToInt(static_cast<double>(b.right))),
          bottom(CeilToInt(static_cast<double>(b.bottom))) {}

    std::int64_t left, top, right, bottom;
};

// The part of the buffer, grown by the margins, that the feathered shape can reach.
M_LRect TouchedRect(const PixelBounds& shape, const Reach& x, const Reach& y, const GW_UnoBuffer& buffer) {
    return {SaturateToInt(std::max(-x.margin, shape.left - x.margin)), SaturateToInt(std::max(-y.margin, shape.top - y.margin)),
            SaturateToInt(std::min(buffer.width + x.margin, shape.right + x.margin)),
            SaturateToInt(std::min(buffer.height + y.margin, shape.bottom + y.margin))};
}

bool IsEmpty(const M_LRect& rect) { return std::int64_t{rect.right} - rect.left < 1 || std::int64_t{rect.bottom} - rect.top < 1; }

M_LRect WorkBox(const M_LRect& touched, const GW_UnoBuffer& buffer) {
    return {std::min(touched.left, 0), std::min(touched.top, 0), std::max(touched.right, buffer.width),
            std::max(touched.bottom, buffer.height)};
}

// The progress callback with its fixed arguments; silent when the host gave none.
class Progress {
 public:
    Progress(const GW_ProgressInfo* info, std::int32_t total) : info_(info), total_(total) {}

    void Report(std::int64_t step) const {
        if (info_ == nullptr || info_->progress_proc == nullptr) return;
        ThrowIfFailed(info_->progress_proc(info_->refcon, SaturateToInt(step), total_));
    }

 private:
    const GW_ProgressInfo* info_;
    std::int32_t total_;
};

template <class P>
GW_FeatherLineProc FeatherLineOf() {
    constexpr int entry = sizeof(P) == 1 ? kOverFeatherLine8 : kOverFeatherLine16;
    return reinterpret_cast<GW_FeatherLineProc>(GWp_G_OverFuncs[entry]);
}

template <class P>
class FeatherPass {
 public:
    FeatherPass(VRLp_PolyRasterizer<P>& rasterizer, std::uint16_t value, const VRL_MaskParams& params, GW_UnoBuffer& buffer)
        : rasterizer_(rasterizer),
          value_(value),
          params_(params),
          buffer_(buffer),
          shape_(rasterizer.Bounds()),
          reach_x_(params.feather_x),
          reach_y_(params.feather_y),
          progress_(params.progress,
                    SaturateToInt(std::min<std::int64_t>(buffer.width, shape_.right + reach_y_.margin) + buffer.height)) {}

    void Run(M_LRect* touched) {
        const M_LRect reached = TouchedRect(shape_, reach_x_, reach_y_, buffer_);
        if (touched != nullptr) *touched = reached;
        if (IsEmpty(reached)) {
            VRLp_ClearBuffer(&buffer_);
            return;
        }
        box_ = WorkBox(reached, buffer_);
        TakeBlocks();
        rasterizer_.SetRenderBox(box_);
        for (std::int32_t y = box_.top; y < box_.bottom; ++y) RenderRow(y);
        if (params_.feather_y != 0) FeatherColumns();
    }

 private:
    static constexpr std::int32_t kTileColumns = 32;  // gathered at once: one cache line of every row
    static constexpr std::int32_t kTileRows = 16;     // transposed at once, so that both sides stay in the nearest cache

    void TakeBlocks();
    void RenderRow(std::int32_t y);
    void FeatherLine(std::int32_t length, std::int64_t lo, std::int64_t hi, std::int32_t radius, P* line);

    // After every row and every column: the host may want to stop, and to know how far the pass is.
    void Report(std::int64_t step) const {
        rasterizer_.Canceler().Check();
        progress_.Report(step);
    }

    void FeatherColumns();
    void FeatherTile(std::int32_t first, std::int32_t count, std::int64_t lo, std::int64_t hi);
    void GatherTile(std::int32_t first, std::int32_t count);
    void ScatterTile(std::int32_t first, std::int32_t count);

    // Column 0 of row y, wherever its rows are kept.
    P* StoredRow(std::int32_t y) const {
        const auto row = [&](std::uint8_t* rows, std::int32_t index) {
            return reinterpret_cast<P*>(rows) + std::int64_t{index} * buffer_.width;
        };
        if (y < 0) return row(above_.Data(), y - box_.top);
        if (y < buffer_.height) return buffer_.Row<P>(y);
        return row(below_.Data(), y - buffer_.height);
    }
    P* TileColumn(std::int32_t column) const { return tile_.Data() + std::int64_t{column} * line_samples_; }
    std::int64_t Width() const { return std::int64_t{box_.right} - box_.left; }
    std::int64_t Height() const { return std::int64_t{box_.bottom} - box_.top; }

    VRLp_PolyRasterizer<P>& rasterizer_;
    std::uint16_t value_;
    const VRL_MaskParams& params_;
    GW_UnoBuffer& buffer_;
    PixelBounds shape_;
    Reach reach_x_, reach_y_;
    Progress progress_;
    M_LRect box_ = {};  // what is rendered: the buffer and the rows and columns around it whose coverage reaches into it

    std::int32_t line_samples_ = 0;
    VRLp_ScratchBuffer<std::uint8_t> above_, below_;  // feathered rows outside the buffer, the buffer's columns only
    VRLp_ScratchBuffer<P> line_, scratch_, tile_;
};

template <class P>
void FeatherPass<P>::TakeBlocks() {
    const std::int64_t row_bytes = std::int64_t{buffer_.width} * static_cast<std::int64_t>(sizeof(P));
    if (box_.top < 0) above_.Take(CheckedCount(-std::int64_t{box_.top} * row_bytes));
    if (box_.bottom > buffer_.height) below_.Take(CheckedCount((std::int64_t{box_.bottom} - buffer_.height) * row_bytes));

    // Extra room for the host's line routine, by its quality; a negative feather asks for none.
    const std::int64_t reach = std::max<std::int64_t>({reach_x_.whole, reach_y_.whole, 0});
    const std::int64_t room = params_.quality == 0 ? 4 * reach : 10 * reach + 1;
    line_samples_ = CheckedCount(std::max(Width(), Height()) + room);
    line_.Take(line_samples_);
    scratch_.Take(line_samples_);
}

template <class P>
void FeatherPass<P>::RenderRow(std::int32_t y) {
    P* stored = StoredRow(y);
    // Without margins and feather a row is a row of the buffer: no copy.
    const bool in_place = params_.feather_x == 0 && box_.left == 0 && box_.right == buffer_.width;
    P* line = in_place ? stored : line_.Data();
    int first_x = 0;
    int end_x = 0;
    rasterizer_.RasterizeY(y, value_, line, &first_x, &end_x);
    if (params_.feather_x != 0 && first_x < end_x) {
        FeatherLine(static_cast<std::int32_t>(Width()), std::int64_t{first_x} - 1 - box_.left,
                    std::int64_t{end_x} + 1 - box_.left, params_.feather_x, line);
    }
    if (!in_place) std::copy_n(line - box_.left, buffer_.width, stored);
    Report(y);
}

template <class P>
void FeatherPass<P>::FeatherLine(std::int32_t length, std::int64_t lo, std::int64_t hi, std::int32_t radius, P* line) {
    ThrowIfFailed(
        FeatherLineOf<P>()(params_.quality, length, SaturateToInt(lo), SaturateToInt(hi), radius, scratch_.Data(), line));
}

template <class P>
void FeatherPass<P>::FeatherColumns() {
    const double radius = FixedToDouble(params_.feather_y);
    const VRLp_PathBounds& bounds = rasterizer_.Bounds();
    const auto top = static_cast<double>(bounds.top);
    const auto bottom = static_cast<double>(bounds.bottom);
    const auto first = static_cast<std::int32_t>(std::clamp<std::int64_t>(shape_.left - reach_x_.whole, 0, buffer_.width));
    const auto end = static_cast<std::int32_t>(std::clamp<std::int64_t>(shape_.right + reach_x_.whole, 0, buffer_.width));
    if (std::ceil(bottom + radius) <= 0.0 || std::floor(top - radius) >= buffer_.height || first >= end) return;

    const std::int64_t a = FloorToInt(std::floor(std::max(box_.top + 2.0 * radius, top)) - box_.top);
    const std::int64_t b = FloorToInt(std::floor(std::min(box_.bottom - 2.0 * radius, bottom)) - box_.top);
    tile_.Take(CheckedCount(std::int64_t{kTileColumns} * line_samples_));
    for (std::int32_t x = first; x < end; x += kTileColumns) {
        FeatherTile(x, std::min(kTileColumns, end - x), std::min(a, b) - 1, std::max(a, b) + 1);
    }
}

template <class P>
void FeatherPass<P>::FeatherTile(std::int32_t first, std::int32_t count, std::int64_t lo, std::int64_t hi) {
    GatherTile(first, count);
    std::int32_t done = 0;
    try {
        for (; done < count; ++done) {
            FeatherLine(static_cast<std::int32_t>(Height()), lo, hi, params_.feather_y, TileColumn(done));
            Report(std::int64_t{first} + done + buffer_.height + 1);
        }
    } catch (...) {
        ScatterTile(first, done);  // a stop keeps the columns before it
        throw;
    }
    ScatterTile(first, count);
}

template <class P>
void FeatherPass<P>::GatherTile(std::int32_t first, std::int32_t count) {
    for (std::int32_t y = box_.top; y < box_.bottom; y += kTileRows) {
        const std::int32_t rows = std::min(kTileRows, box_.bottom - y);
        const P* row[kTileRows];
        for (std::int32_t r = 0; r < rows; ++r) row[r] = StoredRow(y + r) + first;
        for (std::int32_t column = 0; column < count; ++column) {
            P* samples = TileColumn(column) + (std::int64_t{y} - box_.top);
            for (std::int32_t r = 0; r < rows; ++r) samples[r] = row[r][column];
        }
    }
}

template <class P>
void FeatherPass<P>::ScatterTile(std::int32_t first, std::int32_t count) {
    for (std::int32_t y = 0; y < buffer_.height; y += kTileRows) {
        const std::int32_t rows = std::min(kTileRows, buffer_.height - y);
        P* row[kTileRows];
        for (std::int32_t r = 0; r < rows; ++r) row[r] = StoredRow(y + r) + first;
        for (std::int32_t column = 0; column < count; ++column) {
            const P* samples = TileColumn(column) + (std::int64_t{y} - box_.top);
            for (std::int32_t r = 0; r < rows; ++r) row[r][column] = samples[r];
        }
    }
}

}  // namespace

template <class P>
void VRLp_RenderFeatheredMask(VRLp_PolyRasterizer<P>* rasterizer, std::uint16_t value, const VRL_MaskParams* params,
                              GW_UnoBuffer* buffer, M_LRect* touched) {
    FeatherPass<P>(*rasterizer, value, *params, *buffer).Run(touched);
}

void VRLp_ClearBuffer(GW_UnoBuffer* buffer) {
    ThrowIfFailed(buffer->IsDeep() ? GW_FillDeepUnoBuffer(0, buffer) : GW_FillUnoBuffer(0, buffer));
}

template void VRLp_RenderFeatheredMask<GW_Pixel8>(VRLp_PolyRasterizer<GW_Pixel8>*, std::uint16_t, const VRL_MaskParams*,
                                                  GW_UnoBuffer*, M_LRect*);
template void VRLp_RenderFeatheredMask<GW_Pixel16>(VRLp_PolyRasterizer<GW_Pixel16>*, std::uint16_t, const VRL_MaskParams*,
                                                   GW_UnoBuffer*, M_LRect*);
