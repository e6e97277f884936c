#include "refhost/engine/offset.h"

#include <algorithm>
#include <cmath>

#include "refhost/engine/arrangement.h"
#include "refhost/engine/coincidence.h"
#include "refhost/engine/engine_error.h"
#include "refhost/engine/flat_chain.h"
#include "refhost/engine/idle_vertices.h"
#include "refhost/engine/rebuild.h"

namespace refhost {
namespace {

constexpr double kFitTolerance = 0.01;      // pixels, for curves fitted and for chords that find out what covers what
constexpr double kRegionTolerance = 0.002;  // for the region itself: thinner parts of it may be taken for nothing
constexpr double kStepTolerance = 0.005;    // the same where errors of several steps add up
constexpr double kLongPiece = 5;       // pixels; traced outlines of 3 px a piece took 18 % longer when cut into arcs, by 1 px
constexpr double kFewPieces = 300;     // an outline of fewer may cost as much as one of so many
constexpr double kTornShare = 0.1;     // of the pieces: joins that a longer step may open
constexpr double kStepPieces = 4;      // length of the shortest step, in mean pieces
constexpr double kSpeckSize = 0.05;    // pixels; a contour smaller than this both ways is left out
constexpr double kLargestInput = 1e9;  // pixels
constexpr double kLongestMiter = 100;  // times the distance; longer ones are bevelled whatever the limit

/// The placement in which the work is done: centred, and scaled down when the grid would not hold it otherwise.
struct Placement {
    Point shift;
    double scale;
};

/// How far an outline can be offset to one side, in pixels, until something happens to its pieces; one value each.
struct Bends {
    std::vector<double> fold;  // the piece folds over; infinite where it bends the other way
    std::vector<double> tear;  // the join in front of it needs an arc
};

void RequireUsable(const Outline& outline, double distance, double miter_limit);
Placement PlacementFor(const Outline& outline, double reach);
Outline Resolved(const Outline& outline, double touch);
Outline Offset(Outline outline, double distance, JoinStyle style);
Outline OffsetOnce(const Outline& outline, double distance, JoinStyle style, double tolerance);
double StepTowards(const Outline& outline, double distance);
bool IsSimpleStep(const Bends& bends, double step, double shortest);
Bends BendsOf(const Outline& outline, double side);
double BendBetween(Point before, Point after);
double MeanPieceLength(const Outline& outline);
bool IsSpeck(std::span<const CurvePiece> loop);
std::vector<CurveContour> ToContours(const Outline& outline);

}  // namespace

std::vector<CurveContour> OffsetOutline(const PathView& path, double distance, OffsetJoin join, double miter_limit) {
    const Outline input = ReadOutline(path);
    RequireUsable(input, distance, miter_limit);
    const JoinStyle style = {join, std::clamp(miter_limit, 1.0, kLongestMiter)};
    const double reach = std::abs(distance) * (join == OffsetJoin::kMiter ? style.miter_limit : 1);
    const Placement placement = PlacementFor(input, reach);
    const double touch = TouchDistance(placement.scale * LargestCoordinate(input));
    const Outline region = WithoutIdleVertices(Resolved(Transformed(input, placement.shift, placement.scale), touch), touch);
    const Outline offset = WithoutIdleVertices(Offset(region, distance * placement.scale, style), touch);
    // Undoing the placement: p * scale + shift * scale back to p.
    return ToContours(Transformed(offset, -placement.scale * placement.shift, 1 / placement.scale));
}

namespace {

void RequireUsable(const Outline& outline, double distance, double miter_limit) {
    if (!std::isfinite(distance) || !std::isfinite(miter_limit)) throw EngineError{&kErrorNotFinite};
    if (LargestCoordinate(outline) > kLargestInput || std::abs(distance) > kLargestInput) throw EngineError{&kErrorBadArgument};
}

// The centre is a whole pixel, so that outlines on whole pixels stay on grid points.
Placement PlacementFor(const Outline& outline, double reach) {
    if (outline.pieces.empty()) return {{0, 0}, 1};
    Point low = outline.pieces.front().curve.p0;
    Point high = low;
    for (const CurvePiece& piece : outline.pieces) {
        for (const Point p : {piece.curve.p0, piece.curve.p1, piece.curve.p2, piece.curve.p3}) {
            low = {std::min(low.x, p.x), std::min(low.y, p.y)};
            high = {std::max(high.x, p.x), std::max(high.y, p.y)};
        }
    }
    const Point centre = {std::round(0.5 * (low.x + high.x)), std::round(0.5 * (low.y + high.y))};
    double extent = 0.5 * std::max(high.x - low.x, high.y - low.y) + reach + 1;
    double scale = 1;
    for (; extent > kLargestGridPixel; extent *= 0.5) scale *= 0.5;
    return {-centre, scale};
}

/// The outline of the nonzero-filled region: it winds once around every inside point and not at all around the others. Sides that
/// are `touch` pixels apart or less have nothing between them.
Outline Resolved(const Outline& outline, double touch) {
    const OffsetChain chain = ChainOf(Regularised(outline));
    FlatChain flat = Flatten(chain, CutIntoArcs(chain, kRegionTolerance), kRegionTolerance);
    AlignTouchingSides(chain, kRegionTolerance, touch, flat);
    const Boundary boundary = FindBoundary(flat.segments, WindingRule::kNonZero);
    return RebuildCurves(chain, flat, boundary, kRegionTolerance);
}

// Growing by a and then by b is growing by a + b, and likewise for shrinking: sets of discs add up. A long way is gone in steps
// where most of the outline's detail disappears on the first ones, before it can cross everything else. Mitres and bevels do not
// add up like that.
Outline Offset(Outline outline, double distance, JoinStyle style) {
    double remaining = distance;
    while (remaining != 0 && !outline.pieces.empty()) {
        const double step = style.join == OffsetJoin::kRound ? StepTowards(outline, remaining) : remaining;
        const double tolerance = step == distance ? kFitTolerance : kStepTolerance;
        outline = OffsetOnce(outline, step, style, tolerance);
        remaining -= step;
    }
    return outline;
}

// The longest step that keeps the chain simple, twice as long again and again; the whole way when that is as simple.
double StepTowards(const Outline& outline, double distance) {
    const double shortest = kStepPieces * MeanPieceLength(outline);
    const bool has_length = shortest > 0;  // not so where every piece is a loop
    if (!has_length || std::abs(distance) <= 2 * shortest) return distance;
    const Bends bends = BendsOf(outline, std::copysign(1, distance));
    const auto is_simple = [&](double step) { return IsSimpleStep(bends, step, shortest); };
    if (is_simple(std::abs(distance))) return distance;
    double step = shortest;
    while (is_simple(2 * step)) step *= 2;
    return std::copysign(step, distance);
}

// A piece that folds over lies across the parallels of those that it reaches. They must not meet each other more often than it
// takes to go a part of the way first. And a step must not tear open the joins of a smooth outline: each would get an arc.
bool IsSimpleStep(const Bends& bends, double step, double shortest) {
    const auto count_within = [](const std::vector<double>& distances, double way) {
        return static_cast<double>(std::count_if(distances.begin(), distances.end(), [&](double d) { return d < way; }));
    };
    const double pieces = std::max(static_cast<double>(bends.fold.size()), kFewPieces);
    const double folded = count_within(bends.fold, step);
    const double reached = kStepPieces * step / shortest;
    const double torn = count_within(bends.tear, step) - count_within(bends.tear, shortest);
    return folded * std::min(folded, reached) <= pieces && torn <= kTornShare * pieces;
}

Bends BendsOf(const Outline& outline, double side) {
    Bends bends;
    bends.fold.reserve(outline.pieces.size());
    bends.tear.reserve(outline.pieces.size());
    for (std::size_t i = 0; i < outline.LoopCount(); ++i) {
        Point before = EndTangent(outline.Loop(i).back().curve);
        for (const CurvePiece& piece : outline.Loop(i)) {
            const Point start = StartTangent(piece.curve);
            const Point end = EndTangent(piece.curve);
            const double corner = BendBetween(before, start);
            const double inwards = std::max(0.0, -side * (corner + BendBetween(start, end)));
            bends.fold.push_back(Distance(piece.curve.p0, piece.curve.p3) / inwards);
            bends.tear.push_back(kJoinlessGap / std::abs(corner));
            before = end;
        }
    }
    return bends;
}

// Twice the tangent of half the angle between: what the parallel on the inner side is shorter by, per unit of distance.
double BendBetween(Point before, Point after) { return 2 * Cross(before, after) / (1 + Dot(before, after)); }

Outline OffsetOnce(const Outline& outline, double distance, JoinStyle style, double tolerance) {
    const OffsetChain chain = BuildOffsetChain(Regularised(outline), distance, style, tolerance);
    // Parallels of pieces shorter than the distance cross each other everywhere, and short pieces have few chords to save.
    const bool are_mostly_lone = MeanPieceLength(outline) > std::max(std::abs(distance), kLongPiece);
    const FlatChain flat = Flatten(chain, are_mostly_lone ? CutIntoArcs(chain, tolerance) : WholePieces(chain), tolerance);
    const Boundary boundary = FindBoundary(flat.segments, WindingRule::kPositive);
    return RebuildCurves(chain, flat, boundary, tolerance);
}

double MeanPieceLength(const Outline& outline) {
    double length = 0;
    for (const CurvePiece& piece : outline.pieces) length += Distance(piece.curve.p0, piece.curve.p3);
    return length / static_cast<double>(outline.pieces.size());
}

bool IsSpeck(std::span<const CurvePiece> loop) {
    const Point origin = loop.front().curve.p0;
    return std::all_of(loop.begin(), loop.end(), [&](const CurvePiece& piece) {
        const Cubic& c = piece.curve;
        return std::max({Distance(c.p1, origin), Distance(c.p2, origin), Distance(c.p3, origin)}) < kSpeckSize;
    });
}

std::vector<CurveContour> ToContours(const Outline& outline) {
    std::vector<CurveContour> contours;
    for (std::size_t i = 0; i < outline.LoopCount(); ++i) {
        const std::span<const CurvePiece> loop = outline.Loop(i);
        if (IsSpeck(loop)) continue;
        CurveContour& contour = contours.emplace_back(CurveContour{loop.front().curve.p0, {}});
        for (const CurvePiece& piece : loop)
            contour.segments.push_back({piece.curve.p1, piece.curve.p2, piece.curve.p3, piece.straight});
    }
    return contours;
}

}  // namespace
}  // namespace refhost
