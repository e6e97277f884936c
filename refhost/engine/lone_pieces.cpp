#include "refhost/engine/lone_pieces.h"

#include <algorithm>

#include "refhost/engine/box_tree.h"
#include "refhost/engine/flat_chain.h"

namespace refhost {
namespace {

constexpr double kShortChord = 0.01;  // pixels; the chord of a shorter piece may turn when its ends are rounded to the grid
constexpr double kConeSine = 0.4;     // neighbours stay in opposite cones, 47 degrees apart: no grid point is near to both

/// The control points of a curve, which has the curve and its chord in its hull.
GridBox HullBox(const Cubic& curve);
bool MovesAhead(const Cubic& curve);
bool AreOpposite(const Cubic& before, const Cubic& after);

}  // namespace

std::vector<bool> FindLonePieces(const Outline& outline) {
    std::vector<bool> is_lone;
    std::vector<GridBox> boxes;
    std::vector<std::size_t> next;
    is_lone.reserve(outline.pieces.size());
    boxes.reserve(outline.pieces.size());
    next.reserve(outline.pieces.size());
    for (std::size_t loop = 0; loop < outline.LoopCount(); ++loop) {
        for (const CurvePiece& piece : outline.Loop(loop)) {
            is_lone.push_back(MovesAhead(piece.curve));
            boxes.push_back(HullBox(piece.curve));
            next.push_back(boxes.size());
        }
        next.back() = outline.LoopBegin(loop);
    }
    BoxTree(boxes).ForEachPair([&](std::size_t i, std::size_t j) {
        const Cubic& a = outline.pieces[i].curve;
        const Cubic& b = outline.pieces[j].curve;
        const bool only_touch = (next[i] == j && AreOpposite(a, b)) || (next[j] == i && AreOpposite(b, a));
        if (!only_touch) is_lone[i] = is_lone[j] = false;
    });
    return is_lone;
}

namespace {

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
