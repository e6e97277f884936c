#pragma once

#include <vector>

#include "tool/outline.h"

namespace vrltool {

/// Semi-axes of an ellipse and the angle from the x axis to the first, in radians.
struct ArcShape {
    double rx, ry, rotation;
};

/// Turns drawing steps into outlines, one per subpath. Subpaths without extent are dropped.
class PathBuilder {
 public:
    /// Where the next segment starts.
    const Point& Current() const { return current_; }

    void MoveTo(const Point& start);
    void LineTo(const Point& end) { CurveTo(current_, end, end); }
    void CurveTo(const Point& control1, const Point& control2, const Point& end);
    void QuadraticTo(const Point& control, const Point& end);
    /// The arc of `shape` from the current point to `end`; of the four there are, the one over or under half a turn
    /// (`large`) that runs clockwise on screen or not (`sweep`). Radii too small are enlarged until the arc reaches.
    void ArcTo(const ArcShape& shape, bool large, bool sweep, const Point& end);
    /// Closes the subpath; the next one starts where this one did unless a `MoveTo` comes first.
    void Close();

    std::vector<Outline> Take();

 private:
    void Deliver();

    std::vector<Outline> outlines_;
    Outline subpath_;  // without vertices between subpaths
    Point current_ = {0, 0};
};

}  // namespace vrltool
