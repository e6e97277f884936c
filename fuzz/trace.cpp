// Any picture traced with any parameters into a list that may hold shapes.

#include "api/vrl.h"
#include "base/errors.h"
#include "fuzz/library.h"
#include "refhost/services/status.h"
#include "tests/support/worlds.h"

namespace fuzz {
namespace {

constexpr int kLargestSide = 24;

/// A pixel a bit, black or white, or pixels of whatever bytes come up.
void Paint(PaddedWorld& world, ByteReader& in) {
    const bool bitmap = in.Byte() % 4 != 0;
    std::uint32_t bits = 1;
    for (std::uint8_t& byte : world.bytes) {
        if (!bitmap) {
            byte = in.Byte();
            continue;
        }
        if (const auto i = &byte - world.bytes.data(); i % 4 == 0 && (bits >>= 1) <= 1) bits = 256U | in.Byte();
        byte = (bits & 1) != 0 ? 255 : 0;
    }
}

VRL_AutoTraceParams ReadParams(ByteReader& in) {
    VRL_AutoTraceParams params;
    const std::uint8_t options = in.Byte();
    if ((options & 1) != 0) params.channel = in.Between(kVRLTraceLuminance, kVRLTraceValue + (in.IsHostile() ? 3 : 0));
    if ((options & 2) != 0) params.tolerance = static_cast<float>(in.Number(0.1, 6));
    if ((options & 4) != 0) params.threshold = static_cast<float>(in.Number(0, 100));
    if ((options & 8) != 0) params.blur_radius = static_cast<float>(in.Number(0, 8));
    if ((options & 16) != 0) params.minimum_area = static_cast<float>(in.Number(0, 30));
    if ((options & 32) != 0) params.corner_angle = static_cast<float>(in.Number(0, 100));
    params.invert = (options & 64) != 0;
    return params;
}

/// The code with which a trace is refused; 0 for one that must succeed.
int ExpectedCode(const GW_World& world, const VRL_AutoTraceParams& params) {
    if (world.Depth() != 8) return kFailedCheck;
    if (!(params.blur_radius >= 0)) return refhost::kStatusBadArgument;
    if (params.channel < kVRLTraceLuminance || params.channel > kVRLTraceValue) return kFailedCheck;
    return world.width == 0 || world.height == 0 ? kBrokenInvariant : 0;
}

}  // namespace
}  // namespace fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace fuzz;
    const Session session;
    ByteReader in({data, size});
    VRL_AutoTraceParams params = ReadParams(in);
    const std::optional<M_Matrix3> transform = ReadTransform(in);
    if (transform) params.layer_transform = &*transform;
    std::vector<boost::shared_ptr<DY_Shape>> shapes;
    if (in.Byte() % 4 == 0) shapes.emplace_back(ReadShape(in).release());
    const std::size_t held = shapes.size();
    const bool deep = in.Byte() % 32 == 31;
    const std::int32_t width = in.Between(0, kLargestSide), height = in.Between(0, kLargestSide);
    PaddedWorld world(width, height, in.Between(0, 8), deep ? 16 : 8);
    Paint(world, in);

    int code = 0;
    try {
        VRL_NewMasksFromWorld(&world, &params, shapes);
    } catch (int thrown) {
        code = thrown;
    }
    Require(code == ExpectedCode(world, params), "exactly what cannot be traced is refused");
    Require(shapes.size() >= held, "the list keeps what it held");
    for (std::size_t i = held; i < shapes.size(); ++i) RequireOutline(*shapes[i], !in.IsHostile());
    return 0;
}
