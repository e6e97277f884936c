#include "refhost/engine/fill_painter.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <span>
#include <utility>

#include "base/narrow.h"
#include "refhost/engine/engine_error.h"
#include "refhost/engine/outline_lines.h"
#include "refhost/engine/row_accumulator.h"
#include "refhost/engine/winding_resolve.h"

namespace refhost {
namespace {

constexpr double kBestTolerance = 0.005;                 // pixels between curve and polyline
constexpr double kDraftTolerance = 0.02;                 // pixels
constexpr std::int64_t kMostExtent = 1 << 20;            // columns or rows of a fill area: its fixed point fits 32 bits
constexpr std::int32_t kRoundingArea = kFullArea / 256;  // by which rounded lines overlap where the path may not
constexpr std::size_t kKeptLines = 1 << 18;              // a fill of more lines gives its working memory back; 10 MB and more
constexpr std::int32_t kNone = -1;

void CheckOperators(const PathView& path);
void MapPoints(const PathView& path, const PIVMatrix& matrix, std::vector<Point>& points);
FillArea FindArea(std::span<const Point> points, const PIVDeviceRect& device);

/// The least and the greatest mean winding of some pixels, times kFullArea.
struct WindingRange {
    std::int32_t low = 0, high = 0;

    /// Whether one outline that does not overlap itself cannot have left it.
    bool ShowsOverlap() const;
};

/// Collects the runs of row after row.
class RunWriter {
 public:
    RunWriter(const FillArea& area, const PIVDeviceRect& device, FillRows& out) : left_(area.left), device_(device), out_(out) {}

    void BeginRow();
    /// The columns up to `end` have this mean winding, times kFullArea.
    void Add(std::int32_t winding, std::int32_t end);
    void EndRow();
    /// Drops what the row begun last holds.
    void RestartRow();

 private:
    void AddLead();
    void AddRun(std::uint32_t kind, std::int32_t end);

    std::int64_t left_;  // x of column 0
    PIVDeviceRect device_;
    std::int32_t column_ = 0;  // reached so far
    FillRows& out_;
};

/// Turns an outline into rows. Keeps its working memory from fill to fill.
class ScanConverter {
 public:
    void Convert(const PathView& path, std::span<const Point> points, const FillArea& area, const PIVDeviceRect& device,
                 bool best_quality, FillRows& out);
    bool IsLarge() const { return lines_.capacity() > kKeptLines; }

 private:
    bool WriteRows(RunWriter& writer, bool stop_at_overlap);
    void WriteResolvedRows(RunWriter& writer);
    void WriteResolvedRow(std::int32_t row, RunWriter& writer);
    WindingRange DrainRow(RunWriter& writer);
    void QueueLines();
    template <class Use>
    void TakePieces(std::int32_t row, Use use);
    void FindTurns();
    void MarkTurn(std::int32_t y);
    bool HasMixedPixel();

