#pragma once

#include <initializer_list>
#include <memory>
#include <span>
#include <vector>

#include "api/mask_params.h"
#include "host/image.h"
#include "host/shape.h"

// Shapes, parameters and buffers for tests of the library.

std::unique_ptr<DY_Shape> ShapeOfItems(std::span<const WEX_Item> items, bool open = false);
/// A closed outline of straight segments.
std::unique_ptr<DY_Shape> Polygon(std::initializer_list<WEX_Item> corners);
std::unique_ptr<DY_Shape> Rectangle(float left, float top, float right, float bottom);
/// A closed smooth outline of `vertices` vertices that wanders about a circle.
std::unique_ptr<DY_Shape> Blob(int vertices, float center_x, float center_y, float radius);
std::vector<WEX_Item> ItemsOf(const DY_Shape& shape);
/// The signed area of the polygon of all items, positive when they run clockwise on screen.
double AreaOfItems(const DY_Shape& shape);

/// Opaque, best quality, nothing else.
VRL_MaskParams PlainParams();

template <class P>
inline constexpr std::int32_t kDepthOf = 8 * static_cast<std::int32_t>(sizeof(P));

/// Every sample, row by row.
template <class P>
std::vector<P> SamplesOf(const GW_UnoBuffer& buffer) {
    return {buffer.Row<P>(0), buffer.Row<P>(buffer.height)};
}
