#pragma once

#include <span>
#include <vector>

#include "refhost/engine/point_math.h"
#include "refhost/engine/polygons.h"

namespace refhost {

/// Signed distances at which contours pass a point of an outline, positive outwards: even steps from `inner` to `outer`. Pixels.
struct DistanceSpan {
    double inner, outer;  // inner <= outer

    double At(double fraction) const { return inner + fraction * (outer - inner); }
};

inline DistanceSpan Lerp(DistanceSpan a, DistanceSpan b, double t) {
    return {a.inner + t * (b.inner - a.inner), a.outer + t * (b.outer - a.outer)};
}

/// A point of an outline and the unit normal along which its contours lie.
struct Station {
    Point at, normal;
    DistanceSpan distance;
};

/// A part of an outline that turns little, between two stations. Distances change evenly along it. Where two strips meet, the
/// stations share the place; different normals make a corner, different distances a step.
struct OutlineStrip {
    Station start, end;
};

/// Lines within this many pixels of arcs and of curved contours.
inline constexpr double kContourTolerance = 0.05;

/// A family of contours round an outline, at a distance that varies along it.
///
/// Each outline point sweeps its normal from the outline to the contour, corners sweep a sector on their convex side. The winding
/// number of a contour at a point is that of the filled outline, plus the number of times the point is swept outwards, less the
/// number of times it is swept inwards; the region of the contour is where this is positive. It changes only across the contour
/// itself, so the region moves without jumps while distances do, it grows with them everywhere, and for one constant distance it
/// is the exact offset.
///
/// The strip swept between two normals folds over beyond the point where they meet, a centre of curvature; contours are held back
/// there. That loses nothing: for an even distance what lies behind is nearer to other parts of the outline. It keeps every term
/// of the sum of one sign, as in Chen & McMains, "Polygon offsetting by computing winding numbers" (ASME DETC 2005). The fold
/// does not depend on how the distance changes: with c' = |c'| t, the map (u, s) -> c + s d n has the Jacobian d |c'| (1 + k s
/// d), free of d'.
class VariableOffset {
 public:
    /// `loop` is closed, runs in either direction, its normals on the right of it, and may cross itself: what it winds round is
    /// filled. Between sides that are `touch` pixels apart or less there is nothing. All of it and its contours lie within
    /// kLargestGridPixel of the origin.
    /// @throws std::bad_alloc
    VariableOffset(std::span<const OutlineStrip> loop, double touch);

    /// A contour as closed chains of lines.
    struct Ring {
        Polygons chains;
        bool winds_backwards;  // part of it lies inside the outline: points outside the region may have negative winding numbers
    };
    /// `fraction` from 0, all distances at `inner`, to 1.
    Ring RingAt(double fraction) const;

 private:
    /// A point of every ring: base + distance * normal, the distance kept within `least` and `most`.
    struct Spoke {
        Point base, normal;
        DistanceSpan distance;
        double least, most;

        bool IsFree() const { return least <= distance.inner && distance.outer <= most; }
    };

    void AppendLoop(std::span<const OutlineStrip> loop);
    void AppendCorner(const Station& before, const Station& after);
    void AppendSector(const Station& before, const Station& after, double angle);
    void AppendStrip(const OutlineStrip& strip);
    void Append(const Spoke& spoke);

    std::vector<Spoke> spokes_;
    std::vector<std::size_t> loop_ends_;  // one past the last spoke of each loop, increasing
};

}  // namespace refhost
