#pragma once

#include <string_view>

#include "tool/affine.h"

namespace vrltool {

/// An SVG transform list: matrix, translate, scale, rotate, skewX and skewY, the last one acting first.
/// @throws Failure
Affine ParseTransform(std::string_view text);

/// A `viewBox`: the rectangle of drawing units that fills the viewport.
struct ViewBox {
    double x, y, width, height;
};

/// @throws Failure  also when its width or height is not above 0
ViewBox ParseViewBox(std::string_view text);

/// Maps the box onto the rectangle from (0, 0) to (`width`, `height`) in the way `preserve_aspect_ratio` says; empty
/// means the default, xMidYMid meet.
/// @throws Failure
Affine FitViewBox(const ViewBox& box, double width, double height, std::string_view preserve_aspect_ratio);

}  // namespace vrltool
