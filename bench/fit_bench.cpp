// Curve fitting of closed pixel outlines: preparation and both fitting passes apart, per outline point, and the smallest edges.
// Names: outline, points.

#include <benchmark/benchmark.h>

#include <cmath>

#include "fit/outline_preparation.h"
#include "fit/path_generator.h"
#include "tests/support/pixel_outlines.h"

namespace {

constexpr float kTolerance = 1;     // pixels
constexpr float kCornerAngle = 72;  // degrees
constexpr std::int32_t kHalfWidth = 16;

enum Kind { kSmooth, kNoise };

CFSegment OutlineOf(Kind kind, std::int64_t points) {
    if (kind == kSmooth) {
        return support::ChainOf(support::SmoothOutline(static_cast<int>(points), 1), kSpacingUnitSteps, kChainClosed);
    }
    // The largest outline of a noisy picture has about as many points as the picture has pixels.
    const int side = static_cast<int>(std::sqrt(static_cast<double>(points)));
    return support::ChainOf(support::NoisyOutline(side, 1), kSpacingUnitSteps, kChainClosed);
}

void Prepare(CFOutlinePreparer& preparer, const CFSegment& raw, CFPreparedChain& prepared) {
    prepared = {};
    const CFOutlineEdge edge{&raw, false, &prepared};
    preparer.Prepare({&edge, 1});
}

void SetPerPoint(benchmark::State& state, std::int32_t points) {
    state.counters["points"] = points;
    state.counters["per_point"] =
        benchmark::Counter(points, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void PrepareOutline(benchmark::State& state, Kind kind) {
    const CFSegment raw = OutlineOf(kind, state.range(0));
    CFOutlinePreparer preparer;
    CFPreparedChain prepared;
    for ([[maybe_unused]] auto _ : state) Prepare(preparer, raw, prepared);
    if (prepared.derived->Count() != raw.Count()) state.SkipWithError("the outline was not prepared");
    SetPerPoint(state, raw.Count());
}

void FitOutline(benchmark::State& state, Kind kind) {
    const CFSegment raw = OutlineOf(kind, state.range(0));
    CFOutlinePreparer preparer;
    CFPreparedChain prepared;
    Prepare(preparer, raw, prepared);
    KVPathGenerator generator(kTolerance, kCornerAngle, kHalfWidth);
    ts::auto_ptr<RPPath> path;
    for ([[maybe_unused]] auto _ : state) generator.FitEdge({raw, *prepared.derived, *prepared.ranking}, path);
    if (!path->closed) state.SkipWithError("the outline was not fitted");
    SetPerPoint(state, raw.Count());
    state.counters["curves"] = static_cast<double>(path->anchors.size());
}

/// An open edge of a few steps, as noise has many of.
void FitShortEdge(benchmark::State& state) {
    support::LatticeLine line;
    for (int i = 0; i < state.range(0); ++i) line.push_back({static_cast<float>((i + 1) / 2), static_cast<float>(i / 2)});
    const CFSegment raw = support::ChainOf(line, kSpacingUnitSteps, kChainOpen);
    const CFSegment derived = support::ChainOf(line, kSpacingDerived, kChainOpen);
    const CFRanking ranking(raw.Count());
    KVPathGenerator generator(kTolerance, kCornerAngle, kHalfWidth);
    ts::auto_ptr<RPPath> path;
    for ([[maybe_unused]] auto _ : state) generator.FitEdge({raw, derived, ranking}, path);
    state.counters["curves"] = static_cast<double>(path->anchors.size() - 1);
}

BENCHMARK_CAPTURE(PrepareOutline, smooth, kSmooth)->RangeMultiplier(10)->Range(100, 1000000)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(PrepareOutline, noise, kNoise)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(FitOutline, smooth, kSmooth)->RangeMultiplier(10)->Range(100, 1000000)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(FitOutline, noise, kNoise)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMicrosecond);
BENCHMARK(FitShortEdge)->Arg(2)->Arg(5)->Arg(10);

}  // namespace
