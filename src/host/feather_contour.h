#pragma once

#include <cstdint>

#include "base/export.h"
#include "host/canceler.h"
#include "host/engine.h"
#include "host/geometry_records.h"
#include "host/shape.h"

/// What a contour request came to.
enum DY_ContourResults : std::int32_t {
    kContourPath = 0,     // the returned path
    kContourNothing = 1,  // it covers nothing of the clip
    kContourAll = 2,      // it covers all of the clip; there is no path
};

struct DY_FeatherContourState;  // the host's own part

/// Makes the contours of a shape between the inner and the outer edge of its feather.
/// Distances are measured in the working space: the shape's, scaled horizontally by the constructor's factor.
class VRL_HOST_API DY_FeatherContourMaker {
 public:
    /// Borrows shape and canceler. `scale_x` is 1 / pixel aspect; `expansion` (pixels) moves all contours outwards.
    /// @throws std::bad_alloc, int (the stop code, or a status after a report: an outline or a distance out of range)
    DY_FeatherContourMaker(DY_Shape* shape, float scale_x, const DY_FeatherContourCanceler& canceler, float expansion);
    DY_FeatherContourMaker(const DY_FeatherContourMaker&) = delete;
    DY_FeatherContourMaker& operator=(const DY_FeatherContourMaker&) = delete;
    ~DY_FeatherContourMaker();

    /// The furthest a contour lies from the outline, positive outwards: of the innermost contour, or of the outermost.
    float GetMaxRadius(bool inner) const;

    /// The contour at `fraction` of the feather span, 0 the inner edge, in the shape's space. `clip` is a rectangle of
    /// the working space: what lies outside does not matter. Any number of threads may ask at once. The caller owns one
    /// reference to the path; null when `result` is not kContourPath.
    /// @throws std::exception, int (the stop code)
    GRXPath* MakeGRXPath(float fraction, float, const M_FloatRect* clip, DY_ContourResults* result) const;

 private:
    DY_FeatherContourState* state_;  // owned
};
