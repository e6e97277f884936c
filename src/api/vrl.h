#pragma once

#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <vector>

#include "api/auto_trace_params.h"
#include "api/join.h"
#include "api/mask_params.h"
#include "base/export.h"
#include "host/geometry_records.h"
#include "host/image.h"
#include "host/message_table.h"
#include "host/shape.h"
#include "host/world.h"

// The mask library's exports. Call VRL_Birth once before any other, VRL_Death once when done.

/// Binds the host's graphics engine and warms it with one small fill.
/// @throws int           the status of the host's binding entry point
/// @throws CNUBError     "Missing Interface", or an engine failure
/// @throws QELException  "Math overflow exception"
/// @throws std::bad_alloc
VRL_API void VRL_Birth();

/// Ends the binding. Does nothing when it was never started.
VRL_API void VRL_Death() noexcept;

/// Renders one mask into `buffer`, whose earlier content is lost. The caller owns all arguments.
/// `transform` (may be null) maps the shape into buffer pixels. `touched` (may be null) receives the rectangle of the
/// buffer that the mask may have made non-zero; the whole buffer when the mask is inverted or its opacity is 0. Under a
/// transform that turns or skews, a variable feather may reach beyond it.
/// Returns 0, a host status, the stop code of the progress callbacks, the host's status for an exception, or 3 after a
/// report, for a missing argument, a buffer without samples or a pixel aspect that is no finite float; the buffer then
/// keeps what was written so far. A null `shape` is refused unless the opacity leaves nothing of it.
VRL_API std::int32_t VRL_MaskWithShape(const DY_Shape* shape, const VRL_MaskParams* params, const M_Matrix3* transform,
                                       GW_UnoBuffer* buffer, M_LRect* touched);

/// Renders one mask at the size of `layer`, without a transform, and merges it into the layer's alpha. `touched` (may be
/// null) receives the rectangle that was merged. Returns what VRL_MaskWithShape would; after a failed render the layer
/// is unchanged and `touched` not written.
VRL_API std::int32_t VRL_MaskWithWorld(const DY_Shape* shape, const VRL_MaskParams* params, GW_LayerDef* layer, M_LRect* touched);

/// Moves the outline of `shape` inwards by `distance` pixels, outwards when it is negative, and appends what is left to
/// `shapes`: one new shape for every piece, none when nothing is left. One unit of distance spans `pixel_aspect` (not 0)
/// pixels across and one down. Corners are joined round. The list keeps what it held. After a
/// failure it also has the pieces made so far, the last one as far as it got.
/// @throws int             3 after a report, for a pixel aspect that is 0 or no finite float; a host status
/// @throws CNUBError       as the engine fails, also for coordinates or a distance that are no numbers or too large
/// @throws QELException, std::bad_alloc
VRL_API void VRL_InsetShape(const DY_Shape& shape, bool quality, double distance, double pixel_aspect,
                            std::vector<boost::shared_ptr<DY_Shape>>& shapes);

/// The same with a choice of join.
VRL_API void VRL_InsetShapeJoin(const DY_Shape& shape, bool quality, double distance, double pixel_aspect, VRL_Join join,
                                std::vector<boost::shared_ptr<DY_Shape>>& shapes);

/// Traces `world`, an image of 8 bits a component, and appends to `shapes` one new closed shape for every outline and every
/// hole of its set pixels, in pixels of the image. Then all shapes of the list, those it held before too, are mapped by the
/// transform of `params` if there is one, and made to run clockwise on screen unless they are open. After a failure the
/// shapes appended so far stay.
/// @throws int             3 after a report, for a missing argument, an image of another depth, one wider or higher than
///                         32767 pixels or an unknown channel; 1 for an image without pixels; a failed host call's status
/// @throws std::bad_alloc
VRL_API void VRL_NewMasksFromWorld(const GW_World* world, const VRL_AutoTraceParams* params,
                                   std::vector<boost::shared_ptr<DY_Shape>>& shapes);
