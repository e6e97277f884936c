#include "fit/quad_view.h"

#include <algorithm>

#include "base/errors.h"

namespace {

/// Where the window's point `j` lies in the coordinates of its chain. A closed window is read on past its end.
std::int32_t ChainIndex(const CFWindow& window, std::int32_t j) {
    const std::int32_t index = window.StartIndex() + j;
    return window.IsClosed() ? RoundLoop(index, window.SegmentCount()) : index;
}

}  // namespace

CFQuadRange::CFQuadRange(const CFWindow& window, std::int32_t first, std::int32_t count)
    : first_(first),
      count_(count),
      xs_(window.Segment().X() + ChainIndex(window, first)),
      ys_(window.Segment().Y() + ChainIndex(window, first)),
      even_(window.Kind() == kSpacingUnitSteps),
      parameters_(even_ ? CFTVals() : CFTVals(xs_, ys_, count, window.Kind())) {}

CFNeighbourhood::CFNeighbourhood(const CFWindow& window, std::int32_t k, std::int32_t half_width) {
    const std::int32_t last = window.Count() - 1;
    if (k < 0 || k > last) throw kBrokenInvariant;
    const std::int32_t reach = std::min((window.SegmentCount() - 1) / 2, half_width);
    if (window.IsClosed()) {
        centre = k == last ? 0 : k;  // the last point of a closed window is its first one again
        first = RoundLoop(centre - reach, window.SegmentCount());
        left_count = right_count = reach + 1;
    } else {
        centre = k;
        first = std::max(k - reach, 0);
        left_count = k - first + 1;
        right_count = std::min(reach, last - k) + 1;
    }
}
