#include "trace/graph_builder.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/errors.h"

namespace {

// Adds an edge with the steps of a piece that ends at `end`; `reversed`: against the direction of the piece.
std::int32_t CreateEdge(RPGraph& graph, const RPChain& chain, const RPPiece& piece, const RPPiece& end, bool reversed);
std::int32_t VertexAt(RPGraph& graph, std::int16_t x, std::int16_t y);  // adds it when it is missing
void AppendSteps(RPGraph& graph, const RPChain& chain, const RPPiece& piece, bool reversed);
void TakeSlot(RPVertex& vertex, RPDirection direction, std::int32_t edge);
void TakeSide(RPEdge& edge, bool side_a, std::int32_t region);
void Link(RPGraph& graph, std::int32_t edge, std::int32_t next, std::int32_t region);

bool BordersOutside(const RPEdge& edge);
std::int32_t NextRoundOutside(const RPGraph& graph, std::int32_t edge);

}  // namespace

std::int32_t AddChain(RPGraph& graph, std::int32_t region, RPChain& chain, bool is_outer) {
    auto& pieces = chain.pieces;
    if (pieces.empty()) throw kBrokenInvariant;
    // Every edge that is not along the image border is made with its maker on side B and met by the other region in the
    // opposite direction. A loop along the border is met by nobody; it is turned so that the outside gets side B.
    const bool turned = chain.is_loop && is_outer;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const bool known = pieces[i].edge != kNone;
        if (!known) pieces[i].edge = CreateEdge(graph, chain, pieces[i], pieces[(i + 1) % pieces.size()], turned);
        TakeSide(graph.Edge(pieces[i].edge), known || turned, region);
    }
    for (std::size_t i = 0; i < pieces.size(); ++i) Link(graph, pieces[i].edge, pieces[(i + 1) % pieces.size()].edge, region);
    return pieces.front().edge;
}

void FinishGraph(RPGraph& graph) {
    graph.dictionary.reset();
    if (graph.edges.empty()) return;
    const auto found = std::find_if(graph.edges.begin(), graph.edges.end(), BordersOutside);
    if (found == graph.edges.end()) throw kBrokenInvariant;
    const auto first = static_cast<std::int32_t>(std::distance(graph.edges.begin(), found));
    std::int32_t edge = first;
    do {
        const std::int32_t next = NextRoundOutside(graph, edge);
        Link(graph, edge, next, kNone);
        edge = next;
    } while (edge != first);
}

namespace {

std::int32_t CreateEdge(RPGraph& graph, const RPChain& chain, const RPPiece& piece, const RPPiece& end, bool reversed) {
    const auto number = static_cast<std::int32_t>(graph.edges.size());
    auto start_code = static_cast<RPDirection>(chain.steps[piece.first_step]);
    auto end_code = static_cast<RPDirection>(chain.steps[piece.first_step + static_cast<std::size_t>(piece.step_count) - 1]);
    if (reversed) {  // a loop: both ends are one corner
        start_code = std::exchange(end_code, Opposite(start_code));
        start_code = Opposite(start_code);
    }
    RPEdge edge{};
    edge.start_vertex = VertexAt(graph, piece.x, piece.y);
    edge.end_vertex = VertexAt(graph, end.x, end.y);
    edge.first_step = static_cast<std::uint32_t>(graph.steps.size());
    edge.step_count = piece.step_count;
    edge.start_x = piece.x;
    edge.start_y = piece.y;
    edge.end_x = end.x;
    edge.end_y = end.y;
    edge.start_code = start_code;
    edge.end_code = end_code;
    edge.closed = chain.is_loop;
    TakeSlot(graph.Vertex(edge.start_vertex), start_code, number);
    TakeSlot(graph.Vertex(edge.end_vertex), Opposite(end_code), number);
    AppendSteps(graph, chain, piece, reversed);
    graph.edges.push_back(edge);
    return number;
}

std::int32_t VertexAt(RPGraph& graph, std::int16_t x, std::int16_t y) {
    std::int32_t vertex = graph.dictionary->Find(x, y);
    if (vertex == kNone) {
        vertex = static_cast<std::int32_t>(graph.vertices.size());
        graph.vertices.push_back({.x = x, .y = y});
        graph.dictionary->Insert(x, y, vertex);
    }
    return vertex;
}

void AppendSteps(RPGraph& graph, const RPChain& chain, const RPPiece& piece, bool reversed) {
    const auto first = chain.steps.begin() + static_cast<std::ptrdiff_t>(piece.first_step);
    const auto at = graph.steps.insert(graph.steps.end(), first, first + piece.step_count);
    if (!reversed) return;
    std::reverse(at, graph.steps.end());
    for (auto step = at; step != graph.steps.end(); ++step) {
        *step = static_cast<std::uint8_t>(Opposite(static_cast<RPDirection>(*step)));
    }
}

void TakeSlot(RPVertex& vertex, RPDirection direction, std::int32_t edge) {
    auto& slot = vertex.slots[static_cast<std::size_t>(direction / 2)];
    if (slot != kNone) throw kBrokenInvariant;
    slot = edge;
}

void TakeSide(RPEdge& edge, bool side_a, std::int32_t region) {
    auto& side = side_a ? edge.region_a : edge.region_b;
    if (side != kNone) throw kBrokenInvariant;
    side = region;
}

void Link(RPGraph& graph, std::int32_t edge, std::int32_t next, std::int32_t region) {
    RPEdge& from = graph.Edge(edge);
    (SideOf(from, region) == RPSide::kA ? from.next_a : from.next_b) = next;
}

bool BordersOutside(const RPEdge& edge) { return edge.region_a == kNone || edge.region_b == kNone; }

std::int32_t NextRoundOutside(const RPGraph& graph, std::int32_t number) {
    const RPEdge& edge = graph.Edge(number);
    if (edge.start_vertex == edge.end_vertex) return number;
    // With the outside on its right the walk goes along an edge that has it on side B and against one that has it on A.
    const RPVertex& vertex = graph.Vertex(SideOf(edge, kNone) == RPSide::kB ? edge.end_vertex : edge.start_vertex);
    for (const RPDirection direction : {kUp, kLeft, kDown, kRight}) {
        const std::int32_t other = vertex.slots[static_cast<std::size_t>(direction / 2)];
        if (other != kNone && other != number && BordersOutside(graph.Edge(other))) return other;
    }
    throw kBrokenInvariant;
}

}  // namespace
