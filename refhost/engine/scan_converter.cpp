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

/// An end of a line.
struct Corner {
    std::int32_t x, y;
    friend bool operator==(const Corner&, const Corner&) = default;
};

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
        RowCursor cursor = pools_.BeginRow();
        const WindingRange range = DrainInto(cursor);
        pools_.EndRow(cursor);
        all = {std::min(all.low, range.low), std::max(all.high, range.high)};
        if (stop_at_overlap && all.ShowsOverlap()) return false;
    }
    return true;
}

bool ScanConverter::WindingRange::ShowsOverlap() const {
    return high > kFullArea + kRoundingArea || low < -kFullArea - kRoundingArea || (high > kRoundingArea && low < -kRoundingArea);
}

ScanConverter::WindingRange ScanConverter::DrainInto(RowCursor& cursor) {
    RowCursor row = cursor;
    WindingRange range;
    sums_.Drain([&](std::int32_t winding, std::int32_t end) {
        range = {std::min(range.low, winding), std::max(range.high, winding)};
        row.Add(winding, end);
    });
    cursor = row;
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

/// Only rows in which the plain sum can be wrong are resolved. Where all lines pass the whole row, pixels between them show the
/// winding number itself; and it only rises or only falls through a pixel that lines of one direction meet.
void ScanConverter::WriteResolvedRows() {
    QueueLines();
    FindTurns();
    touched_.assign(static_cast<std::size_t>(area_.Columns()) + 1, 0);
    for (std::int32_t row = 0; row < area_.Rows(); ++row) {
        pieces_.clear();
        TakePieces(row, [&](const RowPiece& piece) { pieces_.push_back(piece); });
        const bool has_turn = turns_[static_cast<std::size_t>(row)];
        if (has_turn || HasMixedPixel() || !WritePlainRow()) WriteResolvedRow();
    }
}

/// False, and nothing written, when the row shows an overlap.
bool ScanConverter::WritePlainRow() {
    for (const RowPiece& piece : pieces_) sums_.Add(piece);
    RowCursor row = pools_.BeginRow();
    if (DrainInto(row).ShowsOverlap()) return false;
    pools_.EndRow(row);
    return true;
}

void ScanConverter::WriteResolvedRow() {
    for (const RowPiece& piece : resolver_.Resolve(pieces_)) sums_.Add(piece);
    RowCursor row = pools_.BeginRow();
    DrainInto(row);
    pools_.EndRow(row);
}

/// Lines are in outline order: two neighbours of one direction that meet make no turn.
void ScanConverter::FindTurns() {
    turns_.assign(static_cast<std::size_t>(area_.Rows()), false);
    Corner reached{};
    std::int32_t direction = 0;
    for (const OutlineLine& line : lines_) {
        const Corner top = {line.x_top, line.y_top};
        const Corner bottom = {line.x_bottom, line.y_bottom};
        const Corner start = line.winding > 0 ? top : bottom;
        if (line.winding != direction || start != reached) {
            MarkTurn(reached.y);
            MarkTurn(start.y);
        }
        reached = line.winding > 0 ? bottom : top;
        direction = line.winding;
    }
    MarkTurn(reached.y);
}

/// A turn on a row border leaves both rows to lines that pass them.
void ScanConverter::MarkTurn(std::int32_t y) {
    if (y % kSubOne != 0 && y > 0 && y < area_.Rows() * kSubOne) turns_[static_cast<std::size_t>(y / kSubOne)] = true;
}

/// Whether lines of both directions meet a pixel of the row.
bool ScanConverter::HasMixedPixel() {
    const auto for_columns = [&](auto use) {
        for (const RowPiece& piece : pieces_) {
            const auto [low, high] = std::minmax(piece.x_top, piece.x_bottom);
            for (std::int32_t column = low / kSubOne; column <= high / kSubOne; ++column)
                use(touched_[static_cast<std::size_t>(column)], piece.winding);
        }
    };
    bool mixed = false;
    for_columns([&](std::uint8_t& column, std::int32_t winding) {
        column |= winding > 0 ? 1 : 2;
        mixed |= column == 3;
    });
    for_columns([](std::uint8_t& column, std::int32_t) { column = 0; });
    return mixed;
}

}  // namespace refhost
