#pragma once

#include <boost/shared_ptr.hpp>
#include <optional>
#include <vector>

#include "host/shape.h"
#include "tool/combine.h"

namespace vrltool {

/// A shape as a file holds it.
struct ShapeRecord {
    boost::shared_ptr<DY_Shape> shape;
    std::optional<CombineMode> mode;  // how it joins the shapes before it, where the file says so
};

}  // namespace vrltool
