#include "refhost/engine/lone_arcs.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "refhost/engine/box_tree.h"
#include "refhost/engine/flat_chain.h"
#include "refhost/engine/parallel_curve.h"

namespace refhost {
namespace {

constexpr double kShortChord = 0.01;  // pixels; the chord of a shorter piece may turn when its ends are rounded to the grid
constexpr double kConeSine = 0.4;     // neighbours stay in opposite cones, 47 degrees apart: no grid point is near to both
constexpr int kFewChords = 8;         // an arc of no more is not cut

/// An arc on the way to its final length.
struct Candidate {
    Arc arc;
    Cubic curve;  // of the piece
    Cubic shape;  // what lies in its place: the curve, or its parallel; of a wild parallel only the ends are right
    bool is_shape_known;
    bool is_settled;
    std::uint32_t next;  // the arc that follows in the loop
};

class ArcCutter {
 public:
    ArcCutter(const OffsetChain& chain, double tolerance) : chain_(chain), tolerance_(tolerance) {}

    std::vector<Arc> Cut();

 private:
    void AppendWholePieces();
    Candidate CandidateOf(const Arc& arc, const Cubic& curve, std::uint32_t next) const;
    void FindLoneOnes();
    GridBox BoxOfCandidate(const Candidate& c) const;
    bool IsSettled(const Candidate& c) const;
    void Halve();

