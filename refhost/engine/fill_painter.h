#pragma once

#include <cstdint>
#include <memory>

#include "host/engine.h"
#include "refhost/engine/fill_rows.h"
#include "refhost/engine/path_view.h"

namespace refhost {

/// The fill of one path (nonzero winding, open subpaths filled as if closed) over a device rectangle, with exact area coverage.
/// The whole rectangle is scan-converted at construction; what is kept is of the order of the outline's length, not of the
/// rectangle's area. The coverage raster is a single row, which the row function fills in; so one thread uses a painter at a
/// time.
///
/// Curves are followed to 0.005 px at best quality, else to 0.02 px. Where the path overlaps itself the area counts once, down to
/// overlaps within a pixel. A row is the same whatever other rows the rectangle holds.
class FillPainter {
 public:
    /// The path is not needed afterwards. Of `device` only left, top, right and bottom matter; an empty rectangle makes a
    /// painter of empty rows.
    /// @throws EngineError  kErrorNotFinite when a transformed point is not finite; kErrorBadPath when the operators make no
    ///                      path; kErrorBadArgument when the path meets more than a million columns or rows of the rectangle
    /// @throws std::bad_alloc
    FillPainter(const PathView& path, const PIVMatrix& matrix, const PIVDeviceRect& device, bool best_quality);
    FillPainter(const FillPainter&) = delete;
    FillPainter& operator=(const FillPainter&) = delete;

    /// Borrowed, for the painter's life.
    const PIVRasterPainterInfo& Info() const { return info_; }

 private:
    static const PIVRun* Row(void* painter, std::int32_t y, const PIVRasterPainterInfo* info, void* line);
    const PIVRun* UnpackRow(std::int32_t y);

    PIVDeviceRect device_;
    PIVRun empty_row_;
    std::int64_t first_row_ = 0;  // y of the first of `rows_`; rows outside them are empty
    FillRows rows_;
    std::unique_ptr<std::uint8_t[]> raster_;  // one row of the rectangle
    PIVRasterPainterInfo info_;
};

}  // namespace refhost
