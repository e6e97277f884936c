#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "host/engine.h"
#include "refhost/engine/row_accumulator.h"

namespace refhost {

/// The rows of a fill: for each its runs, and the coverages of its partial runs packed without gaps.
struct FillRows {
    struct Start {
        std::size_t run, coverage;
    };
    std::vector<Start> starts;  // per row
    std::vector<PIVRun> runs;
    std::vector<std::uint8_t> coverage;
};

/// A row being written, from the left. Kept apart from the pools and short-lived, so that it stays in registers.
struct RowCursor {
    PIVRun* run;
    std::uint8_t* coverage;
    std::int32_t row_left;              // x where the row starts
    std::int32_t left;                  // x of column 0
    std::int32_t column = 0;            // reached so far
    std::uint32_t kind = kPIVRunEmpty;  // of the run being written

    /// The columns up to `end` have this mean winding, times kFullArea.
    void Add(std::int32_t winding, std::int32_t end);
    void EndRun(std::uint32_t next_kind);
};

/// Collects row after row, of columns `left` to `right` within a device of `row_left` to `row_right`. The pools only grow, so
/// that they are cleared and moved as rarely as can be.
class RowPools {
 public:
    void Reset(std::int32_t row_left, std::int32_t left, std::int32_t right, std::int32_t row_right);
    /// A row given up is begun again.
    RowCursor BeginRow();
    void EndRow(RowCursor row);
    void Clear();
    /// A copy that is no larger than needed.
    FillRows Rows() const;

 private:
    void Grow(std::size_t columns);

    std::int32_t row_left_ = 0, left_ = 0, right_ = 0, row_right_ = 0;
    FillRows pools_;  // `runs` and `coverage` with room behind what is used
    FillRows::Start used_{};
};

inline void RowCursor::Add(std::int32_t winding, std::int32_t end) {
    const auto area = static_cast<std::uint32_t>(std::min(std::abs(std::max(winding, -kFullArea)), kFullArea));
    const std::uint32_t level = (area * 255 + kFullArea / 2) / kFullArea;
    const std::uint32_t new_kind = level == 0 ? kPIVRunEmpty : level == 255 ? kPIVRunFull : kPIVRunPartial;
    if (new_kind != kind) EndRun(new_kind);
    if (new_kind == kPIVRunPartial) {
        const auto count = static_cast<std::size_t>(end - column);
        *coverage = static_cast<std::uint8_t>(level);
        if (count > 1) std::memset(coverage + 1, static_cast<int>(level), count - 1);
        coverage += count;
    }
    column = end;
}

/// A run that ends where the row starts is written over by the next one.
inline void RowCursor::EndRun(std::uint32_t next_kind) {
    const std::int32_t end = left + column;
    *run = {kind, end};
    run += end > row_left ? 1 : 0;
    kind = next_kind;
}

/// A row has a run for each column at most, and one at each end.
inline RowCursor RowPools::BeginRow() {
    const auto columns = static_cast<std::size_t>(right_ - left_);
    if (pools_.runs.size() - used_.run < columns + 2 || pools_.coverage.size() - used_.coverage < columns) Grow(columns);
    return {pools_.runs.data() + used_.run, pools_.coverage.data() + used_.coverage, row_left_, left_};
}

inline void RowPools::EndRow(RowCursor row) {
    const bool ends_empty = row.kind == kPIVRunEmpty || right_ < row_right_;
    if (row.kind != kPIVRunEmpty) row.EndRun(kPIVRunEmpty);
    if (ends_empty) *row.run++ = {kPIVRunEmpty, row_right_};
    pools_.starts.push_back(used_);
    used_ = {static_cast<std::size_t>(row.run - pools_.runs.data()),
             static_cast<std::size_t>(row.coverage - pools_.coverage.data())};
}

}  // namespace refhost
