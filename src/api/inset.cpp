#include "api/vrl.h"
#include "base/errors.h"
#include "geometry/collect_shapes.h"
#include "geometry/offset_path.h"

void VRL_InsetShape(const DY_Shape& shape, bool quality, double distance, double pixel_aspect,
                    std::vector<boost::shared_ptr<DY_Shape>>& shapes) {
    VRL_InsetShapeJoin(shape, quality, distance, pixel_aspect, kVRLJoinRound, shapes);
}

void VRL_InsetShapeJoin(const DY_Shape& shape, bool quality, double distance, double pixel_aspect, VRL_Join join,
                        std::vector<boost::shared_ptr<DY_Shape>>& shapes) {
    CGRXPath outline;
    ThrowIfFailed(VRLp_OffsetShapePath(shape, quality, -distance, pixel_aspect, join, outline));
    CollectDYShapeFunctor collector(shapes);
    HOB_PlayOutlines(outline, collector);
}
