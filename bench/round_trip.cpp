// vrl_round_trip: traces pictures that installed packages bring, renders the shapes again and compares. A pixel may differ from
// the bitmap only where its centre lies within the tolerance and 0.75 pixels of an outline of the bitmap. Prints a line a
// picture and tolerance; the exit status is 1 when pixels differ elsewhere.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "api/vrl.h"
#include "base/narrow.h"
#include "bench/bitmaps.h"
#include "refhost/refhost.h"
#include "tool/outline_measure.h"
#include "tool/png_reader.h"
#include "tool/work_progress.h"
#include "trace/preprocess.h"

namespace {

constexpr double kSlack = 0.75;  // pixels beyond the tolerance: half a pixel's diagonal

struct Picture {
    const char* file;  // null: the page of text
    VRL_TraceChannel channel;
    float threshold;  // per cent
};

#define ICON "/usr/share/icons/Adwaita/512x512/"
#define DRAWING "/usr/share/tuxpaint/starters/"
constexpr Picture kPictures[] = {
    {ICON "devices/camera-web.png", kVRLTraceLuminance, 45},
    {ICON "devices/input-gaming.png", kVRLTraceLuminance, 45},
    {ICON "devices/audio-headphones.png", kVRLTraceAlpha, 50},
    {ICON "devices/media-optical.png", kVRLTraceValue, 80},
    {ICON "mimetypes/x-office-drawing.png", kVRLTraceBlue, 50},
    {ICON "mimetypes/image-x-generic.png", kVRLTraceRed, 40},
    {ICON "places/folder-music.png", kVRLTraceGreen, 60},
    {DRAWING "reef-back.png", kVRLTraceGreen, 50},          // a painted gradient
    {DRAWING "frame_flowers.png", kVRLTraceLuminance, 50},  // photographs
    {DRAWING "frame_gold.png", kVRLTraceLuminance, 55},
    {DRAWING "frog.png", kVRLTraceAlpha, 50},
    {DRAWING "worldmap.png", kVRLTraceAlpha, 50},
    {"/usr/share/icons/Tango/32x32/apps/internet-web-browser.png", kVRLTraceLuminance, 50},
    {nullptr, kVRLTraceLuminance, 50},
};

std::unique_ptr<GW_World> Load(const Picture& picture) {
    if (picture.file == nullptr) return WorldOf(TextPage());
    vrltool::WorkProgress progress(1);
    return vrltool::ReadPng(picture.file, progress).world;
}

VRL_AutoTraceParams ParamsFor(const Picture& picture, float tolerance) {
    VRL_AutoTraceParams params;
    params.channel = picture.channel;
    params.threshold = picture.threshold;
    params.tolerance = tolerance;
    return params;
}

/// One value a pixel.
struct Pixels {
    Pixels(std::int32_t w, std::int32_t h)
        : width(w), height(h), values(static_cast<std::size_t>(w) * static_cast<std::size_t>(h)) {}
    std::uint8_t& At(std::int32_t x, std::int32_t y) {
        return values[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
    }
    std::uint8_t At(std::int32_t x, std::int32_t y) const { return const_cast<Pixels&>(*this).At(x, y); }
    bool Contains(std::int32_t x, std::int32_t y) const { return 0 <= x && x < width && 0 <= y && y < height; }

    std::int32_t width, height;
    std::vector<std::uint8_t> values;
};

/// 255 for set pixels, 0 for clear ones.
Pixels BitmapOf(const GW_World& world, const VRL_AutoTraceParams& params) {
    VRLp_TraceContext context = VRLp_FillContext(params, world);
    context.bitmap.reset(GW_World::New(world.width, world.height, 8, 0));
    VRLp_Preprocess(context);
    Pixels bitmap(world.width, world.height);
    for (std::int32_t y = 0; y < world.height; ++y) {
        const auto* row = static_cast<const std::uint8_t*>(context.bitmap->data) + std::int64_t{y} * context.bitmap->row_bytes;
        for (std::int32_t x = 0; x < world.width; ++x) bitmap.At(x, y) = row[4 * x + 1];
    }
    return bitmap;
}

/// Takes the difference of `pixels` and the coverage of `shape`, rendered in a buffer no larger than the shape.
void Combine(const DY_Shape& shape, Pixels& pixels) {
    const M_FloatRect bounds = vrltool::TightBounds(vrltool::OutlineOf(shape));
    const std::int32_t left = FloorToInt(bounds.left), top = FloorToInt(bounds.top);
    GW_UnoBuffer buffer(CeilToInt(bounds.right) - left + 1, CeilToInt(bounds.bottom) - top + 1, 8);
    const VRL_MaskParams params = {.pixel_aspect = 1, .opacity = 65536, .quality = 1};
    const M_Matrix3 move = {{{1, 0, 0}, {0, 1, 0}, {static_cast<double>(-left), static_cast<double>(-top), 1}}};
    if (VRL_MaskWithShape(&shape, &params, &move, &buffer, nullptr) != 0) std::abort();
    for (std::int32_t y = 0; y < buffer.height; ++y) {
        const GW_Pixel8* row = buffer.Row<GW_Pixel8>(y);
        for (std::int32_t x = 0; x < buffer.width; ++x) {
            if (!pixels.Contains(left + x, top + y)) continue;
            std::uint8_t& pixel = pixels.At(left + x, top + y);
            pixel = static_cast<std::uint8_t>(std::abs(pixel - row[x]));
        }
    }
}

/// Distance from the centre of pixel (x, y) to the nearest pixel of the other colour, or of the outside, up to `reach`.
double DistanceToOutline(const Pixels& bitmap, std::int32_t x, std::int32_t y, std::int32_t reach) {
    double nearest = reach + 1;
    for (std::int32_t v = y - reach; v <= y + reach; ++v) {
        for (std::int32_t u = x - reach; u <= x + reach; ++u) {
            if (bitmap.Contains(u, v) && bitmap.At(u, v) == bitmap.At(x, y)) continue;
            nearest = std::min(nearest, std::hypot(std::max(std::abs(u - x) - 0.5, 0.0), std::max(std::abs(v - y) - 0.5, 0.0)));
        }
    }
    return nearest;
}

/// False when a pixel differs where none may.
bool Check(const Picture& picture, const GW_World& world, float tolerance) {
    const VRL_AutoTraceParams params = ParamsFor(picture, tolerance);
    const Pixels bitmap = BitmapOf(world, params);
    std::vector<boost::shared_ptr<DY_Shape>> shapes;
    VRL_NewMasksFromWorld(&world, &params, shapes);
    Pixels rendered(world.width, world.height);
    std::size_t vertices = 0;
    for (const auto& shape : shapes) {
        Combine(*shape, rendered);
        vertices += static_cast<std::size_t>((*shape->GetPoints())->count / 3);
    }

    constexpr std::uint8_t kHalf = 128;
    const double limit = static_cast<double>(tolerance) + kSlack;
    std::size_t differing = 0, far = 0;
    for (std::int32_t y = 0; y < world.height; ++y) {
        for (std::int32_t x = 0; x < world.width; ++x) {
            if ((bitmap.At(x, y) >= kHalf) == (rendered.At(x, y) >= kHalf)) continue;
            ++differing;
            if (DistanceToOutline(bitmap, x, y, CeilToInt(limit) + 1) > limit) ++far;
        }
    }
    const std::string file = picture.file == nullptr ? "a page of text" : picture.file;
    std::printf("%-32s %5d x %-5d tolerance %.1f %6zu shapes %7zu vertices %7zu pixels differ, %zu too far\n",
                file.substr(file.rfind('/') + 1).c_str(), world.width, world.height, static_cast<double>(tolerance),
                shapes.size(), vertices, differing, far);
    return far == 0;
}

}  // namespace

int main() {
    refhost::Initialize();
    VRL_Birth();
    bool good = true;
    for (const Picture& picture : kPictures) {
        const std::unique_ptr<GW_World> world = Load(picture);
        for (const float tolerance : {0.5F, 1.0F, 2.0F}) good = Check(picture, *world, tolerance) && good;
    }
    VRL_Death();
    return good ? 0 : 1;
}
