// Masks of any shape, parameters and transform, into coverage buffers and into layers.

#include <cstring>

#include "api/vrl.h"
#include "fuzz/library.h"
#include "tests/support/worlds.h"

namespace fuzz {
namespace {

constexpr std::int32_t kStopCode = 23;
constexpr int kLargestSide = 48;

/// Callbacks that stop the work at one of their calls, or never.
struct Stopper {
    int calls_left;
    GW_ProgressInfo info = {this, [](void* self) { return static_cast<Stopper*>(self)->Poll(); },
                            [](void* self, std::int32_t, std::int32_t) { return static_cast<Stopper*>(self)->Poll(); }};

    std::int32_t Poll() { return --calls_left == 0 ? kStopCode : 0; }
};

/// The widest ones rarely: they make billions of samples.
std::int32_t ReadFeather(ByteReader& in) {
    constexpr std::int32_t kWide = 65536 * 256;
    const std::int32_t feather = in.Fixed(0, 12);
    return feather > kWide && in.Byte() != 0 ? feather % kWide : feather;
}

VRL_MaskParams ReadParams(ByteReader& in) {
    VRL_MaskParams params;
    const std::uint8_t options = in.Byte();
    if ((options & 1) != 0) params.feather_x = ReadFeather(in);
    if ((options & 2) != 0) params.feather_y = ReadFeather(in);
    if ((options & 4) != 0) params.expansion = in.Fixed(-12, 12);
    if ((options & 8) != 0) params.opacity = in.Fixed(0, 1);
    if ((options & 16) != 0) params.pixel_aspect = in.Number(0.25, 4);
    params.quality = (options & 32) != 0;
    params.variable_feather_option = (options & 64) != 0;
    params.invert = (options & 128) != 0;
    return params;
}

void RequireStatus(std::int32_t status, const ByteReader& in, const Stopper& stopper) {
    const bool stopped = stopper.calls_left <= 0 && status == kStopCode;
    const bool failed = in.IsHostile() && -4 <= status && status < 0;
    Require(status == 0 || stopped || failed, "the status is one of the host's");
}

template <class P>
void RequireMask(const GW_UnoBuffer& buffer, const VRL_MaskParams& params, const M_LRect& touched) {
    const bool sound_opacity = 0 <= params.opacity && params.opacity <= 65536;
    for (std::int32_t y = 0; y < buffer.height; ++y) {
        for (std::int32_t x = 0; x < buffer.width; ++x) {
            const std::uint32_t sample = buffer.Row<P>(y)[x];
            Require(!sound_opacity || sample <= SampleTraits<P>::kMax, "no sample is above the largest");
            const bool inside = touched.left <= x && x < touched.right && touched.top <= y && y < touched.bottom;
            Require(inside || sample == 0, "samples outside the touched rectangle are 0");
        }
    }
}

void RenderBuffer(const DY_Shape& shape, const VRL_MaskParams& params, const Stopper& stopper, ByteReader& in) {
    const std::optional<M_Matrix3> transform = ReadTransform(in);
    GW_UnoBuffer buffer{in.Between(0, kLargestSide), in.Between(0, kLargestSide), in.Flag() ? 16 : 8};
    M_LRect touched = {};
    const std::int32_t status = VRL_MaskWithShape(&shape, &params, transform ? &*transform : nullptr, &buffer, &touched);
    RequireStatus(status, in, stopper);
    if (status != 0 || shape.type != kShapeTypeBezier) return;
    Require(0 <= touched.left && touched.right <= buffer.width && 0 <= touched.top && touched.bottom <= buffer.height,
            "the touched rectangle is inside the buffer");
    // Under a transform the reach of a varying feather is a guess, which skewing and rotating can make too small.
    if (transform && shape.GetFeatherPtCount(0) != 0) touched = {0, 0, buffer.width, buffer.height};
    buffer.IsDeep() ? RequireMask<GW_Pixel16>(buffer, params, touched) : RequireMask<GW_Pixel8>(buffer, params, touched);
}

/// Whether any byte changed that is not of an alpha sample, or any byte at all when `unchanged` is asked for.
bool ChangedBeside(const PaddedWorld& world, const std::vector<std::uint8_t>& before, bool unchanged) {
    const std::int32_t sample_bytes = world.Depth() / 8, row = world.width * 4 * sample_bytes;
    for (std::int32_t i = 0; i < static_cast<std::int32_t>(before.size()); ++i) {
        const std::int32_t column = i % world.row_bytes;
        const bool alpha = column < row && column / sample_bytes % 4 == 0;
        const auto k = static_cast<std::size_t>(i);
        if ((unchanged || !alpha) && world.bytes[k] != before[k]) return true;
    }
    return false;
}

void RenderLayer(const DY_Shape& shape, const VRL_MaskParams& params, const Stopper& stopper, ByteReader& in) {
    const std::int32_t width = in.Between(0, kLargestSide), height = in.Between(0, kLargestSide), depth = in.Flag() ? 16 : 8;
    PaddedWorld world(width, height, 2 * in.Between(0, 3), depth);
    const std::uint8_t fill = in.Byte();
    for (std::size_t i = 0; i < world.bytes.size(); ++i) world.bytes[i] = static_cast<std::uint8_t>((fill + i) & 127);
    const std::vector<std::uint8_t> before = world.bytes;
    GW_LayerDef layer = {world.width, world.height, &world};
    const std::int32_t status = VRL_MaskWithWorld(&shape, &params, &layer, nullptr);
    RequireStatus(status, in, stopper);
    Require(!ChangedBeside(world, before, status != 0), "only alpha changes, and nothing after a failure");
}

}  // namespace
}  // namespace fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace fuzz;
    const Session session;
    ByteReader in({data, size});
    const bool layer = in.Flag();
    VRL_MaskParams params = ReadParams(in);
    Stopper stopper = {in.Byte() % 4 == 0 ? in.Between(1, 255) : 1 << 30};
    params.progress = &stopper.info;
    const std::unique_ptr<DY_Shape> shape = ReadShape(in);
    layer ? RenderLayer(*shape, params, stopper, in) : RenderBuffer(*shape, params, stopper, in);
    return 0;
}
