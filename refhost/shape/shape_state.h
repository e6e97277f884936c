#pragma once

#include "refhost/shape/point_list.h"

/// This host's own part of a shape.
struct DY_ShapeState {
    refhost::PointList points;
    WEX_Head* head = &points;  // what the list's handle points to

    DY_ShapeState() = default;
    DY_ShapeState(const DY_ShapeState& other) : points(other.points) {}
    DY_ShapeState& operator=(const DY_ShapeState&) = delete;
};
