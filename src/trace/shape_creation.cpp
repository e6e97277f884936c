#include "trace/shape_creation.h"

#include "base/errors.h"
#include "geometry/shape_creator.h"
#include "trace/color_table.h"

namespace {

constexpr RPSample kClear = {0, 0, kModelThree, {0, 0, 0, 0}};

WEX_Item ItemOf(CFPoint point) { return {point.x, point.y}; }

void AppendPaths(const std::vector<RPPath>& paths, std::vector<boost::shared_ptr<DY_Shape>>& shapes) {
    for (const RPPath& path : paths) shapes.emplace_back(VRLp_MakeShape(path));
}

}  // namespace

void VRLp_CreateShapes(VRLp_ShapeGenerator& generator, std::vector<boost::shared_ptr<DY_Shape>>& shapes) {
    const RPColorTable& colors = RPColorTable::OfThread();
    const auto is_set = [&](const RPRegion& region) { return !IsSameColour(colors.Entry(region.colour).colour, kClear); };
    generator.Art().ForEachArt(is_set, [&](const RPOutlineArt& art) {
        AppendPaths(art.outer, shapes);
        AppendPaths(art.holes, shapes);
    });
    if (generator.LayerTransform() == nullptr) return;
    for (const auto& shape : shapes) shape->Transform(*generator.LayerTransform());
}

std::unique_ptr<DY_Shape> VRLp_MakeShape(const RPPath& path) {
    if (path.anchors.empty()) throw kBrokenInvariant;
    DY_ShapeCreator creator;
    creator.Begin();
    DY_Shape& shape = *creator.Shape();
    const auto append_segment = [&](const RPAnchor& from, const RPAnchor& to) {
        VRLp_AppendPoint(shape, ItemOf(from.out));
        VRLp_AppendPoint(shape, ItemOf(to.in));
        VRLp_AppendPoint(shape, ItemOf(to.position));
    };
    VRLp_AppendPoint(shape, ItemOf(path.anchors.front().position));
    for (std::size_t i = 1; i < path.anchors.size(); ++i) append_segment(path.anchors[i - 1], path.anchors[i]);
    append_segment(path.anchors.back(), path.anchors.front());
    VRLp_RemoveLastPoint(shape);  // the first vertex again
    VRLp_CloseShape(shape);
    return std::unique_ptr<DY_Shape>(shape.Clone());
}
