#include "trace/preprocess.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>

#include "base/errors.h"
#include "fit/lanes.h"
#include "host/services.h"

namespace {

constexpr std::int32_t kPixelBytes = 4;
constexpr int kReportCode = 8;

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

/// A pixel as the machine reads its four bytes, so that a row is a plain loop over numbers.
using Packed = std::uint32_t;

constexpr int ShiftOf(int byte) { return 8 * (std::endian::native == std::endian::little ? byte : 3 - byte); }

constexpr Packed kAlphaBits = Packed{255} << ShiftOf(0);

Pixel Unpacked(Packed p) {
    const auto component = [p](int byte) { return static_cast<int>(p >> ShiftOf(byte) & 255U); };
    return {component(0), component(1), component(2), component(3)};
}

template <class ValueOf>
void ThresholdRow(const std::uint8_t* from, std::uint8_t* to, std::int32_t first, std::int32_t width, Packed flip,
                  float threshold, ValueOf value_of) {
    for (std::int64_t byte = std::int64_t{first} * kPixelBytes; byte < std::int64_t{width} * kPixelBytes; byte += kPixelBytes) {
        Packed source, pixel;
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
    const Packed flip = context.invert != 0 ? ~Packed{0} : 0;  // v ^ 255 is 255 - v
    for (std::int32_t y = 0; y < source.height; ++y) {
        ThresholdRow(RowOf(source, y), RowOf(bitmap, y), 0, source.width, flip, context.threshold, value_of);
    }
}

// Four pixels side by side, as numbers and as words of two components each.
using Numbers = std::uint32_t __attribute__((vector_size(sizeof(Lanes))));
using Words = std::uint16_t __attribute__((vector_size(sizeof(Lanes))));

/// The luminances of four pixels. All products and sums fit into words.
Lanes Luminances(LaneFlags pixels) {
    constexpr bool kLittle = std::endian::native == std::endian::little;
    constexpr Words kAlphaGreen = {0, 151, 0, 151, 0, 151, 0, 151}, kRedBlue = {77, 28, 77, 28, 77, 28, 77, 28};
    const auto words = std::bit_cast<Words>(pixels);
    const Words lower = words & 255, upper = words >> 8;
    const auto parts = std::bit_cast<Numbers>((kLittle ? lower : upper) * kAlphaGreen + (kLittle ? upper : lower) * kRedBlue);
    const Numbers sums_on_top = parts + (parts << 16);
    return __builtin_convertvector(std::bit_cast<LaneFlags>(sums_on_top >> 24), Lanes);
}

/// What ThresholdPixels does with Luminance, in a third of the time.
void ThresholdLuminance(const GW_World& source, const VRLp_TraceContext& context, GW_World& bitmap) {
    const LaneFlags alpha = LaneFlags{} + static_cast<std::int32_t>(kAlphaBits);
    const Packed flip = context.invert != 0 ? ~Packed{0} : 0;
    const LaneFlags flips = LaneFlags{} + static_cast<std::int32_t>(flip);
    const float threshold = context.threshold;
    const std::int32_t in_lanes = source.width / kLanes * kLanes;
    for (std::int32_t y = 0; y < source.height; ++y) {
        const std::uint8_t* from = RowOf(source, y);
        std::uint8_t* to = RowOf(bitmap, y);
        for (std::int32_t x = 0; x < in_lanes; x += kLanes) {
            LaneFlags pixels, set;
            std::memcpy(&pixels, from + std::int64_t{x} * kPixelBytes, sizeof pixels);
            std::memcpy(&set, to + std::int64_t{x} * kPixelBytes, sizeof set);
            const LaneFlags below = Luminances(pixels ^ flips) < threshold;
            set = (set & alpha) | (~below & ~alpha);
            std::memcpy(to + std::int64_t{x} * kPixelBytes, &set, sizeof set);
        }
        ThresholdRow(from, to, in_lanes, source.width, flip, threshold, Luminance);
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
            YQp_ReportErrString(0, kReportCode, "NewMaskFromWorld knows no such channel");
            throw kFailedCheck;
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
