#include "refhost/engine/rebuild.h"

#include <algorithm>
#include <cmath>

#include "refhost/engine/parallel_curve.h"

namespace refhost {
namespace {

constexpr double kShortRun = 0.003;     // pixels; a run of edges this short is an accident of rounding
constexpr double kWeldDistance = 0.01;  // pixels; ends this close meet half-way, others are connected by a line
constexpr double kCrossingReach = 5;    // flattening tolerances a crossing of curves may lie from that of their chords, over the
                                        // sine of the angle between them
constexpr double kLongestReach = 1;     // pixels
constexpr double kScaffoldShare = 0.2;  // of a loop's length; true loops have no scaffold in them but for rounding at cusps
constexpr double kParallel = 1e-4;      // sine of the angle between curves that do not count as crossing
constexpr double kSamePoint = 1e-6;     // pixels
constexpr int kNewtonRounds = 8;

/// Consecutive boundary edges along one piece.
struct Run {
    std::uint32_t piece;
    bool scaffold;
    double from, to;  // parameters; to < from when the boundary runs against the piece
    GridPoint start;
    double length;  // grid units
};

/// Where one run ends and the next begins.
struct Junction {
    Point end, start;  // the same point unless a line has to connect them
};

class LoopRebuilder {
 public:
    LoopRebuilder(const OffsetChain& chain, const FlatChain& flat, double tolerance)
        : chain_(chain), flat_(flat), tolerance_(tolerance) {}

    void Append(std::span<const BoundaryEdge> loop, Outline& result);

 private:
    void CollectRuns(std::span<const BoundaryEdge> loop);
    bool Continues(const BoundaryEdge& edge, const BoundaryEdge& next) const;
    bool IsRoundingSliver() const;
    void DropAccidentalRuns();
    Junction Connect(Run& before, Run& after) const;
    bool MoveToCrossing(Run& before, Run& after) const;
    void AppendRun(const Run& run, Point start, Point end, Outline& result) const;
    const ChainPiece& PieceOf(const Run& run) const { return chain_.pieces[run.piece]; }

