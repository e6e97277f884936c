#pragma once

#include "host/bezier_path.h"
#include "host/grx_path.h"
#include "host/shape.h"

/// Appends the outline of `shape` to `path`: every segment becomes a cubic, the closing one of a closed shape included.
/// `close` asks for a close entry after a closed shape. `path` is freshly constructed.
/// @throws int                           a status of the shape model
/// @throws QELException, std::bad_alloc  the record cannot grow
void VRLp_ShapeToPath(const DY_Shape& shape, CPIVBezierPath& path, bool close);

/// The engine path of the whole outline.
/// @throws as VRLp_ShapeToPath and the engine fail
CGRXPath VRLp_PathOfShape(const DY_Shape& shape);
