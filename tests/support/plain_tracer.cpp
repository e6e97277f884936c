#include "tests/support/plain_tracer.h"

#include <compare>
#include <deque>
#include <map>
#include <sstream>
#include <vector>

#include "base/errors.h"
#include "tests/support/bitmaps.h"

namespace support {
namespace {

struct Place {
    std::int32_t x, y;

    auto operator<=>(const Place&) const = default;
};

Place Beside(Place p, RPDirection d) { return {p.x + StepX(d), p.y + StepY(d)}; }

// One side of a pixel, run along with the pixel on the right hand.
struct Crack {
    Place pixel;
    RPDirection side;

    auto operator<=>(const Crack&) const = default;
    RPDirection Travel() const { return Clockwise(side); }
    Place Foreign() const { return Beside(pixel, side); }
    Crack Reversed() const { return {Foreign(), Opposite(side)}; }
    // Both corners of a side follow from the two directions that meet there.
    Place End() const { return Between(side, Travel()); }
    Place Start() const { return Between(side, Opposite(Travel())); }

 private:
    Place Between(RPDirection a, RPDirection b) const {
        return {pixel.x + (StepX(a) + StepX(b) > 0 ? 1 : 0), pixel.y + (StepY(a) + StepY(b) > 0 ? 1 : 0)};
    }
};

struct Piece {
    std::deque<Crack> cracks;
    bool loop = false;  // meets no junction
};

using Chain = std::deque<Piece>;

class PlainTracer {
 public:
    PlainTracer(const RPPixelMap& pixels, RPTrace& trace)
        : pixels_(pixels), trace_(trace), labels_(Components(pixels)), region_of_label_(labels_.size(), kNone) {}

    void Run();

 private:
    RPGraph& Graph() { return *trace_.graph; }
    std::int32_t Label(Place p) const;
    std::uint8_t Colour(Place p) const { return pixels_.Row(p.y)[p.x]; }

    void Scan(Place p);
    std::int32_t NewRegion(Place first);
    void AddOuter(Place start, std::int32_t region);
    void AddHole(Place start, std::int32_t region);

    Chain Follow(Crack first, std::int32_t hole);
    Crack Next(Crack crack) const;
    bool IsJoined(Place corner, Place a, Place b) const;
    bool Continues(Crack e, Crack f) const;

    std::int32_t AddChain(std::int32_t region, const Chain& chain, bool outer);
    struct FoundEdge {
        std::int32_t number;
        bool against;  // the piece runs against the stored direction
    };
    FoundEdge FindOrCreateEdge(const Piece& piece, bool outer);
    void CheckSame(const RPEdge& edge, const Piece& piece) const;
    std::int32_t VertexAt(Place corner);
    void Attach(std::int32_t vertex, RPDirection leaving, std::int32_t edge);
    void Link(std::int32_t from, std::int32_t to, std::int32_t region);
    void LinkOutside();

