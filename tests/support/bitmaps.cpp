#include "tests/support/bitmaps.h"

#include <algorithm>
#include <utility>

#include "tests/support/worlds.h"

namespace support {
namespace {

// Pixels that touch (x, y) by a side, or by a corner where they are joined with it.
std::vector<std::pair<std::int32_t, std::int32_t>> Neighbours(const RPPixelMap& pixels, std::int32_t x, std::int32_t y) {
    std::vector<std::pair<std::int32_t, std::int32_t>> result = {{x + 1, y}, {x, y - 1}, {x - 1, y}, {x, y + 1}};
    if (pixels.Join(x + 1, y) == kJoinUpRight) result.emplace_back(x + 1, y - 1);
    if (pixels.Join(x, y) == kJoinUpLeft) result.emplace_back(x - 1, y - 1);
    if (pixels.Join(x, y + 1) == kJoinUpRight) result.emplace_back(x - 1, y + 1);
    if (pixels.Join(x + 1, y + 1) == kJoinUpLeft) result.emplace_back(x + 1, y + 1);
    return result;
}

bool Chance(std::mt19937& random, double probability) { return std::bernoulli_distribution(probability)(random); }

std::int32_t Between(std::mt19937& random, std::int32_t low, std::int32_t high) {
    return std::uniform_int_distribution<std::int32_t>(low, high)(random);
}

std::uint8_t AnyColour(std::mt19937& random, int colours) { return static_cast<std::uint8_t>(Between(random, 0, colours - 1)); }

RPPixelMap Plain(std::int32_t width, std::int32_t height) {
    RPPixelMap pixels(width, height);
    for (std::int32_t y = 0; y < height; ++y) std::fill_n(pixels.Row(y), width, std::uint8_t{0});
    return pixels;
}

}  // namespace

RPPixelMap MapOfRows(const std::vector<std::string>& rows) {
    RPPixelMap pixels(static_cast<std::int32_t>(rows[0].size()), static_cast<std::int32_t>(rows.size()));
    for (std::int32_t y = 0; y < pixels.Height(); ++y) {
        const std::string& row = rows[static_cast<std::size_t>(y)];
        std::transform(row.begin(), row.end(), pixels.Row(y), [](char c) {
            return static_cast<std::uint8_t>(c == '.' ? 0 : c == '#' ? 1 : c - '0');
        });
    }
    return pixels;
}

RPPixelMap Noise(std::mt19937& random, std::int32_t width, std::int32_t height, int colours, double density) {
    RPPixelMap pixels = Plain(width, height);
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            if (Chance(random, density)) pixels.Row(y)[x] = static_cast<std::uint8_t>(Between(random, 1, colours - 1));
        }
    }
    return pixels;
}

RPPixelMap Blobs(std::mt19937& random, std::int32_t width, std::int32_t height, int colours) {
    RPPixelMap pixels = Plain(width, height);
    for (int disc = 0; disc < 8; ++disc) {
        const std::int32_t cx = Between(random, 0, width), cy = Between(random, 0, height);
        const std::int32_t radius = Between(random, 1, 1 + std::max(width, height) / 4);
        const std::uint8_t colour = AnyColour(random, colours);
        for (std::int32_t y = 0; y < height; ++y) {
            for (std::int32_t x = 0; x < width; ++x) {
                if ((x - cx) * (x - cx) + (y - cy) * (y - cy) <= radius * radius) pixels.Row(y)[x] = colour;
            }
        }
    }
    return pixels;
}

RPPixelMap NestedRings(std::mt19937& random, std::int32_t width, std::int32_t height, int colours) {
    RPPixelMap pixels = Plain(width, height);
    std::int32_t left = 0, top = 0, right = width, bottom = height;
    while (left < right && top < bottom) {
        const std::uint8_t colour = AnyColour(random, colours);
        for (std::int32_t y = top; y < bottom; ++y) std::fill_n(pixels.Row(y) + left, right - left, colour);
        left += Between(random, 0, 2), top += Between(random, 0, 2), right -= Between(random, 0, 2),
            bottom -= Between(random, 1, 2);
    }
    for (std::int32_t changed = width * height / 16; changed > 0; --changed) {
        pixels.Row(Between(random, 0, height - 1))[Between(random, 0, width - 1)] = AnyColour(random, colours);
    }
    return pixels;
}

