#include "refhost/engine/scan_converter.h"

#include <algorithm>
#include <utility>

namespace refhost {
namespace {

constexpr double kBestTolerance = 0.005;        // pixels between curve and polyline
constexpr double kDraftTolerance = 0.02;        // pixels
constexpr std::size_t kKeptVertices = 1 << 20;  // 8 MB of vertices

}  // namespace

FillRows ScanConverter::Convert(std::span<const PIVPointType> operators, std::span<const Point> points, const FillArea& area,
                                const PIVDeviceRect& device, bool best_quality) {
    outline_.Clear();
    AppendOutlineLines(operators, points, best_quality ? kBestTolerance : kDraftTolerance, area, outline_);
    columns_ = area.Columns();
    sums_.Reset(columns_);
    pools_.Reset(device.left, static_cast<std::int32_t>(area.left), static_cast<std::int32_t>(area.right), device.right);
    sweep_.Begin(outline_, area.Rows());
    for (std::int32_t row = 0; row < area.Rows(); ++row) {
        sweep_.NextRow();
        WriteRow();
    }
    return pools_.Rows();
}

bool ScanConverter::IsLarge() const { return outline_.vertices.capacity() > kKeptVertices; }

void ScanConverter::WriteRow() {
    RowCursor row = pools_.BeginRow();
    const auto write = [&](std::int32_t area, std::int32_t end) { row.Add(area, end); };
    std::span<const RowChain> chains = sweep_.Chains();
    std::int32_t winding = 0;
    for (;;) {
        sums_.DrainBefore(chains.empty() ? columns_ : chains.front().left >> kSubBits, write);
        if (chains.empty()) break;
        if (StandsAlone(chains)) {
            const std::int32_t left = std::exchange(winding, winding + chains.front().winding);
            AddBorder(chains.front(), SideOf(left, winding));
            chains = chains.subspan(1);
            continue;
        }
        const Group group = TakeGroup(chains, winding);
        winding = group.right_winding;
        if (group.is_ordered)
            AddOrdered(group);
        else if (!group.IsInside())
            AddResolved(group);
    }
    sums_.Clear();
    pools_.EndRow(row);
}

/// Whether the first chain makes a group: by far the most do.
bool ScanConverter::StandsAlone(std::span<const RowChain> chains) {
    return chains[0].IsFullHeight() && (chains.size() == 1 || chains[1].left >= chains[0].right);
}

/// Takes chains from the left until a gap follows and as many begin as end at every height inside the row. Only the last group
/// may miss that: parts of the outline right of the area are left out.
ScanConverter::Group ScanConverter::TakeGroup(std::span<const RowChain>& chains, std::int32_t left_winding) {
    Group group = {chains, left_winding, left_winding, true};
    std::int32_t right = chains.front().left;
    std::size_t count = 0;
    for (; count < chains.size() && (open_ends_ != 0 || chains[count].left < right || count == 0); ++count) {
        const RowChain& chain = chains[count];
        if (count > 0) group.is_ordered = group.is_ordered && IsOrdered(chains[count - 1], chain);
        right = std::max(right, chain.right);
        if (chain.y_top == 0) group.right_winding += chain.winding;
        if (!chain.IsFullHeight()) CountEnds(chain);
    }
    group.chains = chains.first(count);
    chains = chains.subspan(count);
    if (open_ends_ != 0) {
        ends_.fill(0);
        open_ends_ = 0;
    }
    return group;
}

bool ScanConverter::IsOrdered(const RowChain& left, const RowChain& right) const {
    if (left.y_top != right.y_top || left.y_bottom != right.y_bottom) return false;
    if (left.right <= right.left) return true;
    return left.vertices == 0 && right.vertices == 0 && left.x_top <= right.x_top && left.x_bottom <= right.x_bottom;
}

void ScanConverter::CountEnds(const RowChain& chain) {
    CountEnd(chain.y_top, chain.winding);
    CountEnd(chain.y_bottom, -chain.winding);
}

void ScanConverter::CountEnd(std::int32_t y, std::int32_t winding) {
    if (y == 0 || y == kSubOne) return;
    std::int32_t& ends = ends_[static_cast<std::size_t>(y)];
    open_ends_ -= ends != 0 ? 1 : 0;
    ends += winding;
    open_ends_ += ends != 0 ? 1 : 0;
}

void ScanConverter::AddOrdered(const Group& group) {
    std::int32_t winding = group.left_winding;
    for (const RowChain& chain : group.chains) {
        const std::int32_t left = std::exchange(winding, winding + chain.winding);
        AddBorder(chain, SideOf(left, winding));
    }
}

void ScanConverter::AddBorder(const RowChain& chain, std::int32_t side) {
    if (side == 0) return;
    sweep_.ForEachPiece(chain, [&](RowPiece piece) {
        piece.winding = side;
        sums_.Add(piece);
    });
}

/// Whether the winding number cannot be zero anywhere between the chains.
bool ScanConverter::Group::IsInside() const {
    const auto down = std::count_if(chains.begin(), chains.end(), [](const RowChain& chain) { return chain.winding > 0; });
    const auto up = static_cast<std::ptrdiff_t>(chains.size()) - down;
    return left_winding > up || -left_winding > down;
}

void ScanConverter::AddResolved(const Group& group) {
    tangle_.Clear();
    for (const RowChain& chain : group.chains) {
        sweep_.ForEachPiece(chain, [&](const RowPiece& piece) { tangle_.AddPiece(piece); });
        tangle_.EndChain();
    }
    border_.clear();
    if (!tangle_.Resolve(group.left_winding, border_)) resolver_.Resolve(tangle_.Pieces(), group.left_winding, border_);
    for (const RowPiece& piece : border_) sums_.Add(piece);
}

}  // namespace refhost
