#include "refhost/engine/fill_rows.h"

namespace refhost {
void RowPools::Reset(std::int32_t row_left, std::int32_t left, std::int32_t right, std::int32_t row_right) {
    row_left_ = row_left;
    left_ = left;
    right_ = right;
    row_right_ = row_right;
    Clear();
}

void RowPools::Clear() {
    pools_.starts.clear();
    used_ = {};
}

void RowPools::Grow(std::size_t columns) {
    pools_.runs.resize(2 * (used_.run + columns + 2));
    pools_.coverage.resize(2 * (used_.coverage + columns));
}

FillRows RowPools::Rows() const {
    const PIVRun* const runs = pools_.runs.data();
    const std::uint8_t* const coverage = pools_.coverage.data();
    return {pools_.starts, {runs, runs + used_.run}, {coverage, coverage + used_.coverage}};
}

}  // namespace refhost
