#include "refhost/engine/offset_chain.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>

#include "refhost/engine/parallel_curve.h"

namespace refhost {
namespace {

ChainPiece Leg(Point from, Point to) { return {LineAsCubic(from, to), true, false, 0}; }
ChainPiece Spoke(Point from, Point to) { return {LineAsCubic(from, to), true, true, 0}; }

constexpr double kPi = std::numbers::pi;
constexpr double kReversalSine = 0.1;         // a turn this close to 180 degrees has no reliable sign
constexpr double kQuarterArcError = 2.73e-4;  // of the radius: deviation of the usual cubic for a quarter circle
constexpr double kSpareArc = 1e-3;            // of the largest arc: right angles are rounded, and need no second one

void AppendOffsetLoop(std::span<const CurvePiece> loop, double distance, JoinStyle style, double tolerance, OffsetChain& chain);
void AppendJoin(Point corner, Point before, Point after, double distance, JoinStyle style, double tolerance,
                std::vector<ChainPiece>& out);
ChainPiece Parallel(const CurvePiece& piece, double distance, double tolerance);
double RoundJoinAngle(Point before, Point after, double turn, double distance);
void AppendArc(Point centre, Point start_normal, double radius, double angle, double tolerance, std::vector<ChainPiece>& out);

}  // namespace

Point ChainPiece::At(double t) const { return distance == 0 ? Evaluate(curve, t) : ParallelPoint(curve, distance, t); }

OffsetChain ChainOf(const Outline& outline) {
    OffsetChain chain;
    chain.loop_ends = outline.loop_ends;
    chain.pieces.reserve(outline.pieces.size());
    for (const CurvePiece& piece : outline.pieces) chain.pieces.push_back({piece.curve, piece.straight, false, 0});
    return chain;
}

OffsetChain BuildOffsetChain(const Outline& outline, double distance, JoinStyle style, double tolerance) {
    OffsetChain chain;
    chain.pieces.reserve(3 * outline.pieces.size());
    for (std::size_t i = 0; i < outline.LoopCount(); ++i) AppendOffsetLoop(outline.Loop(i), distance, style, tolerance, chain);
    return chain;
}

namespace {

void AppendOffsetLoop(std::span<const CurvePiece> loop, double distance, JoinStyle style, double tolerance, OffsetChain& chain) {
    Point before = EndTangent(loop.back().curve);
    for (const CurvePiece& piece : loop) {
        const Point after = StartTangent(piece.curve);
        AppendJoin(piece.curve.p0, before, after, distance, style, tolerance, chain.pieces);
        chain.pieces.push_back(Parallel(piece, distance, tolerance));
        before = EndTangent(piece.curve);
    }
    chain.CloseLoop();
}

// From corner + distance * normal of `before` to corner + distance * normal of `after`, unless they almost coincide.
void AppendJoin(Point corner, Point before, Point after, double distance, JoinStyle style, double tolerance,
                std::vector<ChainPiece>& out) {
    const double turn = TurningAngle(before, after);
    if (std::abs(turn * distance) < kJoinlessGap) return;
    const Point from = corner + distance * RightNormal(before);
    const Point to = corner + distance * RightNormal(after);
    const bool is_round = style.join == OffsetJoin::kRound;
    const double angle = is_round ? RoundJoinAngle(before, after, turn, distance) : turn;
    const bool is_convex = angle * distance > 0;
    if (!is_convex) {
        out.push_back(Spoke(from, corner));
        out.push_back(Spoke(corner, to));
    } else if (is_round) {
        AppendArc(corner, RightNormal(before), distance, angle, tolerance, out);
        out.back().curve.p3 = to;
    } else if (style.join == OffsetJoin::kMiter && std::cos(0.5 * angle) * style.miter_limit >= 1) {
        const Point tip = from + std::abs(distance) * std::tan(0.5 * std::abs(angle)) * before;
        out.push_back(Leg(from, tip));
        out.push_back(Leg(tip, to));
    } else {
        out.push_back(Leg(from, to));
    }
}

ChainPiece Parallel(const CurvePiece& piece, double distance, double tolerance) {
    if (piece.straight) {
        const Point shift = distance * RightNormal(StartTangent(piece.curve));
        return Leg(piece.curve.p0 + shift, piece.curve.p3 + shift);
    }
    if (const std::optional<Cubic> calm = CalmParallel(piece.curve, distance, tolerance)) return {*calm, false, false, 0};
    return {piece.curve, false, false, distance};
}

// Where the outline turns almost straight back, rounding decides the sign of the turn. The sector on the offset's own side is
// then always a right choice, as every such sector lies in the disc round the corner; treating the tip of a spike as concave
// would leave a slit along it.
double RoundJoinAngle(Point before, Point after, double turn, double distance) {
    const bool is_reversal = Dot(before, after) < 0 && std::abs(Cross(before, after)) < kReversalSine;
    if (!is_reversal || turn * distance > 0) return turn;
    return turn + std::copysign(2 * kPi, distance);
}

// Cubics whose deviation grows with the sixth power of their angle.
void AppendArc(Point centre, Point start_normal, double radius, double angle, double tolerance, std::vector<ChainPiece>& out) {
    const double quarter_error = std::abs(radius) * kQuarterArcError;
    const double largest = 0.5 * kPi * (quarter_error <= tolerance ? 1 : std::pow(tolerance / quarter_error, 1.0 / 6));
    const int count = std::max(1, static_cast<int>(std::ceil(std::abs(angle) / largest - kSpareArc)));
    const double step = angle / count;
    const double handle = 4.0 / 3 * std::tan(0.25 * step) * radius;
    Point normal = start_normal;
    for (int i = 1; i <= count; ++i) {
        const double turned = step * i;
        const Point next = {start_normal.x * std::cos(turned) - start_normal.y * std::sin(turned),
                            start_normal.x * std::sin(turned) + start_normal.y * std::cos(turned)};
        const Point p0 = centre + radius * normal;
        const Point p3 = centre + radius * next;
        out.push_back(
            {{p0, p0 + handle * Point{-normal.y, normal.x}, p3 - handle * Point{-next.y, next.x}, p3}, false, false, 0});
        normal = next;
    }
}

}  // namespace
}  // namespace refhost
