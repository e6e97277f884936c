#include "trace/preprocess.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>

#include "base/errors.h"
#include "host/refuse.h"
#include "trace/pixel_rows.h"

namespace {

/// Components of 0 to 255.
struct Pixel {
    int a, r, g, b;
};

struct Range {
    int max, min;
    int Spread() const { return max - min; }
    int Sum() const { return max + min; }
};

Range RangeOf(Pixel p) { return {std::max({p.r, p.g, p.b}), std::min({p.r, p.g, p.b})}; }

int Luminance(Pixel p) { return (77 * p.r + 151 * p.g + 28 * p.b) >> 8; }

/// The hue angle with 360 degrees at 32767; -1 for greys.
int Hue(Pixel p) {
    const Range range = RangeOf(p);
    if (range.Spread() == 0) return -1;
    const double spread = range.Spread();
    double sextants;
    if (p.r == range.max) {
        sextants = (p.g - p.b) / spread;
    } else if (p.g == range.max) {
        sextants = 2.0 + (p.b - p.r) / spread;
    } else {
        sextants = 4.0 + (p.r - p.g) / spread;
    }
    double degrees = sextants * 60.0;
    if (degrees < 0.0) degrees += 360.0;
    return static_cast<int>(degrees * 32767.0) / 360;
}

int Lightness(Pixel p) { return RangeOf(p).Sum() * 128; }

int Saturation(Pixel p) {
    const Range range = RangeOf(p);
    if (range.Spread() == 0) return 0;
    return range.Spread() * 32767 / (range.Sum() <= 255 ? range.Sum() : 510 - range.Sum());
}

const std::uint8_t* RowOf(const GW_World& world, std::int32_t y) {
    return static_cast<const std::uint8_t*>(world.data) + std::int64_t{y} * world.row_bytes;
}

std::uint8_t* RowOf(GW_World& world, std::int32_t y) {
    return static_cast<std::uint8_t*>(world.data) + std::int64_t{y} * world.row_bytes;
}

constexpr int ShiftOf(int byte) { return 8 * (std::endian::native == std::endian::little ? byte : 3 - byte); }

Pixel Unpacked(RPPacked p) {
    const auto component = [p](int byte) { return static_cast<int>(p >> ShiftOf(byte) & 255U); };
    return {component(0), component(1), component(2), component(3)};
}

/// What inverts a pixel's components when the context asks for it: v ^ 255 is 255 - v.
RPPacked FlipOf(const VRLp_TraceContext& context) { return context.invert != 0 ? ~RPPacked{0} : 0; }

template <class ValueOf>
void ThresholdRow(const std::uint8_t* from, std::uint8_t* to, std::int32_t first, std::int32_t width, RPPacked flip,
                  float threshold, ValueOf value_of) {
    for (std::int64_t byte = std::int64_t{first} * kPixelBytes; byte < std::int64_t{width} * kPixelBytes; byte += kPixelBytes) {
        RPPacked source, pixel;
        std::memcpy(&source, from + byte, sizeof source);
        std::memcpy(&pixel, to + byte, sizeof pixel);
        const int value = value_of(Unpacked(source ^ flip));
        const bool set = !(static_cast<float>(value) < threshold);  // a threshold that is no number sets all
        pixel = (pixel & kAlphaBits) | (set ? ~kAlphaBits : 0);
        std::memcpy(to + byte, &pixel, sizeof pixel);
    }
}

template <class ValueOf>
void ThresholdPixels(const GW_World& source, const VRLp_TraceContext& context, GW_World& bitmap, ValueOf value_of) {
    const RPPacked flip = FlipOf(context);
    for (std::int32_t y = 0; y < source.height; ++y) {
        ThresholdRow(RowOf(source, y), RowOf(bitmap, y), 0, source.width, flip, context.threshold, value_of);
    }
}

/// What ThresholdPixels does with Luminance, several times as fast.
void ThresholdLuminance(const GW_World& source, const VRLp_TraceContext& context, GW_World& bitmap) {
    const auto threshold_row = PixelRows().back().threshold_luminance;
    const RPPacked flip = FlipOf(context);
    for (std::int32_t y = 0; y < source.height; ++y) {
        const std::uint8_t* from = RowOf(source, y);
        std::uint8_t* to = RowOf(bitmap, y);
        const std::int32_t done = threshold_row(from, to, source.width, flip, context.threshold);
        ThresholdRow(from, to, done, source.width, flip, context.threshold, Luminance);
    }
}

void ThresholdChannel(const GW_World& source, const VRLp_TraceContext& context, GW_World& bitmap) {
    const auto fill = [&](auto value_of) { ThresholdPixels(source, context, bitmap, value_of); };
    switch (context.channel) {
        case kVRLTraceLuminance:
            return ThresholdLuminance(source, context, bitmap);
        case kVRLTraceRed:
            return fill([](Pixel p) { return p.r; });
        case kVRLTraceGreen:
            return fill([](Pixel p) { return p.g; });
        case kVRLTraceBlue:
            return fill([](Pixel p) { return p.b; });
        case kVRLTraceAlpha:
            return fill([](Pixel p) { return p.a; });
        case kVRLTraceHue:
            return fill([](Pixel p) { return Hue(p); });
        case kVRLTraceLightness:
            return fill([](Pixel p) { return Lightness(p); });
        case kVRLTraceSaturation:
            return fill([](Pixel p) { return Saturation(p); });
        case kVRLTraceValue:
            return fill([](Pixel p) { return RangeOf(p).max; });
        default:
            VRLp_Refuse("NewMaskFromWorld knows no such channel");
    }
}

void ClearBeyond(std::int32_t width, std::int32_t height, GW_World& bitmap) {
    const auto clear = [&](std::int32_t y, std::int32_t from) {
        std::memset(RowOf(bitmap, y) + std::int64_t{from} * kPixelBytes, 0,
                    static_cast<std::size_t>(bitmap.width - from) * kPixelBytes);
    };
    for (std::int32_t y = 0; y < height && width < bitmap.width; ++y) clear(y, width);
    for (std::int32_t y = height; y < bitmap.height; ++y) clear(y, 0);
}

/// Two passes make a separable blur, the second one in place.
const GW_World& Blur(VRLp_TraceContext& context) {
    constexpr std::int32_t kDepth = 8, kFlags = 1;
    constexpr int kWhat = 111;  // the host's word for the components to blur
    const GW_World& source = *context.source;
    context.blurred.reset(GW_World::New(source.width, source.height, kDepth, kFlags));
    if (!context.blurred) throw std::bad_alloc();
    GW_World* blurred = context.blurred.get();
    ThrowIfFailed(GW_GaussianBlur1D(nullptr, &source, context.blur_radius, kWhat, 0, 0, 0, 0, 0, blurred));
    ThrowIfFailed(GW_GaussianBlur1D(nullptr, blurred, context.blur_radius, kWhat, 1, 0, 1, 0, 1, blurred));
    return *blurred;
}

}  // namespace

void VRLp_Preprocess(VRLp_TraceContext& context) {
    const bool blurs = context.blur_radius != 0.0F;  // exactly 0 asks for none
    const GW_World& source = blurs ? Blur(context) : *context.source;
    ThresholdChannel(source, context, *context.bitmap);
    ClearBeyond(source.width, source.height, *context.bitmap);
}
