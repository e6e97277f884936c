#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "host/world.h"

// Bitmaps that the benchmarks of tracing and fitting share. They are made when first asked for, the same every time.

struct Bitmap {
    int width, height;
    std::vector<std::uint8_t> set;  // row by row, 1 for a set pixel
};

/// Smooth noise of all scales down to one pixel, cut at its mean: coasts, islands and grain as in a thresholded photograph.
const Bitmap& PhotoLike(int width, int height);
/// Soft discs that flow into each other.
const Bitmap& SoftMatte(int width, int height);
/// A page of 11-point text at 300 dots an inch, A4. Empty when the font is not installed.
const Bitmap& TextPage();
/// Every second pixel on average, each by itself.
const Bitmap& EvenNoise(int size);
const Bitmap& Checkerboard(int size);
/// Six icons of 512 pixels a side, set where they are light. Empty when the icon theme is not installed.
const Bitmap& IconSheet();

/// The bitmap as a picture, white where it is set, black elsewhere.
std::unique_ptr<GW_World> WorldOf(const Bitmap& bitmap);
