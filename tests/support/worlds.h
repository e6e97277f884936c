#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/world.h"

// Pictures for tests of tracing.

struct Argb {
    std::uint8_t a, r, g, b;
    friend bool operator==(const Argb&, const Argb&) = default;
};

std::unique_ptr<GW_World> WorldOf(std::int32_t width, std::int32_t height, const std::vector<Argb>& pixels);

/// White where the rows, separated by blanks, have a #, black elsewhere; opaque.
std::unique_ptr<GW_World> Drawing(const std::string& rows);

/// A character a pixel, row by row: # for white ones, - for black ones, ? for any other. Alpha does not count.
std::string SetPixels(const GW_World& world);

/// A world, black and clear, with `padding` bytes after every row but the last.
class PaddedWorld final : public GW_World {
 public:
    PaddedWorld(std::int32_t w, std::int32_t h, std::int32_t padding, std::int32_t depth = 8);
    std::int32_t Depth() const override { return depth_; }

    void Set(std::int32_t x, std::int32_t y, Argb pixel);
    Argb Get(std::int32_t x, std::int32_t y) const;
    bool PaddingUntouched() const;

    std::vector<std::uint8_t> bytes;

 private:
    std::int32_t depth_, padding_;
};
