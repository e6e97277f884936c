#include "fuzz/library.h"

#include <cmath>

#include "api/vrl.h"
#include "refhost/engine/binding.h"
#include "refhost/refhost.h"
#include "refhost/services/memory.h"
#include "refhost/services/reports.h"
#include "refhost/shape/feather_points.h"
#include "tests/support/shapes.h"

namespace fuzz {
namespace {

struct BoundLibrary {
    BoundLibrary() {
        refhost::Initialize();
        refhost::SetReportSink([](const refhost::Report&) { return 0; });
        VRL_Birth();
    }
    ~BoundLibrary() { VRL_Death(); }
};

int ItemCount(ByteReader& in, bool open) {
    constexpr int kMostVertices = 10;
    const int whole = 3 * in.Between(in.IsHostile() ? 0 : 1, kMostVertices);
    if (in.IsHostile() && in.Between(0, 15) == 0) return in.Between(0, whole);
    return open && in.Flag() ? whole - 2 : whole;
}

std::vector<refhost::FeatherPoint> ReadFeather(ByteReader& in, int segments) {
    constexpr int kMostPoints = 6;
    constexpr double kLargestRadius = 16;
    std::vector<refhost::FeatherPoint> points;
    for (int count = in.Between(0, kMostPoints); count > 0; --count) {
        const double position = in.Number(0, segments);
        points.push_back({position, static_cast<float>(in.Number(-kLargestRadius, kLargestRadius))});
    }
    return points;
}

}  // namespace

Session::Session() {
    static const BoundLibrary bound;
    objects_ = refhost::LiveEngineObjects();
}

Session::~Session() {
    refhost::TakeReports();
    Require(refhost::LiveEngineObjects() == objects_, "no engine object is left");
    Require(refhost::AccountedBytes() == 0, "all memory is given back");
    Require(refhost::QuietErrorDepth() == 0, "errors are shown again");
}

std::unique_ptr<DY_Shape> ReadShape(ByteReader& in) {
    const std::uint8_t kind = in.Byte();
    const bool open = (kind & 1) != 0, straight = (kind & 2) != 0, feathered = (kind & 12) == 12;
    auto shape = std::make_unique<DY_Shape>(in.IsHostile() && (kind & 0xF0) == 0xF0 ? in.Byte() : kShapeTypeBezier, nullptr);
    if (open) shape->flags |= kShapeFlagOpen;
    const int count = ItemCount(in, open);
    WEX_Item item = {};
    for (int i = 0; i < count; ++i) {
        if (!straight || (i + 1) % 3 == 1) item = {in.Float(), in.Float()};
        WEX_Insert(&item, -1, shape->GetPoints());
    }
    if (feathered) refhost::SetFeatherPoints(*shape, ReadFeather(in, count / 3));
    return shape;
}

std::optional<M_Matrix3> ReadTransform(ByteReader& in) {
    if (!in.Flag()) return std::nullopt;
    M_Matrix3 matrix = {
        {{in.Number(-2, 2), in.Number(-2, 2), 0}, {in.Number(-2, 2), in.Number(-2, 2), 0}, {in.Number(), in.Number(), 1}}};
    if (in.IsHostile() && in.Flag()) matrix.m[in.Byte() % 3][2] = in.Number();
    return matrix;
}

void RequireOutline(const DY_Shape& shape, bool finite) {
    const std::vector<WEX_Item> items = ItemsOf(shape);
    Require(!shape.IsOpen() && shape.type == kShapeTypeBezier && !items.empty() && items.size() % 3 == 0,
            "a new shape is closed");
    for (const WEX_Item item : items)
        Require(!finite || (std::isfinite(item.x) && std::isfinite(item.y)), "a new shape's points are finite");
}

}  // namespace fuzz
