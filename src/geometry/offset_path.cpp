#include "geometry/offset_path.h"

#include <cmath>

#include "base/errors.h"
#include "base/narrow.h"
#include "base/same_number.h"
#include "geometry/shape_to_path.h"
#include "host/engine_binding.h"
#include "host/matrix.h"
#include "host/nub_error.h"
#include "host/path_bridge.h"
#include "host/refuse.h"

namespace {

// How the engine is told to join corners; its codes are those of page description languages.
struct EngineJoin {
    std::uint32_t code;
    float miter_limit;
};
EngineJoin EngineJoinOf(VRL_Join join);

CGRXPath ScaledAcross(const CGRXPath& path, double scale);
CGRXPath OffsetByEngine(const GRXPathData& outline, double distance, VRL_Join join);

}  // namespace

std::int32_t VRLp_OffsetShapePath(const DY_Shape& shape, bool /*quality*/, double distance, double pixel_aspect, VRL_Join join,
                                  CGRXPath& path) {
    CGRXPath outline = VRLp_PathOfShape(shape);
    if (!IsSameNumber(1.0 / pixel_aspect, 1.0)) outline = ScaledAcross(outline, 1.0 / pixel_aspect);
    path = OffsetByEngine(outline.Data(), distance, join);
    if (!IsSameNumber(pixel_aspect, 1.0)) path = ScaledAcross(path, pixel_aspect);
    return 0;
}

namespace {

EngineJoin EngineJoinOf(VRL_Join join) {
    switch (join) {
        case kVRLJoinMiter:
            return {0, 4.0F};
        case kVRLJoinBevel:
            return {2, 1.0F};
        default:
            return {1, 1.0F};
    }
}

CGRXPath ScaledAcross(const CGRXPath& path, double scale) {
    const float engine_scale = NarrowToFloat(scale);
    if (!std::isfinite(engine_scale) || engine_scale == 0.0F) VRLp_Refuse("a pixel aspect ratio is out of range");  // exactly 0
    M_Matrix3 matrix;
    ThrowIfFailed(M_SetIdentityMatrix(&matrix));
    ThrowIfFailed(M_ScaleMatrix(scale, 1.0, 0.0, 0.0, &matrix));
    return path.Transformed(VRLp_EngineMatrix(matrix));
}

// The engine wants a progress object even from callers that have nothing to report.
class NullProgress {
 public:
    NullProgress() : release_(NUB_T_MT::ProgressRelease()), progress_(NUB_T_MT::NewNullProgress()()) {
        if (progress_ == nullptr) throw NUB_T_MT::CNUBError("couldn't construct CNUBProgress");
    }
    NullProgress(const NullProgress&) = delete;
    NullProgress& operator=(const NullProgress&) = delete;
    ~NullProgress() { release_(progress_); }

    NUBProgressObject* Get() const { return progress_; }

 private:
    NUBProgressReleaseProc release_;
    NUBProgressObject* progress_;
};

void CollectOffset(const GRXPathData& outline, double distance, VRL_Join join, HOB_PathCollector& collector) {
    const GRXOffsetPathProc get_offset_path = NUB_T_MT::GetOffsetPath();
    const EngineJoin engine_join = EngineJoinOf(join);
    const NullProgress progress;
    const NUBErrorObject* error = get_offset_path(
        &HOB_PathCollector::Callback, nullptr, &collector, CheckedCount(static_cast<std::int64_t>(outline.points.size())),
        outline.points.data(), outline.operators.data(), 0, NarrowToFloat(distance), 0, engine_join.code, engine_join.miter_limit,
        1, 0, 0, 1, 0.5F, 0, progress.Get(), -1.0F);
    NUB_T_MT::ThrowIfFailed(error);
}

CGRXPath OffsetByEngine(const GRXPathData& outline, double distance, VRL_Join join) {
    CPIVBezierPath record;
    HOB_PathCollector collector(1.0, record);
    CollectOffset(outline, distance, join, collector);
    collector.Flush();
    return CGRXPath::FromRecord(record);
}

}  // namespace
