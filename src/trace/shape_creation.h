#pragma once

#include <boost/shared_ptr.hpp>
#include <memory>
#include <vector>

#include "fit/path.h"
#include "host/shape.h"
#include "trace/shape_generator.h"

/// Appends one closed shape to `shapes` for every outline and hole of the regions that are not black, then maps every shape
/// of the list, those that were there before too, when the generator has a transform.
/// @throws int  the host's status, or what the generator throws
void VRLp_CreateShapes(VRLp_ShapeGenerator& generator, std::vector<boost::shared_ptr<DY_Shape>>& shapes);

/// A closed shape with the path's anchors and handles.
/// @throws int  the host's status; kBrokenInvariant for a path without anchors
std::unique_ptr<DY_Shape> VRLp_MakeShape(const RPPath& path);
