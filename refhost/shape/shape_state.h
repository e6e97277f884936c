#pragma once

#include <vector>

#include "refhost/shape/feather_points.h"
#include "refhost/shape/point_list.h"

/// This host's own part of a shape.
struct DY_ShapeState {
    refhost::PointList points;
    WEX_Head* head = &points;                    // what the list's handle points to
    std::vector<refhost::FeatherPoint> feather;  // sorted by position

    DY_ShapeState() = default;
    DY_ShapeState(const DY_ShapeState& other) : points(other.points), feather(other.feather) {}
    DY_ShapeState& operator=(const DY_ShapeState&) = delete;
};
