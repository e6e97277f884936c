#include "trace/tracer.h"

#include <bit>
#include <cstring>

#include "base/errors.h"
#include "trace/boundary_walk.h"
#include "trace/graph_builder.h"
#include "trace/known_edges.h"

namespace {

// Goes over the rows from colour change to colour change. On the left of each change the region is known; on the right it
// is known from the edge that runs there, or is a new one.
template <bool kWithJoins>
class Scan {
 public:
    Scan(const RPPixelMap& pixels, RPTrace& trace)
        : pixels_(&pixels), trace_(&trace), walk_(pixels, *trace.graph), known_edges_(pixels.Height(), pixels.Width()) {}

    void AllRows() {
        for (std::int32_t y = 0; y < pixels_->Height(); ++y) Row(y);
    }

 private:
    void Row(std::int32_t y);
    std::int32_t RegionEastOf(std::int32_t x, std::int32_t y, std::int32_t west);
    void TraceHole(std::int32_t x, std::int32_t y, std::int32_t region);
    std::int32_t AddRegion(std::int32_t x, std::int32_t y, std::int32_t edge, std::int32_t west);
    std::int32_t EnclosingHole(std::int32_t edge, std::int32_t west) const;
    void AddBoundary(std::int32_t region, std::int32_t hole);

    const RPPixelMap* pixels_;
    RPTrace* trace_;
    RPBoundaryWalk<kWithJoins> walk_;
    RPEdgeSet known_edges_;
    std::vector<std::int32_t> hole_of_edge_;  // the hole whose boundary made the edge, or kNone
    RPChain chain_;                           // of the boundary at hand; kept for its storage
};

std::int32_t RunEnd(const std::uint8_t* row, std::int32_t x, std::int32_t width);
void StartAtNextCorner(RPChain& loop);
void RecordJoins(const RPPixelMap& pixels, RPGraph& graph);

template <bool kWithJoins>
void Fill(const RPPixelMap& pixels, RPTrace& trace) {
    Scan<kWithJoins>(pixels, trace).AllRows();
}

}  // namespace

void RPTracePixels(const RPPixelMap& pixels, RPTrace& trace) {
    trace.height = pixels.Height();
    trace.width = pixels.Width();
    trace.regions.clear();
    trace.holes.clear();
    trace.graph = ts::make_auto<RPGraph>(trace.height, trace.width);
    if (pixels.HasJoins()) {
        Fill<true>(pixels, trace);
        RecordJoins(pixels, *trace.graph);
    } else {
        Fill<false>(pixels, trace);
    }
    FinishGraph(*trace.graph);
}

