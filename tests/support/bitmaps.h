#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "host/world.h"
#include "trace/pixel_map.h"
#include "trace/trace.h"

// Small bitmaps for the tests of the tracer, as maps of colour numbers.

namespace support {

using Rgb = std::array<std::uint8_t, 3>;

/// One text a row, '.' for colour 0, '#' for colour 1 and a digit for any other.
RPPixelMap MapOfRows(const std::vector<std::string>& rows);

/// Every pixel of its own; colours 1 to `colours` - 1 cover `density` of all and 0 the rest.
RPPixelMap Noise(std::mt19937& random, std::int32_t width, std::int32_t height, int colours, double density);
/// Overlapping discs of random colours.
RPPixelMap Blobs(std::mt19937& random, std::int32_t width, std::int32_t height, int colours);
/// Rectangles inside rectangles, with some pixels changed.
RPPixelMap NestedRings(std::mt19937& random, std::int32_t width, std::int32_t height, int colours);
/// One of the kinds above, in a random size of 1 to `largest` a side.
RPPixelMap AnyBitmap(std::mt19937& random, std::int32_t largest);

/// True when the four pixels round corner (x, y) differ from each other side by side and the pair of `join` is of one colour.
bool CanJoin(const RPPixelMap& pixels, std::int32_t x, std::int32_t y, RPJoin join);
/// Joins a pair at about half of the corners where one can be joined.
void JoinAtRandom(RPPixelMap& pixels, std::mt19937& random);

/// A number for each pixel, row by row: pixels with one number hang together by their sides and by joins. Numbers run from
/// 0 in the order of the first pixels.
std::vector<std::int32_t> Components(const RPPixelMap& pixels);

/// The map as a picture in the colours `palette`, opaque.
std::unique_ptr<GW_World> WorldOf(const RPPixelMap& pixels, const std::vector<Rgb>& palette);
/// A trace of that picture. It resets the thread's colour table; colours are numbered anew in order of appearance.
RPTrace TraceOf(const RPPixelMap& pixels, const std::vector<Rgb>& palette);
/// A trace to be filled in, of a picture of one pixel.
RPTrace AnyTrace();

}  // namespace support