    FillArea area_{};
    std::vector<OutlineLine> lines_;
    std::vector<std::int32_t> waiting_;  // per row the first of the lines whose next piece lies in it
    std::vector<bool> turns_;            // per row: a line ends inside it that no line of the same direction goes on from
    std::vector<std::uint8_t> touched_;  // per column a bit for each direction
    std::vector<RowPiece> pieces_;       // of the current row
    RowAccumulator sums_;
    WindingResolver resolver_;
};

/// An end of a line.
struct Corner {
    std::int32_t x, y;
    friend bool operator==(const Corner&, const Corner&) = default;
};

/// Masks make thousands of small painters, on several threads.
struct Workspace {
    std::vector<Point> points;
    FillRows rows;
    ScanConverter converter;
};
thread_local Workspace workspace;

void CheckOperators(const PathView& path) {
    const auto check = [](bool sound) {
        if (!sound) throw EngineError{&kErrorBadPath};
    };
    const std::span<const PIVPointType> operators = path.operators;
    check(operators.size() == path.Size());
    check(operators.empty() || operators.front() == kPIVMove);
    for (std::size_t i = 0; i < operators.size(); ++i) {
        check(operators[i] <= kPIVClose);
        if (operators[i] != kPIVCurve) continue;
        check(operators.size() - i >= 3 && operators[i + 1] == kPIVCurve && operators[i + 2] == kPIVCurve);
        i += 2;
    }
}

void MapPoints(const PathView& path, const PIVMatrix& matrix, std::vector<Point>& points) {
    points.clear();
    points.reserve(path.Size());
    for (const M_Vector2T<float> point : path.points) {
        points.push_back(Map(matrix, point));
        if (!std::isfinite(points.back().x) || !std::isfinite(points.back().y)) throw EngineError{&kErrorNotFinite};
    }
}

FillArea FindArea(std::span<const Point> points, const PIVDeviceRect& device) {
    constexpr double kNowhere = std::numeric_limits<double>::infinity();
    double left = kNowhere, top = kNowhere, right = -kNowhere, bottom = -kNowhere;
    for (const Point point : points) {
        left = std::min(left, point.x);
        top = std::min(top, point.y);
        right = std::max(right, point.x);
        bottom = std::max(bottom, point.y);
    }
    return {std::max(device.left, FloorToInt(left)), std::max(device.top, FloorToInt(top)),
            std::min(device.right, CeilToInt(right)), std::min(device.bottom, CeilToInt(bottom))};
}

bool WindingRange::ShowsOverlap() const {
    return high > kFullArea + kRoundingArea || low < -kFullArea - kRoundingArea || (high > kRoundingArea && low < -kRoundingArea);
}

void RunWriter::BeginRow() {
    out_.starts.push_back({out_.runs.size(), out_.coverage.size()});
    AddLead();
}

void RunWriter::RestartRow() {
    out_.runs.resize(out_.starts.back().run);
    out_.coverage.resize(out_.starts.back().coverage);
    AddLead();
}

void RunWriter::AddLead() {
    if (left_ > device_.left) AddRun(kPIVRunEmpty, 0);
    column_ = 0;
}

void RunWriter::Add(std::int32_t winding, std::int32_t end) {
    const auto area = static_cast<std::uint32_t>(std::min(std::abs(std::max(winding, -kFullArea)), kFullArea));
    const std::uint32_t level = (area * 255 + kFullArea / 2) / kFullArea;
    if (level == 0 || level == 255) {
        AddRun(level == 0 ? kPIVRunEmpty : kPIVRunFull, end);
    } else {
        AddRun(kPIVRunPartial, end);
        out_.coverage.insert(out_.coverage.end(), static_cast<std::size_t>(end - column_), static_cast<std::uint8_t>(level));
    }
    column_ = end;
}

void RunWriter::AddRun(std::uint32_t kind, std::int32_t end) {
    const auto x = static_cast<std::int32_t>(left_ + end);
    if (out_.runs.size() > out_.starts.back().run && out_.runs.back().kind == kind)
        out_.runs.back().end = x;
    else
        out_.runs.push_back({kind, x});
}

void RunWriter::EndRow() { AddRun(kPIVRunEmpty, static_cast<std::int32_t>(device_.right - left_)); }

void ScanConverter::Convert(const PathView& path, std::span<const Point> points, const FillArea& area,
                            const PIVDeviceRect& device, bool best_quality, FillRows& out) {
    area_ = area;
    lines_.clear();
    AppendOutlineLines(path.operators, points, best_quality ? kBestTolerance : kDraftTolerance, area, lines_);
    sums_.Reset(area.Columns());
    RunWriter writer(area, device, out);
    if (WriteRows(writer, best_quality)) return;
    out.Clear();
    WriteResolvedRows(writer);
}

/// False when it stopped because the path overlaps itself.
bool ScanConverter::WriteRows(RunWriter& writer, bool stop_at_overlap) {
    QueueLines();
    WindingRange all;
    for (std::int32_t row = 0; row < area_.Rows(); ++row) {
        TakePieces(row, [&](const RowPiece& piece) { sums_.Add(piece); });
        writer.BeginRow();
        const WindingRange range = DrainRow(writer);
        writer.EndRow();
        all = {std::min(all.low, range.low), std::max(all.high, range.high)};
        if (stop_at_overlap && all.ShowsOverlap()) return false;
    }
    return true;
}

WindingRange ScanConverter::DrainRow(RunWriter& writer) {
    WindingRange range;
    sums_.Drain([&](std::int32_t winding, std::int32_t end) {
        range = {std::min(range.low, winding), std::max(range.high, winding)};
        writer.Add(winding, end);
    });
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

/// With the nonzero rule only rows that can differ from the plain sum are resolved. Where all lines pass the whole row, pixels
/// between them show the winding; where pixels at them see lines of one direction only, it rises or falls through them.
void ScanConverter::WriteResolvedRows(RunWriter& writer) {
    QueueLines();
    FindTurns();
    touched_.assign(static_cast<std::size_t>(area_.Columns()) + 1, 0);
    for (std::int32_t row = 0; row < area_.Rows(); ++row) {
        pieces_.clear();
        TakePieces(row, [&](const RowPiece& piece) { pieces_.push_back(piece); });
        writer.BeginRow();
        WriteResolvedRow(row, writer);
        writer.EndRow();
    }
}

void ScanConverter::WriteResolvedRow(std::int32_t row, RunWriter& writer) {
    if (!turns_[static_cast<std::size_t>(row)] && !HasMixedPixel()) {
        for (const RowPiece& piece : pieces_) sums_.Add(piece);
        if (!DrainRow(writer).ShowsOverlap()) return;
        writer.RestartRow();
    }
    for (const RowPiece& piece : resolver_.Resolve(pieces_)) sums_.Add(piece);
    DrainRow(writer);
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

}  // namespace

void FillRows::Clear() {
    starts.clear();
    runs.clear();
    coverage.clear();
}

FillPainter::FillPainter(const PathView& path, const PIVMatrix& matrix, const PIVDeviceRect& device, bool best_quality)
    : device_(device), empty_row_{kPIVRunEmpty, device.right}, info_{nullptr, 0, &FillPainter::Row, this} {
    CheckOperators(path);
    MapPoints(path, matrix, workspace.points);
    const FillArea area = FindArea(workspace.points, device);
    if (area.IsEmpty()) return;
    if (area.right - area.left > kMostExtent || area.bottom - area.top > kMostExtent) throw EngineError{&kErrorBadArgument};

    workspace.rows.Clear();
    workspace.converter.Convert(path, workspace.points, area, device, best_quality, workspace.rows);
    rows_ = workspace.rows;  // copies: no larger than needed
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
