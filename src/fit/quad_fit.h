#pragma once

#include <optional>

#include "fit/bezier.h"
#include "fit/quad_view.h"

/// The quadratic with the least squared distance to the points of the view at their parameters. Points that leave it open,
/// fewer than three different ones, give the straight line from the first point to the last.
CFBezier2 FitQuadratic(const CF1QuadView& view);

/// The quadratics on both sides of a point, which ends the left and starts the right one.
struct CFQuadPair {
    CFBezier2 left, right;
};

/// The least-squares quadratics of both sides; a side of at most 2 points is a straight line. No value when the points of a
/// side leave its curve open.
std::optional<CFQuadPair> FitQuadratics(const CF2QuadView& view);