RPPixelMap AnyBitmap(std::mt19937& random, std::int32_t largest) {
    const std::int32_t width = Between(random, 1, largest), height = Between(random, 1, largest);
    const int colours = Between(random, 2, 4);
    switch (Between(random, 0, 2)) {
        case 0:
            return Noise(random, width, height, colours, 0.15 * Between(random, 1, 6));
        case 1:
            return Blobs(random, width, height, colours);
        default:
            return NestedRings(random, width, height, colours);
    }
}

bool CanJoin(const RPPixelMap& pixels, std::int32_t x, std::int32_t y, RPJoin join) {
    const auto up_left = pixels.Row(y - 1)[x - 1], up_right = pixels.Row(y - 1)[x];
    const auto down_left = pixels.Row(y)[x - 1], down_right = pixels.Row(y)[x];
    if (up_left == up_right || up_right == down_right || down_right == down_left || down_left == up_left) return false;
    return (join == kJoinUpRight && up_right == down_left) || (join == kJoinUpLeft && up_left == down_right);
}

void JoinAtRandom(RPPixelMap& pixels, std::mt19937& random) {
    for (std::int32_t y = 1; y < pixels.Height(); ++y) {
        for (std::int32_t x = 1; x < pixels.Width(); ++x) {
            const RPJoin join = Chance(random, 0.5) ? kJoinUpRight : kJoinUpLeft;
            if (CanJoin(pixels, x, y, join) && Chance(random, 0.7)) pixels.SetJoin(x, y, join);
        }
    }
}

std::vector<std::int32_t> Components(const RPPixelMap& pixels) {
    const auto place = [&](std::int32_t x, std::int32_t y) { return static_cast<std::size_t>(y * pixels.Width() + x); };
    std::vector<std::int32_t> numbers(place(0, pixels.Height()), kNone);
    std::int32_t next = 0;
    for (std::int32_t y = 0; y < pixels.Height(); ++y) {
        for (std::int32_t x = 0; x < pixels.Width(); ++x) {
            if (numbers[place(x, y)] != kNone) continue;
            std::vector<std::pair<std::int32_t, std::int32_t>> open = {{x, y}};
            numbers[place(x, y)] = next;
            while (!open.empty()) {
                const auto [px, py] = open.back();
                open.pop_back();
                for (const auto& [nx, ny] : Neighbours(pixels, px, py)) {
                    if (pixels.Row(ny)[nx] != pixels.Row(y)[x] || numbers[place(nx, ny)] != kNone) continue;
                    numbers[place(nx, ny)] = next;
                    open.emplace_back(nx, ny);
                }
            }
            ++next;
        }
    }
    return numbers;
}

std::unique_ptr<GW_World> WorldOf(const RPPixelMap& pixels, const std::vector<Rgb>& palette) {
    std::vector<Argb> colours;
    for (std::int32_t y = 0; y < pixels.Height(); ++y) {
        for (std::int32_t x = 0; x < pixels.Width(); ++x) {
            const auto [r, g, b] = palette[pixels.Row(y)[x]];
            colours.push_back({255, r, g, b});
        }
    }
    return ::WorldOf(pixels.Width(), pixels.Height(), colours);
}

RPTrace TraceOf(const RPPixelMap& pixels, const std::vector<Rgb>& palette) {
    const auto world = WorldOf(pixels, palette);
    auto raster = ts::make_auto<RPRaster>(*world);
    return RPTrace(raster, 0, false);
}

RPTrace AnyTrace() { return TraceOf(MapOfRows({"."}), {Rgb{0, 0, 0}}); }

}  // namespace support
