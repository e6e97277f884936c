#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "refhost/engine/arrangement.h"
#include "refhost/engine/snap_rounding.h"

namespace refhost {

/// Half-edge 2 e leaves the lower vertex of edge e, half-edge 2 e + 1 the higher one: h ^ 1 is the same edge run the other way.
using HalfEdge = std::uint32_t;

inline constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

/// The planar graph of snapped segments. Its vertices are the nodes; its edges lead from one to another along one or more
/// segments and meet nothing in between. Equal edges are merged.
class PlanarGraph {
 public:
    /// `segments` must outlive the graph.
    PlanarGraph(std::span<const GridSegment> segments, Nodes nodes);

    std::size_t VertexCount() const { return points_.size(); }
    std::size_t EdgeCount() const { return edges_.size(); }
    GridPoint PointAt(std::uint32_t vertex) const { return points_[vertex]; }

    std::uint32_t Tail(HalfEdge h) const { return h % 2 == 0 ? edges_[h / 2].low : edges_[h / 2].high; }
    std::uint32_t Head(HalfEdge h) const { return Tail(h ^ 1); }
    /// How many segments run along the half-edge, less those that run against it.
    std::int32_t Multiplicity(HalfEdge h) const { return h % 2 == 0 ? edges_[h / 2].multiplicity : -edges_[h / 2].multiplicity; }

    /// Half-edges leaving a vertex, by angle from just past the -x direction.
    std::span<const HalfEdge> Fan(std::uint32_t vertex) const {
        return std::span(fans_).subspan(fan_begin_[vertex], fan_begin_[vertex + 1] - fan_begin_[vertex]);
    }
    HalfEdge First(std::uint32_t vertex) const { return fans_[fan_begin_[vertex]]; }
    /// The half-edges beside this one in its fan, which is closed: the first follows the last.
    HalfEdge After(HalfEdge h) const {
        const std::uint32_t next = fan_position_[h] + 1;
        return fans_[next == fan_begin_[Tail(h) + 1] ? fan_begin_[Tail(h)] : next];
    }
    HalfEdge Before(HalfEdge h) const {
        const std::uint32_t position = fan_position_[h];
        return fans_[(position == fan_begin_[Tail(h)] ? fan_begin_[Tail(h) + 1] : position) - 1];
    }

    /// The parts of segments along a half-edge.
    void AppendPath(HalfEdge h, std::vector<BoundaryEdge>& out) const;

 private:
    /// Consecutive segments, or parts of the first and last.
    struct Stretch {
        std::uint32_t first, last;
    };
    /// Between two vertices, lower id first. Merged ones have no vertices of their segments inside.
    struct Edge {
        std::uint32_t low, high;
        std::int32_t multiplicity;  // stretches running from low to high less those running back
        Stretch up, down;           // one of those running from low to high, and back; `first` is kNone when there is none
    };
    static constexpr Stretch kNoStretch = {kNone, kNone};
    struct Spoke {
        GridVector direction;
        HalfEdge half_edge;
    };

    void CutSegments(const Nodes& nodes);
    void MergeEqual();
    void BuildFans();
    void SortFan(std::span<HalfEdge> fan, std::vector<Spoke>& spokes) const;
    GridPoint NeighbourOnEdge(HalfEdge h) const;

    std::span<const GridSegment> segments_;
    std::vector<GridPoint> points_;  // of the vertices
    std::vector<Edge> edges_;
    std::vector<HalfEdge> fans_;
    std::vector<std::uint32_t> fan_begin_;     // per vertex, and one past the end
    std::vector<std::uint32_t> fan_position_;  // of each half-edge in fans_
};

}  // namespace refhost