    const OffsetChain& chain_;
    double tolerance_;
    std::vector<Candidate> candidates_;
};

/// The control points of a curve, which has the curve and its chord in its hull.
GridBox HullBox(const Cubic& curve);
GridBox Wider(const GridBox& box, double pixels);
bool MovesAhead(const Cubic& curve);
bool AreOpposite(const Cubic& before, const Cubic& after);

}  // namespace

std::vector<Arc> CutIntoArcs(const OffsetChain& chain, double tolerance) { return ArcCutter(chain, tolerance).Cut(); }

std::vector<Arc> WholePieces(const OffsetChain& chain) {
    std::vector<Arc> arcs;
    arcs.reserve(chain.pieces.size());
    for (std::uint32_t i = 0; i < chain.pieces.size(); ++i) arcs.push_back({i, 0, 1, false});
    return arcs;
}

namespace {

// What is lone stays so when the others are cut, as their hulls shrink.
std::vector<Arc> ArcCutter::Cut() {
    AppendWholePieces();
    for (bool all_settled = false; !all_settled;) {
        FindLoneOnes();
        all_settled = true;
        for (Candidate& c : candidates_) all_settled &= c.is_settled = IsSettled(c);
        if (!all_settled) Halve();
    }
    std::vector<Arc> arcs;
    arcs.reserve(candidates_.size());
    for (const Candidate& c : candidates_) arcs.push_back(c.arc);
    return arcs;
}

void ArcCutter::AppendWholePieces() {
    candidates_.reserve(chain_.pieces.size());
    for (std::size_t loop = 0; loop < chain_.LoopCount(); ++loop) {
        for (const ChainPiece& piece : chain_.Loop(loop)) {
            const auto index = static_cast<std::uint32_t>(candidates_.size());
            candidates_.push_back(CandidateOf({index, 0, 1, false}, piece.curve, index + 1));
        }
        candidates_.back().next = static_cast<std::uint32_t>(chain_.LoopBegin(loop));
    }
}

Candidate ArcCutter::CandidateOf(const Arc& arc, const Cubic& curve, std::uint32_t next) const {
    const double distance = chain_.pieces[arc.piece].distance;
    if (distance == 0) return {arc, curve, curve, true, false, next};
    const bool is_whole = arc.from == 0 && arc.to == 1;  // then it is known not to be calm
    if (!is_whole) {
        if (const std::optional<Cubic> calm = CalmParallel(curve, distance, tolerance_))
            return {arc, curve, *calm, true, false, next};
    }
    const Point start = ParallelPoint(curve, distance, 0);
    const Point end = ParallelPoint(curve, distance, 1);
    return {arc, curve, {start, start, end, end}, false, false, next};
}

void ArcCutter::FindLoneOnes() {
    std::vector<std::uint32_t> open;
    std::vector<GridBox> boxes;
    for (std::uint32_t i = 0; i < candidates_.size(); ++i) {
        Candidate& c = candidates_[i];
        if (c.arc.lone) continue;
        // To where the next one starts, which may be a touch beside.
        const Point gap = candidates_[c.next].shape.p0 - c.shape.p3;
        c.shape.p2 = c.shape.p2 + gap;
        c.shape.p3 = c.shape.p3 + gap;
        open.push_back(i);
        boxes.push_back(BoxOfCandidate(c));
        c.arc.lone = c.is_shape_known && MovesAhead(c.shape);
    }
    BoxTree(boxes.size(), [&](std::size_t k) { return boxes[k]; }).ForEachPair([&](std::size_t i, std::size_t j) {
        Candidate& a = candidates_[open[i]];
        Candidate& b = candidates_[open[j]];
        const bool only_touch =
            (a.next == open[j] && AreOpposite(a.shape, b.shape)) || (b.next == open[i] && AreOpposite(b.shape, a.shape));
        if (!only_touch) a.arc.lone = b.arc.lone = false;
    });
}

GridBox ArcCutter::BoxOfCandidate(const Candidate& c) const {
    const double distance = chain_.pieces[c.arc.piece].distance;
    if (distance == 0) return HullBox(c.shape);
    return c.is_shape_known ? Wider(HullBox(c.shape), tolerance_)
                            : Wider(HullBox(c.curve), std::abs(distance)).With(HullBox(c.shape));
}

// A parallel that runs backwards in its middle is not cut there: its arcs are to end where it lies at its full distance.
bool ArcCutter::IsSettled(const Candidate& c) const {
    const ChainPiece& piece = chain_.pieces[c.arc.piece];
    if (c.is_settled || c.arc.lone || piece.straight || StepCount(c.curve, tolerance_) <= kFewChords) return true;
    return !c.is_shape_known && Dot(ParallelDerivative(c.curve, piece.distance, 0.5), FirstDerivative(c.curve, 0.5)) <= 0;
}

void ArcCutter::Halve() {
    std::vector<std::uint32_t> places;  // of each candidate in the result
    places.reserve(candidates_.size());
    std::uint32_t count = 0;
    for (const Candidate& c : candidates_) places.push_back(std::exchange(count, count + (c.is_settled ? 1 : 2)));
    std::vector<Candidate> halved;
    halved.reserve(count);
    for (Candidate& c : candidates_) {
        const std::uint32_t next = places[c.next];
        if (c.is_settled) {
            halved.push_back(c);
            halved.back().next = next;
            continue;
        }
        const double middle = 0.5 * (c.arc.from + c.arc.to);
        const auto second = static_cast<std::uint32_t>(halved.size() + 1);
        halved.push_back(CandidateOf({c.arc.piece, c.arc.from, middle, false}, SubCurve(c.curve, 0, 0.5), second));
        halved.push_back(CandidateOf({c.arc.piece, middle, c.arc.to, false}, SubCurve(c.curve, 0.5, 1), next));
    }
    candidates_ = std::move(halved);
}

GridBox Wider(const GridBox& box, double pixels) {
    const auto margin = static_cast<std::int32_t>(std::ceil(pixels * kGridUnitsPerPixel));
    return {box.left - margin, box.top - margin, box.right + margin, box.bottom + margin};
}

GridBox HullBox(const Cubic& c) { return BoxOf(ToGrid(c.p0), ToGrid(c.p1)).With(BoxOf(ToGrid(c.p2), ToGrid(c.p3))); }

// Such a curve does not cross itself.
bool MovesAhead(const Cubic& c) {
    const Point chord = c.p3 - c.p0;
    return Dot(chord, chord) >= kShortChord * kShortChord &&
           std::min({Dot(c.p1 - c.p0, chord), Dot(c.p2 - c.p1, chord), Dot(c.p3 - c.p2, chord)}) >= 0;
}

// One stays in a cone behind their common point, the other in the one ahead; after a turn right back there is no ahead.
bool AreOpposite(const Cubic& before, const Cubic& after) {
    const Point tip = before.p3;
    const Point ahead = EndTangent(before) + StartTangent(after);
    const double limit = kConeSine * kConeSine * Dot(ahead, ahead);
    const auto is_ahead = [&](Point way) {
        const double along = Dot(way, ahead);
        return along >= 0 && along * along >= limit * Dot(way, way);
    };
    return Dot(ahead, ahead) > 0 && is_ahead(tip - before.p0) && is_ahead(tip - before.p1) && is_ahead(tip - before.p2) &&
           is_ahead(after.p1 - tip) && is_ahead(after.p2 - tip) && is_ahead(after.p3 - tip);
}

}  // namespace
}  // namespace refhost
