#include "geometry/mask_path.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "base/errors.h"
#include "geometry/offset_path.h"
#include "geometry/shape_to_path.h"
#include "host/matrix.h"

namespace {

constexpr double kNoExpansion = 1e-12;  // pixels; closer to 0 than this counts as none

bool Moves(const M_Matrix3* transform) { return transform != nullptr && !transform->IsIdentityWithinEpsilon(0.0); }
CGRXPath PlainPath(const DY_Shape& shape, const M_Matrix3* transform);
VRLp_PathBounds BoundsOf(const CGRXPath& path);

}  // namespace

void VRLp_MakeMaskPath(const DY_Shape& shape, bool quality, double expansion, double pixel_aspect, const M_Matrix3* transform,
                       CGRXPath& path, VRLp_PathBounds& bounds) {
    bounds = {0, 0, 0, 0};
    if (expansion >= kNoExpansion || expansion <= -kNoExpansion) {
        ThrowIfFailed(VRLp_OffsetShapePath(shape, quality, expansion, pixel_aspect, kVRLJoinRound, path));
        if (Moves(transform)) path = path.Transformed(VRLp_EngineMatrix(*transform));
    } else {
        path = PlainPath(shape, transform);
    }
    bounds = BoundsOf(path);
}

namespace {

CGRXPath PlainPath(const DY_Shape& shape, const M_Matrix3* transform) {
    if (!Moves(transform)) return VRLp_PathOfShape(shape);
    const auto moved = std::make_unique<DY_Shape>(shape);
    moved->Transform(*transform);
    const WEX_Item* first = nullptr;  // asked for only to learn that the list can be read
    ThrowIfFailed(WEX_GetConstAddress(std::as_const(*moved).GetPoints(), 0, &first));
    return VRLp_PathOfShape(*moved);
}

VRLp_PathBounds BoundsOf(const CGRXPath& path) {
    const GRXPathData data = path.Data();
    if (data.points.empty()) return {0, 0, 0, 0};
    const auto [left, right] = std::ranges::minmax(data.points, {}, &M_Vector2T<float>::x);
    const auto [top, bottom] = std::ranges::minmax(data.points, {}, &M_Vector2T<float>::y);
    return {left.x, top.y, right.x, bottom.y};
}

}  // namespace
