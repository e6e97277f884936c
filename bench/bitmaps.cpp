#include "bench/bitmaps.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include <png.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <utility>

#include "base/narrow.h"

namespace {

constexpr const char* kFont = "/usr/share/fonts/truetype/dejavu/DejaVuSerif.ttf";
constexpr int kDotsPerInch = 300;
constexpr int kPointSize = 11;
constexpr int kPageWidth = 2480, kPageHeight = 3508;
constexpr int kMargin = 250;
constexpr int kLineHeight = 60;

Bitmap Make(int width, int height, const std::function<bool(int, int)>& is_set) {
    Bitmap bitmap{width, height, {}};
    bitmap.set.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) bitmap.set.push_back(is_set(x, y) ? 1 : 0);
    }
    return bitmap;
}

using Size = std::pair<int, int>;

// Adds smooth noise with one random value every `step` pixels.
void AddOctave(std::vector<float>& field, int width, int height, int step, std::mt19937& random) {
    const int across = width / step + 2;
    std::vector<float> lattice(static_cast<std::size_t>(across) * static_cast<std::size_t>(height / step + 2));
    for (float& value : lattice) value = std::uniform_real_distribution<float>(-1.0F, 1.0F)(random);
    const auto smooth = [](float t) { return t * t * (3.0F - 2.0F * t); };
    const float strength = NarrowToFloat(std::pow(step, 0.8));  // as in pictures: the larger the scale, the stronger
    for (int y = 0; y < height; ++y) {
        const float v = smooth(static_cast<float>(y % step) / static_cast<float>(step));
        for (int x = 0; x < width; ++x) {
            const float u = smooth(static_cast<float>(x % step) / static_cast<float>(step));
            const float* at = &lattice[static_cast<std::size_t>(y / step * across + x / step)];
            const float upper = at[0] + (at[1] - at[0]) * u, lower = at[across] + (at[across + 1] - at[across]) * u;
            field[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)] +=
                strength * (upper + (lower - upper) * v);
        }
    }
}

Bitmap MakePhotoLike(int width, int height) {
    std::mt19937 random(1);
    std::vector<float> field(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int step = 512; step >= 1; step /= 2) AddOctave(field, width, height, step, random);
    Bitmap bitmap{width, height, {}};
    for (const float value : field) bitmap.set.push_back(value > 0.0F ? 1 : 0);
    return bitmap;
}

Bitmap MakeSoftMatte(int width, int height) {
    struct Blob {
        float x, y, radius;
    };
    std::mt19937 random(2);
    std::vector<Blob> blobs(24);
    for (Blob& blob : blobs) {
        const auto up_to = [&](int limit) {
            return std::uniform_real_distribution<float>(0.0F, static_cast<float>(limit))(random);
        };
        blob = {up_to(width), up_to(height), static_cast<float>(height) * 0.04F + up_to(height / 12)};
    }
    return Make(width, height, [&](int x, int y) {
        float sum = 0.0F;
        for (const Blob& blob : blobs) {
            const float dx = static_cast<float>(x) - blob.x, dy = static_cast<float>(y) - blob.y;
            const float distance = (dx * dx + dy * dy) / (blob.radius * blob.radius);
            sum += 1.0F / (1.0F + distance * distance);
        }
        return sum > 0.5F;
    });
}

void SetGlyph(Bitmap& page, const FT_GlyphSlotRec_& glyph, int x, int y) {
    const FT_Bitmap& bits = glyph.bitmap;
    for (unsigned row = 0; row < bits.rows; ++row) {
        for (unsigned column = 0; column < bits.width; ++column) {
            const unsigned byte = bits.buffer[row * static_cast<unsigned>(bits.pitch) + column / 8];
            if ((byte >> (7 - column % 8) & 1U) == 0) continue;
            const int to_x = x + glyph.bitmap_left + static_cast<int>(column),
                      to_y = y - glyph.bitmap_top + static_cast<int>(row);
            page.set[static_cast<std::size_t>(to_y) * static_cast<std::size_t>(page.width) + static_cast<std::size_t>(to_x)] = 1;
        }
    }
}