namespace {

template <bool kWithJoins>
void Scan<kWithJoins>::Row(std::int32_t y) {
    known_edges_.ReleaseAbove(y);  // boundaries traced from here on stay at or below the top of this row
    trace_->graph->dictionary->ReleaseAbove(y);
    const std::uint8_t* row = pixels_->Row(y);
    std::int32_t region = kNone;  // the outside
    // The change at the end of the row needs no look: the boundary along the border is never a hole.
    for (std::int32_t x = 0, end = 0; x < pixels_->Width(); x = end) {
        region = RegionEastOf(x, y, region);
        end = RunEnd(row, x, pixels_->Width());
        trace_->regions[static_cast<std::size_t>(region)].area += end - x;
    }
}

// The region of pixel (x, y) when `west` is that of the pixel before it, which has another colour.
template <bool kWithJoins>
std::int32_t Scan<kWithJoins>::RegionEastOf(std::int32_t x, std::int32_t y, std::int32_t west) {
    std::int32_t edge = known_edges_.At(x, y);
    if (edge == kNone && west != kNone) {
        TraceHole(x, y, west);
        edge = known_edges_.At(x, y);
    }
    if (edge == kNone) return AddRegion(x, y, edge, west);
    const RPEdge& known = trace_->graph->Edge(edge);
    const std::int32_t east = SideOf(known, west) == RPSide::kA ? known.region_b : known.region_a;
    return east != kNone ? east : AddRegion(x, y, edge, west);
}

// Traces the hole of `region` whose first pixel is (x, y).
template <bool kWithJoins>
void Scan<kWithJoins>::TraceHole(std::int32_t x, std::int32_t y, std::int32_t region) {
    walk_.Follow(x, y, kDown, chain_);
    // So it starts where the outer boundary of the region inside starts.
    if (chain_.is_loop) StartAtNextCorner(chain_);
    const auto hole = static_cast<std::int32_t>(trace_->holes.size());
    trace_->holes.push_back({kNone, region});
    AddBoundary(region, hole);
    RPRegion& owner = trace_->regions[static_cast<std::size_t>(region)];
    if (owner.hole_count++ == 0) {
        owner.first_hole = hole;
    } else {
        trace_->holes[static_cast<std::size_t>(owner.last_hole)].next = hole;
    }
    owner.last_hole = hole;
}

// Adds the region whose first pixel is (x, y), on the right of `edge`, and traces its outer boundary.
template <bool kWithJoins>
std::int32_t Scan<kWithJoins>::AddRegion(std::int32_t x, std::int32_t y, std::int32_t edge, std::int32_t west) {
    const auto number = static_cast<std::int32_t>(trace_->regions.size());
    RPRegion region{};
    region.index = number;
    region.enclosing_hole = EnclosingHole(edge, west);
    region.colour = pixels_->Row(y)[x];
    trace_->regions.push_back(region);
    if (edge == kNone) {
        walk_.Follow(x, y + 1, kUp, chain_);
    } else {  // against the edge, which starts at a junction
        const RPEdge& known = trace_->graph->Edge(edge);
        walk_.Follow(known.end_x, known.end_y, Opposite(known.end_code), chain_);
    }
    AddBoundary(number, kNone);
    return number;
}

// Of a region that starts on the right of `edge`. Without a hole there it lies beside the region on the left, in the same
// hole as that one.
template <bool kWithJoins>
std::int32_t Scan<kWithJoins>::EnclosingHole(std::int32_t edge, std::int32_t west) const {
    if (west == kNone) return kNone;
    const std::int32_t hole = hole_of_edge_[static_cast<std::size_t>(edge)];
    return hole != kNone ? hole : trace_->regions[static_cast<std::size_t>(west)].enclosing_hole;
}

// Hands the chain over as the outer boundary of `region` (`hole` is kNone) or as the boundary of a hole.
template <bool kWithJoins>
void Scan<kWithJoins>::AddBoundary(std::int32_t region, std::int32_t hole) {
    RPGraph& graph = *trace_->graph;
    const std::size_t first_new = graph.edges.size();
    const std::int32_t first = AddChain(graph, region, chain_, hole == kNone);
    if (hole == kNone) {
        trace_->regions[static_cast<std::size_t>(region)].outer_edge = first;
    } else {
        trace_->holes[static_cast<std::size_t>(hole)].first_edge = first;
    }
    hole_of_edge_.resize(graph.edges.size(), hole);
    for (std::size_t edge = first_new; edge < graph.edges.size(); ++edge) {
        known_edges_.Add(graph, static_cast<std::int32_t>(edge));
    }
}

// The end of the run of one colour that starts at `x`. Compares eight pixels at a time with the ones before them.
std::int32_t RunEnd(const std::uint8_t* row, std::int32_t x, std::int32_t width) {
    constexpr std::int32_t kWord = sizeof(std::uint64_t);
    if constexpr (std::endian::native == std::endian::little) {
        for (; x + kWord < width; x += kWord) {
            std::uint64_t before, after;
            std::memcpy(&before, row + x, sizeof before);
            std::memcpy(&after, row + x + 1, sizeof after);
            if (before != after) return x + 1 + std::countr_zero(before ^ after) / 8;
        }
    }
    while (row[x + 1] == row[x]) ++x;  // the frame ends the last run
    return x + 1;
}

// Moves the first step of a loop to its end.
void StartAtNextCorner(RPChain& loop) {
    const std::uint8_t step = loop.steps.front();
    RPPiece& piece = loop.pieces.front();
    piece.x = static_cast<std::int16_t>(piece.x + StepX(static_cast<RPDirection>(step)));
    piece.y = static_cast<std::int16_t>(piece.y + StepY(static_cast<RPDirection>(step)));
    loop.steps.push_back(step);
    ++piece.first_step;
}

void RecordJoins(const RPPixelMap& pixels, RPGraph& graph) {
    for (RPVertex& vertex : graph.vertices) vertex.join = pixels.Join(vertex.x, vertex.y);
}

}  // namespace
