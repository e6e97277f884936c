#pragma once

#include <span>
#include <vector>

#include "host/shape.h"
#include "refhost/engine/cubic.h"
#include "refhost/engine/variable_offset.h"
#include "refhost/shape/feather_radius.h"

namespace refhost {

/// The outline of a shape as curves, in the order of their segment indices.
struct ShapeSegments {
    std::vector<Cubic> curves;
    bool is_closed;  // the last curve ends at the start of the first
};

/// A closed outline without handles for its closing segment gets a straight one. An open one ends with its last vertex. No curves
/// for less than two vertices.
ShapeSegments SegmentsOf(const DY_Shape& shape);

/// The closed outline of `segments`, a straight leg closing an open one, as strips short enough for its contours. Where `knots`
/// give radius r, contours lie from `expansion` + min(r, 0) to `expansion` + max(r, 0); between knots r changes evenly in arc
/// length.
std::vector<OutlineStrip> FeatherStrips(const ShapeSegments& segments, std::span<const FeatherKnot> knots, double expansion);

}  // namespace refhost
