#include "tests/support/shapes.h"

#include <cmath>
#include <numbers>

#include "base/errors.h"

std::unique_ptr<DY_Shape> ShapeOfItems(std::span<const WEX_Item> items, bool open) {
    auto shape = std::make_unique<DY_Shape>(kShapeTypeBezier, nullptr);
    if (open) shape->flags |= kShapeFlagOpen;
    for (const WEX_Item& item : items) ThrowIfFailed(WEX_Insert(&item, -1, shape->GetPoints()));
    return shape;
}

std::unique_ptr<DY_Shape> Polygon(std::initializer_list<WEX_Item> corners) {
    std::vector<WEX_Item> items = {*corners.begin()};
    for (const WEX_Item& corner : std::span(corners.begin() + 1, corners.end()))
        items.insert(items.end(), {items.back(), corner, corner});
    items.insert(items.end(), {items.back(), *corners.begin()});
    return ShapeOfItems(items);
}

std::unique_ptr<DY_Shape> Rectangle(float left, float top, float right, float bottom) {
    return Polygon({{left, top}, {right, top}, {right, bottom}, {left, bottom}});
}

std::unique_ptr<DY_Shape> Blob(int vertices, float center_x, float center_y, float radius) {
    const double step = 2 * std::numbers::pi / vertices;
    const auto point = [&](double angle, double scale) {
        const double wave = 0.8 + 0.2 * std::sin(7 * angle);
        return WEX_Item{center_x + static_cast<float>(scale * wave * std::cos(angle) * static_cast<double>(radius)),
                        center_y + static_cast<float>(scale * wave * std::sin(angle) * static_cast<double>(radius))};
    };
    std::vector<WEX_Item> items;
    for (int i = 0; i < vertices; ++i) {
        const double angle = i * step;
        items.insert(items.end(), {point(angle, 1), point(angle + step / 3, 1), point(angle + 2 * step / 3, 1)});
    }
    return ShapeOfItems(items);
}

std::vector<WEX_Item> ItemsOf(const DY_Shape& shape) {
    std::vector<WEX_Item> items(static_cast<std::size_t>((*shape.GetPoints())->count));
    for (int i = 0; WEX_Item & item : items) ThrowIfFailed(WEX_GetItem(shape.GetPoints(), i++, &item));
    return items;
}

double AreaOfItems(const DY_Shape& shape) {
    const std::vector<WEX_Item> items = ItemsOf(shape);
    double doubled = 0;
    for (std::size_t i = 0; i < items.size(); ++i) {
        const WEX_Item a = items[i], b = items[(i + 1) % items.size()];
        doubled += static_cast<double>(a.x) * static_cast<double>(b.y) - static_cast<double>(b.x) * static_cast<double>(a.y);
    }
    return doubled / 2;
}

VRL_MaskParams PlainParams() {
    VRL_MaskParams params = {};
    params.opacity = 65536;
    params.quality = 1;
    return params;
}
