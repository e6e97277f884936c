#include "refhost/engine/scan_converter.h"

#include <algorithm>
#include <utility>

namespace refhost {
namespace {

constexpr double kBestTolerance = 0.005;                 // pixels between curve and polyline
constexpr double kDraftTolerance = 0.02;                 // pixels
constexpr std::int32_t kRoundingArea = kFullArea / 256;  // by which rounded lines overlap where the path may not
constexpr std::size_t kKeptLines = 1 << 18;              // 8 MB of lines
constexpr std::int32_t kNone = -1;                       // no line

}  // namespace

FillRows ScanConverter::Convert(std::span<const PIVPointType> operators, std::span<const Point> points, const FillArea& area,
                                const PIVDeviceRect& device, bool best_quality) {
    area_ = area;
    lines_.clear();
    AppendOutlineLines(operators, points, best_quality ? kBestTolerance : kDraftTolerance, area, lines_);
    sums_.Reset(area.Columns());
    pools_.Reset(device.left, static_cast<std::int32_t>(area.left), static_cast<std::int32_t>(area.right), device.right);
    if (!WriteRows(best_quality)) {
        pools_.Clear();
        WriteResolvedRows();
    }
    return pools_.Rows();
}

bool ScanConverter::IsLarge() const { return lines_.capacity() > kKeptLines; }

/// False when it stopped because the path overlaps itself.
bool ScanConverter::WriteRows(bool stop_at_overlap) {
    QueueLines();
    WindingRange all;
    for (std::int32_t row = 0; row < area_.Rows(); ++row) {
        TakePieces(row, [&](const RowPiece& piece) { sums_.Add(piece); });
        const WindingRange range = WriteRow();
        all = {std::min(all.low, range.low), std::max(all.high, range.high)};
        if (stop_at_overlap && all.ShowsOverlap()) return false;
    }
    return true;
}

bool ScanConverter::WindingRange::ShowsOverlap() const {
    return high > kFullArea + kRoundingArea || low < -kFullArea - kRoundingArea || (high > kRoundingArea && low < -kRoundingArea);
}

ScanConverter::WindingRange ScanConverter::WriteRow() {
    RowCursor row = pools_.BeginRow();
    WindingRange range;
    sums_.Drain([&](std::int32_t winding, std::int32_t end) {
        range = {std::min(range.low, winding), std::max(range.high, winding)};
        row.Add(winding, end);
    });
    pools_.EndRow(row);
    return range;
}

void ScanConverter::QueueLines() {
    waiting_.assign(static_cast<std::size_t>(area_.Rows()), kNone);
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        std::int32_t& first = waiting_[static_cast<std::size_t>(std::max(lines_[i].y_top, 0) / kSubOne)];
        lines_[i].next = std::exchange(first, static_cast<std::int32_t>(i));
    }
}

/// Hands out the pieces of a row and moves the lines that go on to the next one.
template <class Use>
void ScanConverter::TakePieces(std::int32_t row, Use use) {
    const auto at = static_cast<std::size_t>(row);
    const std::int32_t row_bottom = (row + 1) * kSubOne;
    for (std::int32_t index = waiting_[at]; index != kNone;) {
        OutlineLine& line = lines_[static_cast<std::size_t>(index)];
        use(line.PieceIn(row));
        const std::int32_t next = line.next;
        if (line.y_bottom > row_bottom && at + 1 < waiting_.size()) line.next = std::exchange(waiting_[at + 1], index);
        index = next;
    }
}

void ScanConverter::WriteResolvedRows() {
    QueueLines();
    for (std::int32_t row = 0; row < area_.Rows(); ++row) {
        pieces_.clear();
        TakePieces(row, [&](const RowPiece& piece) { pieces_.push_back(piece); });
        for (const RowPiece& piece : resolver_.Resolve(pieces_)) sums_.Add(piece);
        WriteRow();
    }
}

}  // namespace refhost
