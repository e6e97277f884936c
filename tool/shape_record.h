#pragma once

#include <boost/shared_ptr.hpp>
#include <optional>
#include <vector>

#include "host/geometry_records.h"
#include "host/shape.h"
#include "tool/combine.h"

namespace vrltool {

/// A shape as a file holds it.
struct ShapeRecord {
    boost::shared_ptr<DY_Shape> shape;
    std::optional<CombineMode> mode;  // how it joins the shapes before it, where the file says so
};

/// Shapes and the picture they are drawn in.
struct Drawing {
    std::vector<ShapeRecord> shapes;
    std::optional<M_FloatRect> canvas;  // what the drawing shows, where it says so
};

/// What goes into a file of shapes beside them, each where that kind of file has a place for it.
struct ShapeFileExtras {
    std::optional<M_FloatRect> canvas;  // what a drawing shows, whatever the shapes; without it, all of them
    std::optional<double> total_ms;     // time the shapes took to make
};

}  // namespace vrltool
