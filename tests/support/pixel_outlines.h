#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "fit/segment.h"

// Outlines on the pixel lattice, one unit step from point to point. Closed ones do not repeat their first point.

namespace support {

using LatticeLine = std::vector<CFPoint>;

struct Bits {
    Bits(int w, int h) : width(w), height(h), samples(static_cast<std::size_t>(w) * static_cast<std::size_t>(h)) {}
    bool At(int x, int y) const { return x >= 0 && y >= 0 && x < width && y < height && samples[Place(x, y)] != 0; }
    void Set(int x, int y) { samples[Place(x, y)] = 1; }

    int width, height;
    std::vector<std::uint8_t> samples;

 private:
    std::size_t Place(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
    }
};

/// The closed outlines of the set pixels, which lie on their right; pixels that only touch at a corner are apart.
std::vector<LatticeLine> OutlinesOf(const Bits& bits);
/// The lattice line that follows a curve over 0 to 1, sampled `samples` times; spurs are cut off.
LatticeLine Staircase(const std::function<CFPoint(double)>& curve, int samples, bool closed);
/// A closed staircase of about `points` points along a wavy circle, the set pixels on its right.
LatticeLine SmoothOutline(int points, std::uint32_t seed);
/// The outline of a solid square, from its corner at the origin on.
LatticeLine Square(int side);
/// The outlines of the pixels of a circle's disc whose centres are nearer to its centre than `radius`.
LatticeLine Disc(double radius);
/// A random walk away and back: full of corners.
LatticeLine NoisyOutline(int size, std::uint32_t seed);

CFSegment ChainOf(const LatticeLine& points, std::int32_t spacing, std::int32_t type);

}  // namespace support
