#include "refhost/engine/outline.h"

#include <algorithm>
#include <cmath>

#include "refhost/engine/engine_error.h"

namespace refhost {
namespace {

constexpr double kShortPiece = 1e-4;    // pixels; a piece whose control points stay this close together is dropped
constexpr double kShortHandle = 2e-3;   // pixels; the direction of a shorter control leg is noise of single-precision input
constexpr double kStraightness = 1e-4;  // pixels a control point of a straight piece may lie beside the line through its ends
constexpr double kCuspSpeed = 1e-3;     // of the control polygon's length; a slower interior point is treated as a cusp

/// Collects the subpaths of an engine path.
class PathReader {
 public:
    explicit PathReader(const PathView& path) : path_(path) {}
    Outline Read();

 private:
    void Enter(std::size_t index);
    void ClosePath();
    void AddLine(Point to);
    void AddCurve(std::size_t index);
    Point FinitePoint(std::size_t index) const;

    const PathView& path_;
    Outline outline_;
    Point start_{};
    Point current_{};
};

void AppendRegularised(CurvePiece piece, Point& last, Outline& result);
void AppendSplitAtCusps(const Cubic& curve, Outline& result);
bool MovesAhead(const Cubic& curve, double slow);
bool LooksStraight(const Cubic& curve);
Cubic WithoutTinyHandles(Cubic curve);

}  // namespace

void MoveStart(CurvePiece& piece, Point start) {
    Cubic& c = piece.curve;
    c.p1 = c.p1 + (start - c.p0);
    c.p0 = start;
    if (piece.straight) c = LineAsCubic(c.p0, c.p3);
}

void MoveEnd(CurvePiece& piece, Point end) {
    Cubic& c = piece.curve;
    c.p2 = c.p2 + (end - c.p3);
    c.p3 = end;
    if (piece.straight) c = LineAsCubic(c.p0, c.p3);
}

double SignedArea(std::span<const CurvePiece> loop) {
    if (loop.empty()) return 0;
    // Measured from a point of the loop, so that a small loop far from the origin keeps its digits.
    const Point origin = loop.front().curve.p0;
    double doubled = 0;
    for (const CurvePiece& piece : loop) {
        const Cubic& c = piece.curve;
        doubled += DoubledArea({c.p0 - origin, c.p1 - origin, c.p2 - origin, c.p3 - origin});
    }
    return 0.5 * doubled;
}

double LargestCoordinate(const Outline& outline) {
    double largest = 0;
    for (const CurvePiece& piece : outline.pieces) {
        for (const Point p : {piece.curve.p0, piece.curve.p1, piece.curve.p2, piece.curve.p3}) {
            largest = std::max({largest, std::abs(p.x), std::abs(p.y)});
        }
    }
    return largest;
}

Outline ReadOutline(const PathView& path) { return PathReader(path).Read(); }

Outline Transformed(const Outline& outline, Point shift, double scale) {
    Outline result = outline;
    for (CurvePiece& piece : result.pieces) {
        Cubic& c = piece.curve;
        c = {scale * (c.p0 + shift), scale * (c.p1 + shift), scale * (c.p2 + shift), scale * (c.p3 + shift)};
    }
    return result;
}

Outline Regularised(const Outline& outline) {
    Outline result;
    result.pieces.reserve(outline.pieces.size());
    for (std::size_t loop = 0; loop < outline.LoopCount(); ++loop) {
        const std::size_t begin = result.pieces.size();
        Point last = outline.Loop(loop).front().curve.p0;
        for (const CurvePiece& piece : outline.Loop(loop)) AppendRegularised(piece, last, result);
        if (result.pieces.size() == begin) continue;
        MoveStart(result.pieces[begin], last);
        result.CloseLoop();
    }
    return result;
}

namespace {

Outline PathReader::Read() {
    CheckOperators(path_);
    for (std::size_t i = 0; i < path_.Size(); ++i) {
        Enter(i);
        if (path_.operators[i] == kPIVCurve) i += 2;
    }
    ClosePath();
    return std::move(outline_);
}

void PathReader::Enter(std::size_t index) {
    switch (path_.operators[index]) {
        case kPIVMove:
            ClosePath();
            start_ = current_ = FinitePoint(index);
            return;
        case kPIVLine:
            return AddLine(FinitePoint(index));
        case kPIVCurve:
            return AddCurve(index);
        case kPIVClose:
            return ClosePath();
    }
}

// Drawing may go on after a close: it starts a new subpath at the point the closed one started from.
void PathReader::ClosePath() {
    if (current_.x != start_.x || current_.y != start_.y) AddLine(start_);
    current_ = start_;
    outline_.CloseLoop();
}

void PathReader::AddLine(Point to) {
    outline_.pieces.push_back(StraightPiece(current_, to));
    current_ = to;
}

void PathReader::AddCurve(std::size_t index) {
    const Point end = FinitePoint(index + 2);
    outline_.pieces.push_back({{current_, FinitePoint(index), FinitePoint(index + 1), end}, false});
    current_ = end;
}

Point PathReader::FinitePoint(std::size_t index) const {
    const M_Vector2T<float> p = path_.points[index];
    if (!std::isfinite(p.x) || !std::isfinite(p.y)) throw EngineError{&kErrorNotFinite};
    return {static_cast<double>(p.x), static_cast<double>(p.y)};
}

// Measured from the last point kept, so that many tiny pieces in a row still add up to a visible one.
void AppendRegularised(CurvePiece piece, Point& last, Outline& result) {
    MoveStart(piece, last);
    if (ControlLength(piece.curve) < kShortPiece) return;
    last = piece.curve.p3;
    if (piece.straight || LooksStraight(piece.curve)) {
        result.pieces.push_back(StraightPiece(piece.curve.p0, piece.curve.p3));
    } else {
        AppendSplitAtCusps(piece.curve, result);
    }
}

void AppendSplitAtCusps(const Cubic& curve, Outline& result) {
    const double slow = kCuspSpeed * ControlLength(curve);
    double done = 0;
    const CurveParameters slowest = MovesAhead(curve, slow) ? CurveParameters() : SpeedMinima(curve);
    for (const double t : slowest) {
        if (Length(FirstDerivative(curve, t)) >= slow) continue;
        result.pieces.push_back({WithoutTinyHandles(SubCurve(curve, done, t)), false});
        done = t;
    }
    result.pieces.push_back({WithoutTinyHandles(done == 0 ? curve : SubCurve(curve, done, 1)), false});
}

// The part of the velocity along the chord is between those of the control legs: a quick proof that there is no cusp.
bool MovesAhead(const Cubic& c, double slow) {
    const Point chord = c.p3 - c.p0;
    return std::min({Dot(c.p1 - c.p0, chord), Dot(c.p2 - c.p1, chord), Dot(c.p3 - c.p2, chord)}) > slow * Length(chord);
}

// Wherever on the line the controls are: a part beyond the ends is run out and back, and encloses nothing.
bool LooksStraight(const Cubic& c) {
    const Point chord = c.p3 - c.p0;
    const double length = Length(chord);
    if (length < kShortPiece) return false;
    const auto is_on_line = [&](Point p) { return std::abs(Cross(p - c.p0, chord)) <= kStraightness * length; };
    return is_on_line(c.p1) && is_on_line(c.p2);
}

Cubic WithoutTinyHandles(Cubic c) {
    if (Distance(c.p0, c.p1) < kShortHandle) c.p1 = c.p0;
    if (Distance(c.p2, c.p3) < kShortHandle) c.p2 = c.p3;
    return c;
}

}  // namespace
}  // namespace refhost
