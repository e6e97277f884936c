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

/// What goes into a file of shapes beside them, each where that kind of file has a place for it.
struct ShapeFileExtras {
    M_FloatRect picture = {0, 0, 1, 1};  // what a drawing shows at least: a picture without size would turn it off
    std::optional<double> total_ms;      // time the shapes took to make
};

}  // namespace vrltool