    const RPPixelMap& pixels_;
    RPTrace& trace_;
    std::vector<std::int32_t> labels_;           // of the pixels, row by row
    std::vector<std::int32_t> region_of_label_;  // kNone until it is discovered
    std::map<Crack, std::int32_t> followed_;     // with the hole they were followed for, or kNone
    std::map<Crack, std::int32_t> edge_at_;      // both runs of every crack
    std::map<Place, std::int32_t> vertex_at_;
};

void PlainTracer::Run() {
    trace_.regions.clear();
    trace_.holes.clear();
    trace_.graph = ts::make_auto<RPGraph>(pixels_.Height(), pixels_.Width());
    Graph().dictionary.reset();
    trace_.width = pixels_.Width();
    trace_.height = pixels_.Height();
    for (std::int32_t y = 0; y < pixels_.Height(); ++y) {
        for (std::int32_t x = 0; x < pixels_.Width(); ++x) Scan({x, y});
    }
    LinkOutside();
}

std::int32_t PlainTracer::Label(Place p) const {
    if (Colour(p) == RPPixelMap::kOutside) return kNone;
    return labels_[static_cast<std::size_t>(p.y * pixels_.Width() + p.x)];
}

void PlainTracer::Scan(Place p) {
    std::int32_t& region = region_of_label_[static_cast<std::size_t>(Label(p))];
    if (region == kNone) {
        region = NewRegion(p);
        AddOuter(p, region);
    }
    if (Label(Beside(p, kRight)) != Label(p) && !followed_.contains({p, kRight})) AddHole(p, region);
    ++trace_.regions[static_cast<std::size_t>(region)].area;
}

// A region lies in the hole that its left neighbour was followed round for, or with that neighbour in the same hole.
std::int32_t PlainTracer::NewRegion(Place first) {
    RPRegion region;
    region.index = static_cast<std::int32_t>(trace_.regions.size());
    region.colour = Colour(first);
    if (first.x > 0) {
        const Place left = Beside(first, kLeft);
        const std::int32_t hole = followed_.at({left, kRight});
        const std::int32_t neighbour = region_of_label_[static_cast<std::size_t>(Label(left))];
        region.enclosing_hole = hole != kNone ? hole : trace_.regions[static_cast<std::size_t>(neighbour)].enclosing_hole;
    }
    trace_.regions.push_back(std::move(region));
    return trace_.regions.back().index;
}

void PlainTracer::AddOuter(Place start, std::int32_t region) {
    trace_.regions[static_cast<std::size_t>(region)].outer_edge = AddChain(region, Follow({start, kLeft}, kNone), true);
}

void PlainTracer::AddHole(Place start, std::int32_t region) {
    const auto hole = static_cast<std::int32_t>(trace_.holes.size());
    Chain chain = Follow({start, kRight}, hole);
    if (chain.size() == 1 && chain[0].loop && chain[0].cracks.size() >= 2) {
        chain[0].cracks.push_back(chain[0].cracks.front());
        chain[0].cracks.pop_front();
    }
    RPHole ring;
    ring.first_edge = AddChain(region, chain, false);
    ring.region = region;
    trace_.holes.push_back(ring);

    RPRegion& owner = trace_.regions[static_cast<std::size_t>(region)];
    (owner.hole_count == 0 ? owner.first_hole : trace_.holes[static_cast<std::size_t>(owner.last_hole)].next) = hole;
    owner.last_hole = hole;
    ++owner.hole_count;
}

Chain PlainTracer::Follow(Crack first, std::int32_t hole) {
    if (Label(first.Foreign()) == Label(first.pixel)) throw kBrokenInvariant;
    Chain chain(1);
    Crack last = first;
    for (Crack crack = first;; crack = Next(crack)) {
        if (!chain.back().cracks.empty()) {
            if (crack == first) break;
            if (!Continues(last, crack)) chain.emplace_back();
        }
        chain.back().cracks.push_back(crack);
        followed_[crack] = hole;
        last = crack;
    }
    if (!Continues(last, first)) return chain;
    if (chain.size() == 1) {
        chain[0].loop = true;
    } else {
        auto& front = chain.front().cracks;
        front.insert(front.begin(), chain.back().cracks.begin(), chain.back().cracks.end());
        chain.pop_back();
    }
    return chain;
}

// Round the pixel clockwise, over to each neighbour of the region on the way, and across the corner where that is joined.
Crack PlainTracer::Next(Crack crack) const {
    const Place across = Beside(crack.Foreign(), crack.Travel());
    if (Label(across) == Label(crack.pixel) && IsJoined(crack.End(), crack.pixel, across)) {
        return {across, CounterClockwise(crack.side)};
    }
    Crack next = {crack.pixel, Clockwise(crack.side)};
    while (Label(next.Foreign()) == Label(next.pixel)) next = {next.Foreign(), CounterClockwise(next.side)};
    return next;
}

bool PlainTracer::IsJoined(Place corner, Place a, Place b) const {
    const Place left = a.x < b.x ? a : b, right = a.x < b.x ? b : a;
    const RPJoin join = pixels_.Join(corner.x, corner.y);
    return join == (left.y < right.y ? kJoinUpLeft : kJoinUpRight);
}

bool PlainTracer::Continues(Crack e, Crack f) const {
    if (Colour(e.Foreign()) != Colour(f.Foreign())) return false;
    const std::int32_t turn = StepY(f.Travel()) * StepX(e.Travel()) - StepX(f.Travel()) * StepY(e.Travel());
    if (turn == -1 && e.Foreign() != f.Foreign()) throw kBrokenInvariant;
    if (turn != 1) return true;
    const Place diagonal = Beside(e.Foreign(), e.Travel());
    return Colour(diagonal) == Colour(e.Foreign()) || IsJoined(e.End(), e.Foreign(), f.Foreign());
}

std::int32_t PlainTracer::AddChain(std::int32_t region, const Chain& chain, bool outer) {
    std::vector<std::int32_t> ring;
    for (const Piece& piece : chain) {
        const FoundEdge found = FindOrCreateEdge(piece, outer);
        ring.push_back(found.number);
        RPEdge& edge = Graph().Edge(found.number);
        std::int32_t& side = found.against ? edge.region_a : edge.region_b;
        if (side != kNone) throw kBrokenInvariant;
        side = region;
    }
    for (std::size_t i = 0; i < ring.size(); ++i) Link(ring[i], ring[(i + 1) % ring.size()], region);
    return ring[0];
}

PlainTracer::FoundEdge PlainTracer::FindOrCreateEdge(const Piece& piece, bool outer) {
    const Crack first = piece.cracks.front(), last = piece.cracks.back();
    const std::int32_t start = VertexAt(first.Start()), end = VertexAt(last.End());
    if (const auto known = edge_at_.find(first); known != edge_at_.end()) {
        CheckSame(Graph().Edge(known->second), piece);
        return {known->second, true};
    }
    const bool reversed = piece.loop && outer;
    std::deque<Crack> cracks;
    for (const Crack& crack : piece.cracks) {
        reversed ? cracks.push_front(crack.Reversed()) : cracks.push_back(crack);
    }
    const auto number = static_cast<std::int32_t>(Graph().edges.size());
    RPEdge edge;
    edge.start_vertex = reversed ? end : start;
    edge.end_vertex = reversed ? start : end;
    edge.first_step = static_cast<std::uint32_t>(Graph().steps.size());
    edge.step_count = static_cast<std::int32_t>(cracks.size());
    edge.start_x = static_cast<std::int16_t>(cracks.front().Start().x);
    edge.start_y = static_cast<std::int16_t>(cracks.front().Start().y);
    edge.end_x = static_cast<std::int16_t>(cracks.back().End().x);
    edge.end_y = static_cast<std::int16_t>(cracks.back().End().y);
    edge.start_code = cracks.front().Travel();
    edge.end_code = cracks.back().Travel();
    edge.closed = piece.loop;
    for (const Crack& crack : cracks) {
        Graph().steps.push_back(static_cast<std::uint8_t>(crack.Travel()));
        edge_at_[crack] = edge_at_[crack.Reversed()] = number;
    }
    Graph().edges.push_back(edge);
    Attach(edge.start_vertex, edge.start_code, number);
    Attach(edge.end_vertex, Opposite(edge.end_code), number);
    return {number, reversed};
}

// The known edge must consist of the piece's cracks run the other way, and start where the piece ends.
void PlainTracer::CheckSame(const RPEdge& edge, const Piece& piece) const {
    const Place end = piece.cracks.back().End();
    bool same = edge.step_count == static_cast<std::int32_t>(piece.cracks.size()) && edge.closed == piece.loop &&
                edge.start_x == end.x && edge.start_y == end.y;
    for (std::int32_t i = 0; same && i < edge.step_count; ++i) {
        const Crack& crack = piece.cracks[static_cast<std::size_t>(edge.step_count - 1 - i)];
        same = trace_.graph->Step(edge, i) == Opposite(crack.Travel()) && &edge == &trace_.graph->Edge(edge_at_.at(crack));
    }
    if (!same) throw kBrokenInvariant;
}

std::int32_t PlainTracer::VertexAt(Place corner) {
    const auto [known, added] = vertex_at_.try_emplace(corner, static_cast<std::int32_t>(Graph().vertices.size()));
    if (added) {
        RPVertex vertex;
        vertex.x = static_cast<std::int16_t>(corner.x);
        vertex.y = static_cast<std::int16_t>(corner.y);
        vertex.join = pixels_.Join(corner.x, corner.y);
        Graph().vertices.push_back(vertex);
    }
    return known->second;
}

void PlainTracer::Attach(std::int32_t vertex, RPDirection leaving, std::int32_t edge) {
    std::int32_t& slot = Graph().Vertex(vertex).slots[static_cast<std::size_t>(leaving / 2)];
    if (slot != kNone) throw kBrokenInvariant;
    slot = edge;
}

void PlainTracer::Link(std::int32_t from, std::int32_t to, std::int32_t region) {
    RPEdge &a = Graph().Edge(from), &b = Graph().Edge(to);
    if ((a.region_a != region && a.region_b != region) || (b.region_a != region && b.region_b != region)) throw kBrokenInvariant;
    (a.region_a == region ? a.next_a : a.next_b) = to;
}

// The outside's ring runs along the border with the image on its left: down, right, up, left.
void PlainTracer::LinkOutside() {
    std::vector<Crack> border;
    for (std::int32_t y = 0; y < pixels_.Height(); ++y) border.push_back({{0, y}, kLeft});
    for (std::int32_t x = 0; x < pixels_.Width(); ++x) border.push_back({{x, pixels_.Height() - 1}, kDown});
    for (std::int32_t y = pixels_.Height() - 1; y >= 0; --y) border.push_back({{pixels_.Width() - 1, y}, kRight});
    for (std::int32_t x = pixels_.Width() - 1; x >= 0; --x) border.push_back({{x, 0}, kUp});
    for (std::size_t i = 0; i < border.size(); ++i) {
        const std::int32_t from = edge_at_.at(border[i]), to = edge_at_.at(border[(i + 1) % border.size()]);
        if (from != to) Link(from, to, kNone);
    }
    const std::int32_t first = edge_at_.at(border[0]);
    if (Graph().Edge(first).closed) Link(first, first, kNone);
}

template <class... Values>
std::string Text(const Values&... values) {
    std::ostringstream out;
    ((out << values << ' '), ...);
    return out.str();
}

std::string Describe(const RPRegion& r, const RPGraph&) {
    return Text("outer edge", r.outer_edge, "index", r.index, "area", r.area, "in hole", r.enclosing_hole, "holes", r.first_hole,
                r.last_hole, r.hole_count, "colour", int{r.colour});
}

std::string Describe(const RPHole& h, const RPGraph&) {
    return Text("first edge", h.first_edge, "region", h.region, "next", h.next);
}

std::string Describe(const RPVertex& v, const RPGraph&) {
    return Text("at", v.x, v.y, "slots", v.slots[0], v.slots[1], v.slots[2], v.slots[3], "join", int{v.join});
}

std::string Describe(const RPEdge& e, const RPGraph& graph) {
    std::string text = Text("vertices", e.start_vertex, e.end_vertex, "regions", e.region_a, e.region_b, "next", e.next_a,
                            e.next_b, "from", e.start_x, e.start_y, "to", e.end_x, e.end_y, "codes", e.start_code, e.end_code,
                            e.closed ? "closed" : "open", "steps ");
    for (std::int32_t i = 0; i < e.step_count; ++i) text += static_cast<char>('0' + graph.Step(e, i));
    return text;
}

template <class List>
std::string FirstDifference(const std::string& what, const List& a, const RPGraph& graph_a, const List& b,
                            const RPGraph& graph_b) {
    for (std::size_t i = 0; i < a.size() || i < b.size(); ++i) {
        const std::string in_a = i < a.size() ? Describe(a[i], graph_a) : "none";
        const std::string in_b = i < b.size() ? Describe(b[i], graph_b) : "none";
        if (in_a != in_b) return Text(what, i) + "\n  " + in_a + "\n  " + in_b;
    }
    return {};
}

}  // namespace

void PlainTrace(const RPPixelMap& pixels, RPTrace& trace) { PlainTracer(pixels, trace).Run(); }

std::string DescribeDifference(const RPTrace& a, const RPTrace& b) {
    const RPGraph &graph_a = *a.graph, &graph_b = *b.graph;
    std::string difference = FirstDifference("region", a.regions, graph_a, b.regions, graph_b);
    if (difference.empty()) difference = FirstDifference("hole", a.holes, graph_a, b.holes, graph_b);
    if (difference.empty()) difference = FirstDifference("edge", graph_a.edges, graph_a, graph_b.edges, graph_b);
    if (difference.empty()) difference = FirstDifference("vertex", graph_a.vertices, graph_a, graph_b.vertices, graph_b);
    return difference;
}

}  // namespace support
