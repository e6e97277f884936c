#include "refhost/engine/lone_arcs.h"

#include <algorithm>
#include <utility>

#include "refhost/engine/box_tree.h"
#include "refhost/engine/flat_chain.h"

namespace refhost {
namespace {

constexpr double kShortChord = 0.01;  // pixels; the chord of a shorter piece may turn when its ends are rounded to the grid
constexpr double kConeSine = 0.4;     // neighbours stay in opposite cones, 47 degrees apart: no grid point is near to both

constexpr int kFewChords = 4;  // an arc of no more is not cut

/// An arc on the way to its final length.
struct Candidate {
    Arc arc;
    Cubic curve;
    std::uint32_t next;  // the arc that follows in the loop
    bool is_settled;
};

std::vector<Candidate> WholePieces(const Outline& outline);
void FindLoneOnes(std::vector<Candidate>& candidates);
std::vector<Candidate> Halved(const std::vector<Candidate>& candidates);
/// The control points of a curve, which has the curve and its chord in its hull.
GridBox HullBox(const Cubic& curve);
bool MovesAhead(const Cubic& curve);
bool AreOpposite(const Cubic& before, const Cubic& after);

}  // namespace

// What is lone stays so when the others are cut, as their hulls shrink.
std::vector<Arc> CutIntoArcs(const Outline& outline, double tolerance) {
    std::vector<Candidate> candidates = WholePieces(outline);
    for (bool all_settled = false; !all_settled;) {
        FindLoneOnes(candidates);
        all_settled = true;
        for (Candidate& c : candidates) {
            c.is_settled = c.arc.lone || outline.pieces[c.arc.piece].straight || StepCount(c.curve, tolerance) <= kFewChords;
            all_settled &= c.is_settled;
        }
        if (!all_settled) candidates = Halved(candidates);
    }
    std::vector<Arc> arcs;
    arcs.reserve(candidates.size());
    for (const Candidate& c : candidates) arcs.push_back(c.arc);
    return arcs;
}

namespace {

std::vector<Candidate> WholePieces(const Outline& outline) {
    std::vector<Candidate> candidates;
    candidates.reserve(outline.pieces.size());
    for (std::size_t loop = 0; loop < outline.LoopCount(); ++loop) {
        for (const CurvePiece& piece : outline.Loop(loop)) {
            const auto index = static_cast<std::uint32_t>(candidates.size());
            candidates.push_back({{index, 0, 1, false}, piece.curve, index + 1, false});
        }
        candidates.back().next = static_cast<std::uint32_t>(outline.LoopBegin(loop));
    }
    return candidates;
}

void FindLoneOnes(std::vector<Candidate>& candidates) {
    std::vector<std::uint32_t> open;
    std::vector<GridBox> boxes;
    for (std::uint32_t i = 0; i < candidates.size(); ++i) {
        Candidate& c = candidates[i];
        if (c.is_settled && c.arc.lone) continue;
        open.push_back(i);
        boxes.push_back(HullBox(c.curve));
        c.arc.lone = MovesAhead(c.curve);
    }
    BoxTree(boxes).ForEachPair([&](std::size_t i, std::size_t j) {
        Candidate& a = candidates[open[i]];
        Candidate& b = candidates[open[j]];
        const bool only_touch =
            (a.next == open[j] && AreOpposite(a.curve, b.curve)) || (b.next == open[i] && AreOpposite(b.curve, a.curve));
        if (!only_touch) a.arc.lone = b.arc.lone = false;
    });
}

std::vector<Candidate> Halved(const std::vector<Candidate>& candidates) {
    std::vector<std::uint32_t> places;  // of each candidate in the result
    places.reserve(candidates.size());
    std::uint32_t count = 0;
    for (const Candidate& c : candidates) places.push_back(std::exchange(count, count + (c.is_settled ? 1 : 2)));
    std::vector<Candidate> halved;
    halved.reserve(count);
    for (const Candidate& c : candidates) {
        const std::uint32_t next = places[c.next];
        if (c.is_settled) {
            halved.push_back({c.arc, c.curve, next, true});
            continue;
        }
        const double middle = 0.5 * (c.arc.from + c.arc.to);
        const auto second = static_cast<std::uint32_t>(halved.size() + 1);
        halved.push_back({{c.arc.piece, c.arc.from, middle, false}, SubCurve(c.curve, 0, 0.5), second, false});
        halved.push_back({{c.arc.piece, middle, c.arc.to, false}, SubCurve(c.curve, 0.5, 1), next, false});
    }
    return halved;
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
