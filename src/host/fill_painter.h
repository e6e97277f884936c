#pragma once

#include "host/engine.h"
#include "host/geometry_records.h"
#include "host/grx_path.h"

/// A fill painter of the engine: the coverage of one path inside one pixel box. Null until made by `OfPath`.
class VRLp_FillPainter {
 public:
    VRLp_FillPainter() = default;
    VRLp_FillPainter(const VRLp_FillPainter&) = delete;
    VRLp_FillPainter(VRLp_FillPainter&& other) noexcept;
    VRLp_FillPainter& operator=(VRLp_FillPainter&& other) noexcept;
    ~VRLp_FillPainter();

    /// Scan-converts `path`, whose units are pixels, inside `box` with the nonzero winding rule.
    /// @throws CNUBError, std::bad_alloc  as the engine or its binding fails
    static VRLp_FillPainter OfPath(const GRXPathData& path, bool quality, const M_LRect& box);

    /// The same without what gives its rows: good for nothing but waking the engine.
    static VRLp_FillPainter WithoutRows(const GRXPathData& path, bool quality, const M_LRect& box);

    bool IsNull() const { return info_ == nullptr; }

    /// The runs of row `y`, see `PIVRowProc`. `line` is lent to the painter.
    const PIVRun* Row(std::int32_t y, void* line) const { return info_->row(info_->context, y, info_, line); }

    /// Coverage of the pixel `x` columns and `y` rows inside the box, when it lies in a partial run of the row last asked for.
    const std::uint8_t* Coverage(std::int64_t x, std::int64_t y) const { return info_->base + y * info_->row_bytes + x; }

 private:
    NUBContainer* container_ = nullptr;           // one reference, owned
    const PIVRasterPainterInfo* info_ = nullptr;  // the painter's
};
