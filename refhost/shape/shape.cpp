#include "host/shape.h"

#include <cmath>
#include <memory>

#include "refhost/services/faults.h"
#include "refhost/services/status.h"
#include "refhost/shape/shape_state.h"

DY_Shape::DY_Shape(unsigned char shape_type, const M_FloatShortRect*) : type(shape_type), state(new DY_ShapeState) {}

DY_Shape::DY_Shape(const DY_Shape& other) : type(other.type), flags(other.flags), state(new DY_ShapeState(*other.state)) {}

DY_Shape::~DY_Shape() { delete state; }

DY_Shape* DY_Shape::Clone() const { return new DY_Shape(*this); }

WEX_Head** DY_Shape::GetPoints() { return &state->head; }

const WEX_Head* const* DY_Shape::GetPoints() const { return &state->head; }

void DY_Shape::Transform(const M_Matrix3& matrix) {
    const auto& m = matrix.m;
    for (WEX_Item& point : state->points.items) {
        const auto x = static_cast<double>(point.x);
        const auto y = static_cast<double>(point.y);
        point = {static_cast<float>(x * m[0][0] + y * m[1][0] + m[2][0]),
                 static_cast<float>(x * m[0][1] + y * m[1][1] + m[2][1])};
    }
    const auto scale = static_cast<float>(std::sqrt(std::abs(m[0][0] * m[1][1] - m[0][1] * m[1][0])));
    for (refhost::FeatherPoint& point : state->feather) point.radius *= scale;
}

std::int32_t DY_Shape::GetFeatherPtCount(int) const { return static_cast<std::int32_t>(state->feather.size()); }

int DY_ShapeGetBezPoints(const DY_Shape* shape, int index, M_Vector2T<float>* anchor, M_Vector2T<float>* arriving,
                         M_Vector2T<float>* leaving) {
    using refhost::HostCall;
    if (const int status = refhost::InjectedStatus(HostCall::kShapeGetBezPoints)) return status;
    const auto& items = shape->state->points.items;
    const auto count = static_cast<int>(items.size());
    if (index < 0 || index >= count || index % 3 != 0) return refhost::kStatusBadIndex;
    const auto at = [&](int i) { return items[static_cast<std::size_t>(i)]; };
    const bool has_closing_segment = count % 3 == 0;
    *anchor = at(index);
    *leaving = index + 1 < count ? at(index + 1) : *anchor;
    *arriving = index > 0 ? at(index - 1) : has_closing_segment ? at(count - 1) : *anchor;
    return 0;
}
