#include "refhost/engine/offset_chain.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "refhost/engine/parallel_curve.h"

namespace refhost {
namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kSmallGap = 0.01;       // pixels; parallels that end this close to each other are joined by moving both ends
constexpr double kReversalSine = 0.1;    // a turn this close to 180 degrees has no reliable sign
constexpr double kQuarterArcError = 2.73e-4;  // of the radius: deviation of the usual cubic for a quarter circle

void AppendOffsetLoop(std::span<const CurvePiece> loop, double distance, JoinStyle style, double tolerance, Outline& chain);
void AppendParallel(const CurvePiece& piece, double distance, double tolerance, std::vector<CurvePiece>& out);
void CloseSmallGap(CurvePiece& before, CurvePiece& after);
double RoundJoinAngle(Point before, Point after, double distance);
void AppendArc(Point centre, Point start_normal, double radius, double angle, double tolerance, std::vector<CurvePiece>& out);

}  // namespace

Outline BuildOffsetChain(const Outline& outline, double distance, JoinStyle style, double tolerance) {
    Outline chain;
    chain.pieces.reserve(3 * outline.pieces.size());
    for (std::size_t i = 0; i < outline.LoopCount(); ++i) AppendOffsetLoop(outline.Loop(i), distance, style, tolerance, chain);
    return chain;
}

void AppendJoin(Point corner, Point before, Point after, double distance, JoinStyle style, double tolerance, std::vector<CurvePiece>& out) {
    const Point from = corner + distance * RightNormal(before);
    const Point to = corner + distance * RightNormal(after);
    if (from.x == to.x && from.y == to.y) return;
    const bool is_round = style.join == OffsetJoin::kRound;
    const double angle = is_round ? RoundJoinAngle(before, after, distance) : TurningAngle(before, after);
    const bool is_convex = angle * distance > 0;
    if (!is_convex) {
        out.push_back(ScaffoldPiece(from, corner));
        out.push_back(ScaffoldPiece(corner, to));
    } else if (is_round) {
        AppendArc(corner, RightNormal(before), distance, angle, tolerance, out);
        out.back().curve.p3 = to;
    } else if (style.join == OffsetJoin::kMiter && std::cos(0.5 * angle) * style.miter_limit >= 1) {
        const Point tip = from + std::abs(distance) * std::tan(0.5 * std::abs(angle)) * before;
        out.push_back(StraightPiece(from, tip));
        out.push_back(StraightPiece(tip, to));
    } else {
        out.push_back(StraightPiece(from, to));
    }
}

namespace {

void AppendOffsetLoop(std::span<const CurvePiece> loop, double distance, JoinStyle style, double tolerance, Outline& chain) {
    const std::size_t begin = chain.pieces.size();
    Point before = EndTangent(loop.back().curve);
    std::size_t last_parallel = begin;
    bool closes_gap_at_start = false;
    for (const CurvePiece& piece : loop) {
        const Point after = StartTangent(piece.curve);
        const bool gap_is_small = std::abs(TurningAngle(before, after) * distance) < kSmallGap;
        if (!gap_is_small) AppendJoin(piece.curve.p0, before, after, distance, style, tolerance, chain.pieces);
        last_parallel = chain.pieces.size();
        AppendParallel(piece, distance, tolerance, chain.pieces);
        if (gap_is_small && last_parallel > begin) CloseSmallGap(chain.pieces[last_parallel - 1], chain.pieces[last_parallel]);
        if (gap_is_small && last_parallel == begin) closes_gap_at_start = true;
        before = EndTangent(piece.curve);
    }
    if (closes_gap_at_start) CloseSmallGap(chain.pieces.back(), chain.pieces[begin]);
    chain.CloseLoop();
}

void AppendParallel(const CurvePiece& piece, double distance, double tolerance, std::vector<CurvePiece>& out) {
    if (piece.straight) {
        const Point shift = distance * RightNormal(StartTangent(piece.curve));
        out.push_back(StraightPiece(piece.curve.p0 + shift, piece.curve.p3 + shift));
    } else {
        AppendParallelCurve(piece.curve, distance, tolerance, out);
    }
}

// Both ends move to the middle together with their handles, so that the tangents stay.
void CloseSmallGap(CurvePiece& before, CurvePiece& after) {
    const Point middle = Lerp(before.curve.p3, after.curve.p0, 0.5);
    const Point end_shift = middle - before.curve.p3;
    const Point start_shift = middle - after.curve.p0;
    before.curve.p3 = middle;
    before.curve.p2 = before.curve.p2 + end_shift;
    after.curve.p0 = middle;
    after.curve.p1 = after.curve.p1 + start_shift;
    if (before.straight) before.curve = LineAsCubic(before.curve.p0, middle);
    if (after.straight) after.curve = LineAsCubic(middle, after.curve.p3);
}

// Where the outline turns almost straight back, rounding decides the sign of the turn. The sector on the offset's own side is then
// always a right choice, as every such sector lies in the disc round the corner; treating the tip of a spike as concave would
// leave a slit along it.
double RoundJoinAngle(Point before, Point after, double distance) {
    const double angle = TurningAngle(before, after);
    const bool is_reversal = Dot(before, after) < 0 && std::abs(Cross(before, after)) < kReversalSine;
    if (!is_reversal || angle * distance > 0) return angle;
    return angle + std::copysign(2 * kPi, distance);
}

// Cubics whose deviation grows with the sixth power of their angle.
void AppendArc(Point centre, Point start_normal, double radius, double angle, double tolerance, std::vector<CurvePiece>& out) {
    const double quarter_error = std::abs(radius) * kQuarterArcError;
    const double largest = 0.5 * kPi * std::min(1.0, std::pow(tolerance / quarter_error, 1.0 / 6));
    const int count = std::max(1, static_cast<int>(std::ceil(std::abs(angle) / largest - 1e-9)));
    const double step = angle / count;
    const double handle = 4.0 / 3 * std::tan(0.25 * step) * radius;
    Point normal = start_normal;
    for (int i = 1; i <= count; ++i) {
        const double turned = step * i;
        const Point next = {start_normal.x * std::cos(turned) - start_normal.y * std::sin(turned),
                            start_normal.x * std::sin(turned) + start_normal.y * std::cos(turned)};
        const Point p0 = centre + radius * normal;
        const Point p3 = centre + radius * next;
        out.push_back({{p0, p0 + handle * Point{-normal.y, normal.x}, p3 - handle * Point{-next.y, next.x}, p3}, false});
        normal = next;
    }
}

}  // namespace
}  // namespace refhost
