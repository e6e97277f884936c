// The line feather alone, and on both axes of a whole buffer against three box blurs of the same buffer.
// Names: quality, depth, radius in pixels.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#ifdef VRL_BENCH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

#include "base/fixed16.h"
#include "host/image.h"
#include "refhost/image/line_feather.h"

namespace {

constexpr std::int32_t kWidth = 3840;
constexpr std::int32_t kHeight = 2160;
constexpr std::int32_t kTile = 64;  // columns gathered at once

template <class P>
constexpr GW_FeatherLineProc kFeather = sizeof(P) == 1 ? refhost::FeatherLine8 : refhost::FeatherLine16;

/// Coverage of a lobed blob in the middle of the buffer, its edge one pixel wide.
template <class P>
std::vector<P> Blob() {
    std::vector<P> samples;
    samples.reserve(std::size_t{kWidth} * kHeight);
    for (std::int32_t y = 0; y < kHeight; ++y) {
        for (std::int32_t x = 0; x < kWidth; ++x) {
            const double dx = x - kWidth / 2, dy = y - kHeight / 2, angle = std::atan2(dy, dx);
            const double edge = 720.0 * (1.0 + 0.2 * std::sin(5.0 * angle) + 0.1 * std::cos(13.0 * angle));
            const double coverage = std::clamp(edge - std::hypot(dx, dy) + 0.5, 0.0, 1.0);
            samples.push_back(static_cast<P>(std::lround(coverage * SampleTraits<P>::kMax)));
        }
    }
    return samples;
}

template <class P>
std::vector<P> NoiseLine() {
    std::mt19937 random(1);
    std::vector<P> line(kWidth);
    for (P& sample : line) sample = static_cast<P>(random() % (SampleTraits<P>::kMax + 1));
    return line;
}

template <class P>
std::vector<P> BlobLine() {
    constexpr P most = SampleTraits<P>::kMax;
    std::vector<P> line(kWidth);
    std::fill(line.begin() + 600, line.begin() + 1400, most);
    std::fill(line.begin() + 2100, line.begin() + 3300, most);
    line[600] = line[1400] = line[2100] = line[3300] = most / 3;
    return line;
}

template <class P>
void FeatherOneLine(benchmark::State& state, const std::vector<P>& source) {
    const auto quality = static_cast<unsigned char>(state.range(0));
    const auto radius = static_cast<std::int32_t>(state.range(1)) * kFixedOne;
    std::vector<P> line, scratch(source.size());
    for ([[maybe_unused]] auto _ : state) {
        line = source;
        kFeather<P>(quality, kWidth, 0, kWidth, radius, scratch.data(), line.data());
        benchmark::DoNotOptimize(line.data());
    }
    if (line == source) state.SkipWithError("nothing was feathered");
    state.counters["per_sample"] =
        benchmark::Counter(kWidth, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

template <class P>
void FeatherNoise(benchmark::State& state) {
    FeatherOneLine(state, NoiseLine<P>());
}

template <class P>
void FeatherEdges(benchmark::State& state) {
    FeatherOneLine(state, BlobLine<P>());
}

template <class P>
void FeatherRows(unsigned char quality, std::int32_t radius, std::vector<P>& buffer) {
    std::vector<P> scratch(kWidth);
    for (std::int32_t y = 0; y < kHeight; ++y) {
        kFeather<P>(quality, kWidth, 0, kWidth, radius, scratch.data(), buffer.data() + std::ptrdiff_t{y} * kWidth);
    }
}

template <class P>
void FeatherColumns(unsigned char quality, std::int32_t radius, std::vector<P>& buffer) {
    std::vector<P> scratch(kHeight), tile_samples(std::size_t{kTile} * kHeight);
    P* const tile = tile_samples.data();
    for (std::int32_t left = 0; left < kWidth; left += kTile) {
        P* const columns = buffer.data() + left;
        for (std::ptrdiff_t y = 0; y < kHeight; ++y) {
            for (std::ptrdiff_t x = 0; x < kTile; ++x) tile[x * kHeight + y] = columns[y * kWidth + x];
        }
        for (std::ptrdiff_t x = 0; x < kTile; ++x) {
            kFeather<P>(quality, kHeight, 0, kHeight, radius, scratch.data(), tile + x * kHeight);
        }
        for (std::ptrdiff_t y = 0; y < kHeight; ++y) {
            for (std::ptrdiff_t x = 0; x < kTile; ++x) columns[y * kWidth + x] = tile[x * kHeight + y];
        }
    }
}

template <class P>
void FeatherBuffer(benchmark::State& state) {
    const auto quality = static_cast<unsigned char>(state.range(0));
    const auto radius = static_cast<std::int32_t>(state.range(1)) * kFixedOne;
    const std::vector<P> source = Blob<P>();
    std::vector<P> buffer;
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        buffer = source;
        state.ResumeTiming();
        FeatherRows(quality, radius, buffer);
        FeatherColumns(quality, radius, buffer);
        benchmark::DoNotOptimize(buffer.data());
    }
    if (buffer == source) state.SkipWithError("nothing was feathered");
}

BENCHMARK_TEMPLATE(FeatherNoise, GW_Pixel8)->ArgsProduct({{0, 1}, {3, 10, 40, 200}});
BENCHMARK_TEMPLATE(FeatherNoise, GW_Pixel16)->ArgsProduct({{0, 1}, {3, 10, 40, 200}});
BENCHMARK_TEMPLATE(FeatherEdges, GW_Pixel8)->ArgsProduct({{0, 1}, {3, 10, 40, 200}});
BENCHMARK_TEMPLATE(FeatherEdges, GW_Pixel16)->ArgsProduct({{0, 1}, {3, 10, 40, 200}});
BENCHMARK_TEMPLATE(FeatherBuffer, GW_Pixel8)->ArgsProduct({{0, 1}, {3, 10, 40, 200}})->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(FeatherBuffer, GW_Pixel16)->ArgsProduct({{0, 1}, {3, 10, 40, 200}})->Unit(benchmark::kMillisecond);

#ifdef VRL_BENCH_OPENCV
template <class P>
void ThreeBlurs(benchmark::State& state) {
    cv::setNumThreads(1);
    const int size = 2 * static_cast<int>(state.range(0)) + 1;
    std::vector<P> source = Blob<P>();
    const cv::Mat from(kHeight, kWidth, sizeof(P) == 1 ? CV_8UC1 : CV_16UC1, source.data());
    cv::Mat first, second;
    for ([[maybe_unused]] auto _ : state) {
        cv::blur(from, first, {size, size});
        cv::blur(first, second, {size, size});
        cv::blur(second, first, {size, size});
        benchmark::DoNotOptimize(first.data);
    }
}

BENCHMARK_TEMPLATE(ThreeBlurs, GW_Pixel8)->ArgsProduct({{3, 10, 40, 200}})->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(ThreeBlurs, GW_Pixel16)->ArgsProduct({{3, 10, 40, 200}})->Unit(benchmark::kMillisecond);
#endif

}  // namespace
