// Whole masks of a 200-vertex outline in a 3840x2160 frame, as a host asks for them.
// Names: sample type, then for feathers the quality and the radius in pixels; for variable feathers radius and threads.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "api/vrl.h"
#include "base/errors.h"
#include "base/fixed16.h"
#include "refhost/image/parallel_iteration.h"
#include "refhost/refhost.h"
#include "refhost/shape/feather_points.h"
#include "tests/support/outlines.h"
#include "tests/support/shapes.h"

namespace {

constexpr std::int32_t kWidth = 3840;
constexpr std::int32_t kHeight = 2160;

void BindOnce() {
    static const bool bound = [] {
        refhost::Initialize();
        VRL_Birth();
        return true;
    }();
    benchmark::DoNotOptimize(bound);
}

// The outline of the fill benchmark as a shape.
std::unique_ptr<DY_Shape> BlobShape() {
    const support::Outline blob = support::Blob(200, 0.4 * kHeight, 1).Shifted(kWidth / 2.0, kHeight / 2.0);
    const auto points = blob.View().points;
    std::vector<WEX_Item> items(points.begin(), points.end());
    while (items.size() % 3 != 0) items.pop_back();  // the end of the closing segment and the close entry
    return ShapeOfItems(items);
}

template <class P>
void RenderMask(benchmark::State& state, std::uint8_t quality, std::int32_t radius) {
    BindOnce();
    const auto shape = BlobShape();
    VRL_MaskParams params = PlainParams();
    params.quality = quality;
    params.feather_x = params.feather_y = radius * kFixedOne;
    GW_UnoBuffer buffer(kWidth, kHeight, kDepthOf<P>);
    for ([[maybe_unused]] auto _ : state) {
        if (VRL_MaskWithShape(shape.get(), &params, nullptr, &buffer, nullptr) != 0) state.SkipWithError("the render failed");
        benchmark::DoNotOptimize(buffer.data);
    }
    if (buffer.Row<P>(kHeight / 2)[kWidth / 2] != SampleTraits<P>::kMax) state.SkipWithError("the middle is not covered");
    state.counters["pixels/s"] = benchmark::Counter(double{kWidth} * kHeight, benchmark::Counter::kIsIterationInvariantRate);
}

template <class P>
void MaskPlain(benchmark::State& state) {
    RenderMask<P>(state, static_cast<std::uint8_t>(state.range(0)), 0);
}

template <class P>
void MaskFeathered(benchmark::State& state) {
    RenderMask<P>(state, static_cast<std::uint8_t>(state.range(0)), static_cast<std::int32_t>(state.range(1)));
}

// A feather that swings between half the radius and all of it; as many rings as pixels of radius, up to the cap.
void MaskVariableFeather(benchmark::State& state) {
    BindOnce();
    refhost::SetThreadCount(static_cast<int>(state.range(1)));
    const auto shape = BlobShape();
    const auto radius = static_cast<float>(state.range(0));
    std::vector<refhost::FeatherPoint> feather;
    for (int i = 0; i < 200; i += 10) feather.push_back({static_cast<double>(i), i % 20 == 0 ? radius : radius / 2});
    refhost::SetFeatherPoints(*shape, feather);
    const VRL_MaskParams params = PlainParams();
    GW_UnoBuffer buffer(kWidth, kHeight, 8);
    for ([[maybe_unused]] auto _ : state) {
        if (VRL_MaskWithShape(shape.get(), &params, nullptr, &buffer, nullptr) != 0) state.SkipWithError("the render failed");
        benchmark::DoNotOptimize(buffer.data);
    }
}

BENCHMARK_TEMPLATE(MaskPlain, GW_Pixel8)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(MaskPlain, GW_Pixel16)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(MaskFeathered, GW_Pixel8)->ArgsProduct({{0, 1}, {3, 10, 40, 200}})->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(MaskFeathered, GW_Pixel16)->ArgsProduct({{0, 1}, {3, 10, 40, 200}})->Unit(benchmark::kMillisecond);
BENCHMARK(MaskVariableFeather)->ArgsProduct({{15, 60, 240}, {1, 2}})->Unit(benchmark::kMillisecond);

}  // namespace
