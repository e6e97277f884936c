#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "base/owner.h"
#include "base/point.h"
#include "trace/block_list.h"
#include "trace/corner_grid.h"
#include "trace/pixel_map.h"
#include "trace/vertex_dictionary.h"

/// Directions of travel on the pixel lattice, and the sides of a pixel.
enum RPDirection : std::int16_t { kRight = 0, kUp = 2, kLeft = 4, kDown = 6 };

inline RPDirection Opposite(RPDirection d) { return static_cast<RPDirection>((d + 4) & 7); }
inline RPDirection Clockwise(RPDirection d) { return static_cast<RPDirection>((d + 6) & 7); }  // on screen
inline RPDirection CounterClockwise(RPDirection d) { return static_cast<RPDirection>((d + 2) & 7); }
// Free of jumps, as turns cannot be foreseen.
inline std::int32_t StepX(RPDirection d) { return std::int32_t{d == kRight} - std::int32_t{d == kLeft}; }
inline std::int32_t StepY(RPDirection d) { return std::int32_t{d == kDown} - std::int32_t{d == kUp}; }

/// A corner of the pixel lattice where boundary edges meet, or where a loop starts.
struct RPVertex {
    std::int16_t x, y;
    std::array<std::int32_t, 4> slots = {kNone, kNone, kNone, kNone};  // by direction / 2: the edge that leaves this way
    RPJoin join = kJoinNone;                                           // of a diagonal pair of pixels
};

enum class RPSide : std::uint8_t { kA, kB };

/// A piece of boundary between two regions, or between a region and the outside. Seen along its stored direction on screen
/// side A is on the left and side B on the right. All references are numbers in the trace's lists.
struct RPEdge {
    std::int32_t start_vertex, end_vertex;  // the same for a loop
    std::int32_t region_a = kNone, region_b = kNone;
    std::int32_t next_a = kNone, next_b = kNone;  // round the regions on both sides
    std::uint32_t first_step;                     // in the graph's `steps`
    std::int32_t step_count;                      // at least 1
    std::int16_t start_x, start_y, end_x, end_y;
    RPDirection start_code, end_code;  // directions of the first and of the last step
    bool closed;  // a loop that meets no other edge. A loop from a vertex back to it is open, its ends coincide
};

/// The planar map of a bitmap. Numbers of edges and vertices are places in the lists.
class RPGraph {
 public:
    /// A graph over the corners of an image.
    RPGraph(std::int32_t height, std::int32_t width);
    virtual ~RPGraph() = default;

    const RPEdge& Edge(std::int32_t number) const { return edges[static_cast<std::size_t>(number)]; }
    RPEdge& Edge(std::int32_t number) { return edges[static_cast<std::size_t>(number)]; }
    const RPVertex& Vertex(std::int32_t number) const { return vertices[static_cast<std::size_t>(number)]; }
    RPVertex& Vertex(std::int32_t number) { return vertices[static_cast<std::size_t>(number)]; }

    RPDirection Step(const RPEdge& edge, std::int32_t i) const {
        return static_cast<RPDirection>(steps[edge.first_step + static_cast<std::size_t>(i)]);
    }

    using Edges = RPBlockList<RPEdge>;
    Edges edges;
    RPBlockList<RPVertex> vertices;
    std::vector<std::uint8_t> steps;              // RPDirection of every unit step of every edge
    ts::auto_ptr<RPVertexDictionary> dictionary;  // only while the graph is built
};

/// Points of the edge: one for every step, and the end of an open one.
inline std::int32_t PointCount(const RPEdge& edge) { return edge.step_count + (edge.closed ? 0 : 1); }

/// Gives the points of an edge in its stored direction, one at each call, PointCount(edge) in all. A closed edge does not
/// repeat its first. Borrows the graph.
class RPEdgePoints {
 public:
    RPEdgePoints(const RPGraph& graph, const RPEdge& edge)
        : step_(graph.steps.data() + edge.first_step), x_(edge.start_x), y_(edge.start_y) {}

    CFPoint operator()() {
        if (is_started_) {
            const auto direction = static_cast<RPDirection>(*step_++);
            x_ += StepX(direction);
            y_ += StepY(direction);
        }
        is_started_ = true;
        return {static_cast<float>(x_), static_cast<float>(y_)};
    }

 private:
    const std::uint8_t* step_;
    std::int32_t x_, y_;
    bool is_started_ = false;
};

/// The side of `edge` that `region` (kNone: the outside) is on.
/// @throws int  kBrokenInvariant when it is on neither
RPSide SideOf(const RPEdge& edge, std::int32_t region);

/// The next edge of the ring round the region on `side`.
inline std::int32_t Successor(const RPEdge& edge, RPSide side) { return side == RPSide::kA ? edge.next_a : edge.next_b; }
