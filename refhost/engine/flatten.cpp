#include "refhost/engine/flatten.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "refhost/engine/point_math.h"

namespace refhost {
namespace {

constexpr double kMostPieces = 128;            // a cubic that needs more is halved first, so that its hidden half can be dropped
constexpr double kChordBend = 6.0 / 8;         // distance of a single chord, per largest second difference
constexpr double kMovedBend = 6.0 * 25 / 288;  // of one of n chords between moved points, likewise, times n^2
constexpr int kMostHalvings = 600;  // coordinates end near 1e77, 256 binary orders above a pixel: never reached by a sound curve

bool IsStraight(const Cubic& cubic);
bool LiesOnOneSide(const Cubic& cubic, const VisibleBox& visible);
double PieceCount(const Cubic& cubic, double tolerance);
void AppendHalves(const Cubic& cubic, double tolerance, const VisibleBox& visible, int halvings, std::vector<Point>& points);
void AppendPieces(const Cubic& cubic, int count, std::vector<Point>& points);

void Append(const Cubic& cubic, double tolerance, const VisibleBox& visible, int halvings, std::vector<Point>& points) {
    if (IsStraight(cubic) || LiesOnOneSide(cubic, visible) || halvings == kMostHalvings) {
        points.push_back(cubic.p3);
        return;
    }
    const double count = PieceCount(cubic, tolerance);
    if (count > kMostPieces)
        AppendHalves(cubic, tolerance, visible, halvings + 1, points);
    else
        AppendPieces(cubic, static_cast<int>(count), points);
}

/// A straight side of a shape comes as a curve with its control points on its ends. It runs along its chord, but unevenly, so
/// that its second differences are as large as itself.
bool IsStraight(const Cubic& c) { return c.p1 == c.p0 && c.p2 == c.p3; }

/// The curve stays inside the hull of its points, and so does the chord: on one side of the box one does the other's work.
bool LiesOnOneSide(const Cubic& c, const VisibleBox& visible) {
    const auto [left, right] = std::minmax({c.p0.x, c.p1.x, c.p2.x, c.p3.x});
    const auto [top, bottom] = std::minmax({c.p0.y, c.p1.y, c.p2.y, c.p3.y});
    return right <= visible.left || left >= visible.right || bottom <= visible.top || top >= visible.bottom;
}

Point SecondDifference(Point a, Point b, Point c) { return a - 2 * b + c; }

/// An arc over 1/n of the parameter is, with d = |second derivative| / n^2, d / 8 from its chord at most. With the inner points
/// moved out by d / 12 it is 25 d / 288 at most, near the ends of the curve, which stay. d is at most 6 / n^2 times the largest
/// second difference.
double PieceCount(const Cubic& c, double tolerance) {
    const Point first = SecondDifference(c.p0, c.p1, c.p2);
    const Point second = SecondDifference(c.p1, c.p2, c.p3);
    const double bend = std::sqrt(std::max(Dot(first, first), Dot(second, second)));
    return kChordBend * bend <= tolerance ? 1 : std::max(2.0, std::ceil(std::sqrt(kMovedBend * bend / tolerance)));
}

/// Halving by means keeps the parts of huge curves joined exactly.
void AppendHalves(const Cubic& c, double tolerance, const VisibleBox& visible, int halvings, std::vector<Point>& points) {
    const Point a = 0.5 * (c.p0 + c.p1);
    const Point b = 0.5 * (c.p1 + c.p2);
    const Point d = 0.5 * (c.p2 + c.p3);
    const Point ab = 0.5 * (a + b);
    const Point bd = 0.5 * (b + d);
    const Point middle = 0.5 * (ab + bd);
    Append({c.p0, a, ab, middle}, tolerance, visible, halvings, points);
    Append({middle, bd, d, c.p3}, tolerance, visible, halvings, points);
}

/// Inner points are moved off the curve, to its outer side, by second derivative / (12 n^2): the mean distance between a chord
/// and its arc. Chords then cut the curve instead of running inside it, which takes the bias out of the area and a third off
/// the largest distance. The moved points lie on a cubic again, so it costs nothing.
void AppendPieces(const Cubic& c, int count, std::vector<Point>& points) {
    const double step = 1.0 / count;
    const double outward = step * step / 12;
    const Point cubed = c.p3 - c.p0 + 3 * (c.p1 - c.p2);
    const Point squared = 3 * SecondDifference(c.p0, c.p1, c.p2);
    const Point linear = 3 * (c.p1 - c.p0) - 6 * outward * cubed;
    const Point start = c.p0 - 2 * outward * squared;
    points.resize(points.size() + static_cast<std::size_t>(count));
    points.back() = c.p3;
    Point* const pieces = points.data() + points.size() - count;
    for (int i = 1; i < count; ++i) {
        const double t = i * step;
        pieces[i - 1] = start + t * (linear + t * (squared + t * cubed));
    }
}

}  // namespace

void AppendFlattened(const Cubic& cubic, double tolerance, const VisibleBox& visible, std::vector<Point>& points) {
    Append(cubic, tolerance, visible, 0, points);
}

}  // namespace refhost