Bitmap MakeTextPage() {
    FT_Library library;
    FT_Face face;
    if (FT_Init_FreeType(&library) != 0 || FT_New_Face(library, kFont, 0, &face) != 0) return {};
    FT_Set_Char_Size(face, 0, kPointSize * 64, kDotsPerInch, kDotsPerInch);
    Bitmap page = Make(kPageWidth, kPageHeight, [](int, int) { return false; });
    std::mt19937 random(3);
    for (int y = kMargin; y < kPageHeight - kMargin; y += kLineHeight) {
        for (int x = kMargin; x < kPageWidth - kMargin;) {
            const bool space = random() % 6 == 0;
            const bool capital = random() % 20 == 0;
            const auto letter = static_cast<FT_ULong>((capital ? 'A' : 'a') + static_cast<int>(random() % 26));
            FT_Load_Char(face, space ? ' ' : letter, FT_LOAD_RENDER | FT_LOAD_TARGET_MONO);
            SetGlyph(page, *face->glyph, x, y);
            x += static_cast<int>(face->glyph->advance.x >> 6);
        }
    }
    FT_Done_Face(face);
    FT_Done_FreeType(library);
    return page;
}

constexpr const char* kIconFolder = "/usr/share/icons/Adwaita/512x512/devices/";
constexpr const char* kIcons[] = {"camera-web", "input-gaming", "audio-headphones", "printer", "scanner", "media-optical"};
constexpr int kIconSide = 512, kIconsAcross = 3;

bool CopyIcon(const char* name, int left, int top, Bitmap& sheet) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, (kIconFolder + std::string(name) + ".png").c_str()) == 0) return false;
    image.format = PNG_FORMAT_GA;  // on black
    std::vector<std::uint8_t> samples(PNG_IMAGE_SIZE(image));
    const bool read = png_image_finish_read(&image, nullptr, samples.data(), 0, nullptr) != 0;
    if (!read || image.width != kIconSide || image.height != kIconSide) return false;
    for (int i = 0; i < kIconSide * kIconSide; ++i) {
        const std::uint8_t* sample = samples.data() + 2 * i;
        const auto place = static_cast<std::size_t>((top + i / kIconSide) * sheet.width + left + i % kIconSide);
        sheet.set[place] = sample[0] >= 128 && sample[1] >= 128 ? 1 : 0;
    }
    return true;
}

Bitmap MakeIconSheet() {
    Bitmap sheet = Make(kIconsAcross * kIconSide, 2 * kIconSide, [](int, int) { return false; });
    int i = 0;
    for (const char* name : kIcons) {
        if (!CopyIcon(name, i % kIconsAcross * kIconSide, i / kIconsAcross * kIconSide, sheet)) return {};
        ++i;
    }
    return sheet;
}

}  // namespace

const Bitmap& PhotoLike(int width, int height) {
    static std::map<Size, Bitmap> made;
    const auto found = made.find({width, height});
    return found != made.end() ? found->second : made[{width, height}] = MakePhotoLike(width, height);
}

const Bitmap& SoftMatte(int width, int height) {
    static std::map<Size, Bitmap> made;
    const auto found = made.find({width, height});
    return found != made.end() ? found->second : made[{width, height}] = MakeSoftMatte(width, height);
}

const Bitmap& TextPage() {
    static const Bitmap page = MakeTextPage();
    return page;
}

const Bitmap& EvenNoise(int size) {
    static std::map<int, Bitmap> made;
    const auto found = made.find(size);
    if (found != made.end()) return found->second;
    std::mt19937 random(4);
    return made[size] = Make(size, size, [&](int, int) { return random() % 2 == 0; });
}

const Bitmap& Checkerboard(int size) {
    static std::map<int, Bitmap> made;
    const auto found = made.find(size);
    return found != made.end() ? found->second : made[size] = Make(size, size, [](int x, int y) { return (x + y) % 2 == 0; });
}

const Bitmap& IconSheet() {
    static const Bitmap sheet = MakeIconSheet();
    return sheet;
}

std::unique_ptr<GW_World> WorldOf(const Bitmap& bitmap) {
    std::unique_ptr<GW_World> world(GW_World::New(bitmap.width, bitmap.height, 8, 0));
    const std::uint8_t* set = bitmap.set.data();
    for (int y = 0; y < bitmap.height; ++y) {
        auto* pixel = static_cast<std::uint8_t*>(world->data) + std::ptrdiff_t{y} * world->row_bytes;
        for (int x = 0; x < bitmap.width; ++x, pixel += 4)
            std::fill_n(pixel + 1, 3, *set++ != 0 ? std::uint8_t{255} : std::uint8_t{0});
    }
    return world;
}
