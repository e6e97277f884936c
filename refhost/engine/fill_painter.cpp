#include "refhost/engine/fill_painter.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <span>
#include <vector>

#include "base/narrow.h"
#include "base/of_thread.h"
#include "refhost/engine/engine_error.h"
#include "refhost/engine/scan_converter.h"

namespace refhost {
namespace {

constexpr std::int64_t kMostExtent = 1 << 20;  // columns or rows of a fill area: its fixed point fits 32 bits

/// Masks make thousands of small painters, on several threads.
struct Workspace {
    std::vector<Point> points;
    ScanConverter converter;
};

void MapPoints(const PathView& path, const PIVMatrix& matrix, std::vector<Point>& points) {
    points.resize(path.Size());
    std::transform(path.points.begin(), path.points.end(), points.begin(), [&](M_Vector2T<float> p) { return Map(matrix, p); });
    const auto is_finite = [](Point p) { return std::isfinite(p.x) && std::isfinite(p.y); };
    if (!std::all_of(points.begin(), points.end(), is_finite)) throw EngineError{&kErrorNotFinite};
}

FillArea FindArea(std::span<const Point> points, const PIVDeviceRect& device) {
    constexpr double kNowhere = std::numeric_limits<double>::infinity();
    Point low = {kNowhere, kNowhere};
    Point high = {-kNowhere, -kNowhere};
    for (const Point point : points) {
        low = {std::min(low.x, point.x), std::min(low.y, point.y)};
        high = {std::max(high.x, point.x), std::max(high.y, point.y)};
    }
    const FillArea shape = {FloorToInt(low.x), FloorToInt(low.y), CeilToInt(high.x), CeilToInt(high.y)};
    return {std::max<std::int64_t>(device.left, shape.left), std::max<std::int64_t>(device.top, shape.top),
            std::min<std::int64_t>(device.right, shape.right), std::min<std::int64_t>(device.bottom, shape.bottom)};
}

}  // namespace

FillPainter::FillPainter(const PathView& path, const PIVMatrix& matrix, const PIVDeviceRect& device, bool best_quality)
    : device_(device), empty_row_{kPIVRunEmpty, device.right}, info_{nullptr, 0, &FillPainter::Row, this} {
    CheckOperators(path);
    Workspace& workspace = OfThread<Workspace>();
    MapPoints(path, matrix, workspace.points);
    const FillArea area = FindArea(workspace.points, device);
    if (area.IsEmpty()) return;
    if (area.right - area.left > kMostExtent || area.bottom - area.top > kMostExtent) throw EngineError{&kErrorBadArgument};

    rows_ = workspace.converter.Convert(path.operators, workspace.points, area, device, best_quality);
    first_row_ = area.top;
    raster_ = std::make_unique_for_overwrite<std::uint8_t[]>(static_cast<std::size_t>(area.right - device.left));
    info_.base = raster_.get();
    if (workspace.converter.IsLarge()) workspace = {};
}

const PIVRun* FillPainter::Row(void* painter, std::int32_t y, const PIVRasterPainterInfo*, void*) {
    return static_cast<FillPainter*>(painter)->UnpackRow(y);
}

/// Puts the row's coverages to their places in the raster.
const PIVRun* FillPainter::UnpackRow(std::int32_t y) {
    const std::int64_t row = y - first_row_;
    if (row < 0 || row >= static_cast<std::int64_t>(rows_.starts.size())) return &empty_row_;
    const FillRows::Start start = rows_.starts[static_cast<std::size_t>(row)];
    const PIVRun* const runs = &rows_.runs[start.run];
    const std::uint8_t* coverage = rows_.coverage.data() + start.coverage;
    std::int64_t column = 0;
    for (const PIVRun* run = runs; column < static_cast<std::int64_t>(device_.right) - device_.left; ++run) {
        const std::int64_t end = static_cast<std::int64_t>(run->end) - device_.left;
        if (run->kind == kPIVRunPartial) {
            std::memcpy(raster_.get() + column, coverage, static_cast<std::size_t>(end - column));
            coverage += end - column;
        }
        column = end;
    }
    return runs;
}

}  // namespace refhost
