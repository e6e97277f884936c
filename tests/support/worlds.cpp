#include "tests/support/worlds.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::int32_t kPixelBytes = 4;
constexpr std::uint8_t kPaddingByte = 0xA5;

std::uint8_t* PixelOf(const GW_World& world, std::int32_t x, std::int32_t y) {
    return static_cast<std::uint8_t*>(world.data) + std::int64_t{y} * world.row_bytes + std::int64_t{x} * kPixelBytes;
}

void SetPixel(GW_World& world, std::int32_t x, std::int32_t y, Argb pixel) {
    std::memcpy(PixelOf(world, x, y), &pixel, sizeof pixel);
}

Argb GetPixel(const GW_World& world, std::int32_t x, std::int32_t y) {
    Argb pixel;
    std::memcpy(&pixel, PixelOf(world, x, y), sizeof pixel);
    return pixel;
}

}  // namespace

std::unique_ptr<GW_World> WorldOf(std::int32_t width, std::int32_t height, const std::vector<Argb>& pixels) {
    std::unique_ptr<GW_World> world(GW_World::New(width, height, 8, 0));
    for (std::int32_t i = 0; i < width * height; ++i) SetPixel(*world, i % width, i / width, pixels[static_cast<std::size_t>(i)]);
    return world;
}

std::unique_ptr<GW_World> Drawing(const std::string& rows) {
    std::vector<Argb> pixels;
    for (const char c : rows) {
        if (c != ' ') pixels.push_back(c == '#' ? Argb{255, 255, 255, 255} : Argb{255, 0, 0, 0});
    }
    const auto height = static_cast<std::int32_t>(std::ranges::count(rows, ' ')) + 1;
    return WorldOf(static_cast<std::int32_t>(pixels.size()) / height, height, pixels);
}

std::string SetPixels(const GW_World& world) {
    std::string text;
    for (std::int32_t y = 0; y < world.height; ++y) {
        for (std::int32_t x = 0; x < world.width; ++x) {
            const auto [a, r, g, b] = GetPixel(world, x, y);
            text.push_back(r != g || g != b || (r != 0 && r != 255) ? '?' : r == 255 ? '#' : '-');
        }
    }
    return text;
}

PaddedWorld::PaddedWorld(std::int32_t w, std::int32_t h, std::int32_t padding, std::int32_t depth)
    : GW_World(w, h, w * kPixelBytes * depth / 8 + padding, nullptr),
      bytes(static_cast<std::size_t>(row_bytes * h - (h > 0 ? padding : 0)), kPaddingByte),
      depth_(depth),
      padding_(padding) {
    data = bytes.data();
    for (std::int32_t y = 0; y < h; ++y) std::fill_n(PixelOf(*this, 0, y), row_bytes - padding, std::uint8_t{0});
}

void PaddedWorld::Set(std::int32_t x, std::int32_t y, Argb pixel) { SetPixel(*this, x, y, pixel); }

Argb PaddedWorld::Get(std::int32_t x, std::int32_t y) const { return GetPixel(*this, x, y); }

bool PaddedWorld::PaddingUntouched() const {
    for (std::int32_t y = 0; y + 1 < height; ++y) {
        const std::uint8_t* end = PixelOf(*this, 0, y + 1) - padding_;
        if (!std::all_of(end, end + padding_, [](std::uint8_t b) { return b == kPaddingByte; })) return false;
    }
    return true;
}
