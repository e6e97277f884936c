#include "refhost/engine/idle_vertices.h"

#include <algorithm>
#include <cmath>

namespace refhost {
namespace {

/// Directions from a point in which a line passes all vertices added within the tolerance.
class Cone {
 public:
    Cone(Point apex, double tolerance) : apex_(apex), tolerance_(tolerance) {}

    bool Holds(Point p) const { return is_open_ || (Cross(right_, p - apex_) >= 0 && Cross(p - apex_, left_) >= 0); }
    void Add(Point vertex);

 private:
    Point apex_;
    double tolerance_;
    bool is_open_ = true;  // nothing added yet
    Point right_{}, left_{};
};

bool IsBusy(std::span<const CurvePiece> loop, double tolerance);
std::vector<CurvePiece> WithoutShortPieces(std::span<const CurvePiece> loop, double tolerance);
std::size_t FirstCorner(std::span<const CurvePiece> loop, double tolerance);
bool GoesStraightOn(const CurvePiece& before, const CurvePiece& after, double tolerance);
void AppendJoined(std::span<const CurvePiece> loop, double tolerance, Outline& result);
bool IsOutAndBack(std::span<const CurvePiece> loop);

}  // namespace

Outline WithoutIdleVertices(const Outline& outline, double tolerance) {
    Outline result;
    result.pieces.reserve(outline.pieces.size());
    for (std::size_t i = 0; i < outline.LoopCount(); ++i) {
        if (IsBusy(outline.Loop(i), tolerance)) {
            result.pieces.insert(result.pieces.end(), outline.Loop(i).begin(), outline.Loop(i).end());
            result.CloseLoop();
            continue;
        }
        std::vector<CurvePiece> loop = WithoutShortPieces(outline.Loop(i), tolerance);
        if (loop.size() > 1) {
            std::rotate(loop.begin(), loop.begin() + static_cast<std::ptrdiff_t>(FirstCorner(loop, tolerance)), loop.end());
        }
        const std::size_t begin = result.pieces.size();
        AppendJoined(loop, tolerance, result);
        if (IsOutAndBack(std::span(result.pieces).subspan(begin)))
            result.pieces.erase(result.pieces.begin() + static_cast<std::ptrdiff_t>(begin), result.pieces.end());
        result.CloseLoop();
    }
    return result;
}

namespace {

// Every vertex carries something, as in most loops.
bool IsBusy(std::span<const CurvePiece> loop, double tolerance) {
    const CurvePiece* before = &loop.back();
    for (const CurvePiece& piece : loop) {
        if (ControlLength(piece.curve) <= tolerance || GoesStraightOn(*before, piece, tolerance)) return false;
        before = &piece;
    }
    return true;
}

// Measured from the last vertex kept, so that many short pieces in a row still add up.
std::vector<CurvePiece> WithoutShortPieces(std::span<const CurvePiece> loop, double tolerance) {
    std::vector<CurvePiece> kept;
    kept.reserve(loop.size());
    Point last = loop.front().curve.p0;
    for (CurvePiece piece : loop) {
        MoveStart(piece, last);
        if (ControlLength(piece.curve) <= tolerance) continue;
        last = piece.curve.p3;
        kept.push_back(piece);
    }
    if (!kept.empty()) MoveStart(kept.front(), last);
    return kept;
}

// A row of straight pieces must not begin in its middle. A loop without any corner may begin anywhere.
std::size_t FirstCorner(std::span<const CurvePiece> loop, double tolerance) {
    const CurvePiece* before = &loop.back();
    for (const CurvePiece& piece : loop) {
        if (!GoesStraightOn(*before, piece, tolerance)) return static_cast<std::size_t>(&piece - loop.data());
        before = &piece;
    }
    return 0;
}

bool GoesStraightOn(const CurvePiece& before, const CurvePiece& after, double tolerance) {
    if (!before.straight || !after.straight) return false;
    Cone cone(before.curve.p0, tolerance);
    cone.Add(before.curve.p3);
    return cone.Holds(after.curve.p3) && Dot(before.curve.p3 - before.curve.p0, after.curve.p3 - after.curve.p0) > 0;
}

void AppendJoined(std::span<const CurvePiece> loop, double tolerance, Outline& result) {
    for (std::size_t i = 0; i < loop.size();) {
        if (!loop[i].straight) {
            result.pieces.push_back(loop[i++]);
            continue;
        }
        const Point start = loop[i].curve.p0;
        Point end = loop[i].curve.p3;
        Cone cone(start, tolerance);
        for (++i; i < loop.size() && loop[i].straight; ++i) {
            cone.Add(end);
            const Point next = loop[i].curve.p3;
            if (!cone.Holds(next) || Dot(next - end, end - start) <= 0) break;
            end = next;
        }
        result.pieces.push_back(StraightPiece(start, end));
    }
}

bool IsOutAndBack(std::span<const CurvePiece> loop) {
    return loop.size() <= 2 && std::all_of(loop.begin(), loop.end(), [](const CurvePiece& piece) { return piece.straight; });
}

void Cone::Add(Point vertex) {
    const Point way = vertex - apex_;
    const double length = Length(way);
    if (length <= tolerance_) return;
    const Point aside = (tolerance_ / length) * RightNormal(way);
    // The right-hand normal points to smaller angles in the sense of the cross product.
    const Point right = way + aside;
    const Point left = way - aside;
    if (is_open_ || Cross(right_, right) > 0) right_ = right;
    if (is_open_ || Cross(left, left_) > 0) left_ = left;
    is_open_ = false;
}

}  // namespace
}  // namespace refhost
