// Tracing of bitmaps into regions and edges, from numbered pixels (Trace) and from a picture of the host (TraceWorld, with
// the numbering of its colours), against the whole of libpotrace, which also fits curves; and the merge of many regions.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bench/bitmaps.h"
#include "bench/peak_memory.h"
#include "host/world.h"
#include "trace/region_merge.h"
#include "trace/tracer.h"

#ifdef VRL_BENCH_POTRACE
#include "bench/potrace_bitmap.h"
#endif

namespace {

RPPixelMap PixelMapOf(const Bitmap& bitmap) {
    RPPixelMap pixels(bitmap.width, bitmap.height);
    for (int y = 0; y < bitmap.height; ++y) {
        std::copy_n(bitmap.set.begin() + std::ptrdiff_t{y} * bitmap.width, bitmap.width, pixels.Row(y));
    }
    return pixels;
}

RPTrace TraceOf(const GW_World& world) {
    auto raster = ts::make_auto<RPRaster>(world);
    return RPTrace(raster, 0, false);
}

// The counters besides: nanoseconds per pixel and per boundary step (each between two pixels, met from both sides).
void ReportCost(benchmark::State& state, const Bitmap& bitmap, double steps, std::int64_t bytes) {
    const double pixels = static_cast<double>(bitmap.width) * bitmap.height;
    using benchmark::Counter;
    const auto seconds_per = Counter::kIsIterationInvariantRate | Counter::kInvert;
    state.counters["s/pixel"] = Counter(pixels, seconds_per);
    state.counters["s/step"] = Counter(steps, seconds_per);
    state.counters["bytes/pixel"] = static_cast<double>(bytes) / pixels;
}

void Trace(benchmark::State& state, const Bitmap& bitmap) {
    const RPPixelMap pixels = PixelMapOf(bitmap);
    RPTrace trace = TraceOf(*std::unique_ptr<GW_World>(GW_World::New(1, 1, 8, 0)));
    const PeakMemory memory;
    for ([[maybe_unused]] auto _ : state) {
        trace.graph.reset();
        RPTracePixels(pixels, trace);
        benchmark::DoNotOptimize(trace.graph.get());
    }
    std::int64_t area = 0;
    for (const RPRegion& region : trace.regions) area += region.area;
    if (area != std::int64_t{bitmap.width} * bitmap.height) state.SkipWithError("pixels are lost");
    ReportCost(state, bitmap, static_cast<double>(trace.graph->steps.size()), memory.Bytes());
}

void TraceWorld(benchmark::State& state, const Bitmap& bitmap) {
    const auto world = WorldOf(bitmap);
    const PeakMemory memory;
    std::size_t steps = 0;
    for ([[maybe_unused]] auto _ : state) steps = TraceOf(*world).graph->steps.size();
    if (steps == 0) state.SkipWithError("nothing is traced");
    ReportCost(state, bitmap, static_cast<double>(steps), memory.Bytes());
}

// All regions into one: a ground with `state.range(0)` / 2 dots of a pixel across and down.
void MergeDots(benchmark::State& state) {
    const auto size = static_cast<int>(state.range(0));
    Bitmap dots = {size, size, std::vector<std::uint8_t>(static_cast<std::size_t>(size) * static_cast<std::size_t>(size))};
    for (int i = 0; i < size * size; ++i) dots.set[static_cast<std::size_t>(i)] = i / size % 2 == 1 && i % size % 2 == 1;
    const auto world = WorldOf(dots);
    for ([[maybe_unused]] auto _ : state) {
        RPTrace trace = TraceOf(*world);
        RPMergeSmallRegions(&trace, size * size);
        if (trace.regions.size() != 1) state.SkipWithError("regions are left");
    }
}
BENCHMARK(MergeDots)->Name("Merge/dots")->RangeMultiplier(2)->Range(256, 1024)->Unit(benchmark::kMillisecond);

#ifdef VRL_BENCH_POTRACE
void Potrace(benchmark::State& state, const Bitmap& bitmap) {
    const PotraceBitmap input(bitmap);
    for ([[maybe_unused]] auto _ : state) {
        if (!input.Trace()) return state.SkipWithError("potrace failed");
    }
}
#endif

struct Input {
    std::string name;
    std::function<const Bitmap&()> bitmap;
};

const bool registered = [] {
    std::vector<Input> inputs = {
        {"photo/3840x2160", []() -> const Bitmap& { return PhotoLike(3840, 2160); }},
        {"text/2480x3508", TextPage},
        {"matte/3840x2160", []() -> const Bitmap& { return SoftMatte(3840, 2160); }},
        {"noise/2048", []() -> const Bitmap& { return EvenNoise(2048); }},
    };
    for (const int size : {512, 1024}) {
        inputs.push_back({"checkerboard/" + std::to_string(size), [size]() -> const Bitmap& { return Checkerboard(size); }});
    }
    for (const int size : {1024, 2048, 4096}) {
        inputs.push_back({"growth/" + std::to_string(size), [size]() -> const Bitmap& { return PhotoLike(size, size); }});
    }
    using Run = void (*)(benchmark::State&, const Bitmap&);
    std::vector<std::pair<std::string, Run>> runs = {{"Trace/", Trace}, {"TraceWorld/", TraceWorld}};
#ifdef VRL_BENCH_POTRACE
    runs.emplace_back("Potrace/", Potrace);
#endif
    for (const Input& input : inputs) {
        for (const auto& [name, run] : runs) {
            const auto body = [run = run, bitmap = input.bitmap](benchmark::State& state) {
                bitmap().set.empty() ? state.SkipWithError("the font is not installed") : run(state, bitmap());
            };
            benchmark::RegisterBenchmark((name + input.name).c_str(), body)->Unit(benchmark::kMillisecond);
        }
    }
    return true;
}();

}  // namespace