    const OffsetChain& chain_;
    const FlatChain& flat_;
    double tolerance_;
    std::vector<Run> runs_;
    std::vector<Junction> junctions_;  // number i lies in front of run i
};

bool AreSameStretch(const SegmentSource& a, const SegmentSource& b) { return a.piece == b.piece && a.scaffold == b.scaffold; }
Point DerivativeOn(const ChainPiece& piece, double t);
bool IsPieceEnd(double t) { return t == 0 || t == 1; }
double GridLength(GridPoint a, GridPoint b);

}  // namespace

Outline RebuildCurves(const OffsetChain& chain, const FlatChain& flat, const Boundary& boundary, double tolerance) {
    Outline result;
    LoopRebuilder rebuilder(chain, flat, tolerance);
    std::size_t begin = 0;
    for (const std::size_t end : boundary.loop_ends) {
        rebuilder.Append(std::span(boundary.edges).subspan(begin, end - begin), result);
        begin = end;
    }
    return result;
}

namespace {

void LoopRebuilder::Append(std::span<const BoundaryEdge> loop, Outline& result) {
    CollectRuns(loop);
    if (IsRoundingSliver()) return;
    DropAccidentalRuns();
    junctions_.clear();
    for (std::size_t i = 0; i < runs_.size(); ++i)
        junctions_.push_back(Connect(runs_[i == 0 ? runs_.size() - 1 : i - 1], runs_[i]));
    for (std::size_t i = 0; i < runs_.size(); ++i) {
        const Junction& ahead = junctions_[i + 1 == runs_.size() ? 0 : i + 1];
        AppendRun(runs_[i], junctions_[i].start, ahead.end, result);
        if (ahead.end.x != ahead.start.x || ahead.end.y != ahead.start.y)
            result.pieces.push_back(StraightPiece(ahead.end, ahead.start));
    }
    result.CloseLoop();
}

void LoopRebuilder::CollectRuns(std::span<const BoundaryEdge> loop) {
    runs_.clear();
    const std::size_t count = loop.size();
    std::size_t first = 0;
    while (first < count && Continues(loop[first == 0 ? count - 1 : first - 1], loop[first])) ++first;
    first %= count;
    bool continues = false;
    for (std::size_t k = 0, i = first; k < count; ++k) {
        const std::size_t i_next = i + 1 == count ? 0 : i + 1;
        const BoundaryEdge& edge = loop[i];
        const BoundaryEdge& next = loop[i_next];
        if (!continues) {
            const SegmentSource& source = flat_.sources[edge.segment];
            runs_.push_back(
                {source.piece, source.scaffold, ParameterAt(chain_, flat_, edge.segment, edge.from), 0, edge.from, 0});
        }
        continues = Continues(edge, next);
        if (!continues) runs_.back().to = ParameterAt(chain_, flat_, edge.segment, next.from);
        runs_.back().length += GridLength(edge.from, next.from);
        i = i_next;
    }
}

// A step from one segment to its neighbour continues the run only through their common end: a loop inside one piece crosses from
// one segment to another, possibly the next, anywhere else.
bool LoopRebuilder::Continues(const BoundaryEdge& edge, const BoundaryEdge& next) const {
    if (edge.reversed != next.reversed) return false;
    if (edge.segment == next.segment) return true;
    const std::uint32_t neighbour = edge.reversed ? edge.segment - 1 : edge.segment + 1;
    if (next.segment != neighbour || !AreSameStretch(flat_.sources[edge.segment], flat_.sources[neighbour])) return false;
    const GridSegment& s = flat_.segments[edge.segment];
    return next.from == (edge.reversed ? s.from : s.to);
}

// Where a swept strip is thinner than the rounding of its corners it may turn over, which can leave a slit with a scaffold along
// it.
bool LoopRebuilder::IsRoundingSliver() const {
    double whole = 0;
    double scaffold = 0;
    for (const Run& run : runs_) {
        whole += run.length;
        if (run.scaffold) scaffold += run.length;
    }
    return scaffold > kScaffoldShare * whole;
}

// What remains of such slits on other loops goes too, and runs as short as the rounding itself.
void LoopRebuilder::DropAccidentalRuns() {
    const auto is_kept = [&](const Run& run) { return run.length > kShortRun * kGridUnitsPerPixel && !run.scaffold; };
    if (std::count_if(runs_.begin(), runs_.end(), is_kept) >= 2)
        std::erase_if(runs_, [&](const Run& run) { return !is_kept(run); });
}

Junction LoopRebuilder::Connect(Run& before, Run& after) const {
    if (!IsPieceEnd(before.to) || !IsPieceEnd(after.from)) MoveToCrossing(before, after);
    const Point end = PieceOf(before).At(before.to);
    const Point start = PieceOf(after).At(after.from);
    if (Distance(end, start) > kWeldDistance) return {end, start};
    const Point middle = Lerp(end, start, 0.5);
    return {middle, middle};
}

// Newton's method for A(u) = B(v). The answer counts only if it lies near the crossing of the chords and leaves both runs their
// direction. Nearly parallel curves have none such and keep their ends, and so do runs between which something was
// left out.
bool LoopRebuilder::MoveToCrossing(Run& before, Run& after) const {
    const ChainPiece& a = PieceOf(before);
    const ChainPiece& b = PieceOf(after);
    double u = before.to;
    double v = after.from;
    if (Distance(a.At(u), b.At(v)) > kCrossingReach * tolerance_) return false;
    double sine = 1;
    for (int round = 0; round < kNewtonRounds; ++round) {
        const Point gap = b.At(v) - a.At(u);
        if (round > 0 && Length(gap) < kSamePoint) break;
        const Point du = DerivativeOn(a, u);
        const Point dv = DerivativeOn(b, v);
        const double determinant = Cross(du, dv);
        sine = std::abs(determinant) / (Length(du) * Length(dv));
        if (!(sine > kParallel)) return false;
        u = std::clamp(u + Cross(gap, dv) / determinant, 0.0, 1.0);
        v = std::clamp(v + Cross(gap, du) / determinant, 0.0, 1.0);
    }
    const Point crossing = a.At(u);
    const bool has_converged = Distance(crossing, b.At(v)) < kSamePoint;
    const double reach = std::min(kCrossingReach * tolerance_ / sine, kLongestReach);
    const bool is_near = Distance(crossing, FromGrid(after.start)) < reach;
    const bool keeps_direction = (u > before.from) == (before.to > before.from) && (after.to > v) == (after.to > after.from);
    if (!has_converged || !is_near || !keeps_direction) return false;
    before.to = u;
    after.from = v;
    return true;
}

// The ends move to where the neighbours meet them.
void LoopRebuilder::AppendRun(const Run& run, Point start, Point end, Outline& result) const {
    const ChainPiece& piece = PieceOf(run);
    if (piece.straight) return result.pieces.push_back(StraightPiece(start, end));
    const std::size_t first = result.pieces.size();
    if (piece.distance != 0) {
        FitParallel(piece.curve, piece.distance, run.from, run.to, tolerance_, result.pieces);
    } else {
        result.pieces.push_back({SubCurve(piece.curve, run.from, run.to), false});
    }
    MoveStart(result.pieces[first], start);
    MoveEnd(result.pieces.back(), end);
}

Point DerivativeOn(const ChainPiece& piece, double t) {
    return piece.distance == 0 ? FirstDerivative(piece.curve, t) : ParallelDerivative(piece.curve, piece.distance, t);
}

double GridLength(GridPoint a, GridPoint b) { return Length({double{1} * b.x - a.x, double{1} * b.y - a.y}); }

}  // namespace
}  // namespace refhost
