// Whole traces, from a picture to shapes (AutoTrace), beside those of libpotrace (AutoTracePotrace), and the stages of ours.
// `vertices` counts those of all outlines; `off` is the mean distance in pixels from the middles of the pixels' sides along
// the outlines to the nearest of the curves, where that is within 4 pixels.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "api/vrl.h"
#include "bench/bitmaps.h"
#include "refhost/refhost.h"
#include "trace/edge_fitting.h"
#include "trace/preprocess.h"
#include "trace/region_merge.h"
#include "trace/shape_creation.h"

#ifdef VRL_BENCH_POTRACE
#include "bench/potrace_bitmap.h"
#endif

namespace {

using Shapes = std::vector<boost::shared_ptr<DY_Shape>>;

constexpr double kSearch = 4;                // pixels
constexpr double kSecondsOfWholeTraces = 1;  // a single run is too easily disturbed to be compared with a peer's
constexpr float kCornerAngle = 72;
constexpr std::int32_t kWindow = 16;

struct Cubic {
    double x[4], y[4];
};

/// Points on curves, close enough to each other to stand for them, in square cells.
class CurvePoints {
 public:
    CurvePoints(const std::vector<Cubic>& curves, int width, int height) : across_(width / kCell + 3), cells_(Cells(height)) {
        for (const Cubic& curve : curves) Add(curve);
    }

    /// At most `kSearch`.
    double Nearest(double x, double y) const {
        double nearest = kSearch * kSearch;
        const int column = ColumnOf(x), row = ColumnOf(y);
        for (int v = row - 1; v <= row + 1; ++v) {
            for (int u = column - 1; u <= column + 1; ++u) {
                if (u < 0 || v < 0 || u >= across_ || CellAt(u, v) >= cells_.size()) continue;
                for (const auto& [px, py] : cells_[CellAt(u, v)]) {
                    const double dx = static_cast<double>(px) - x, dy = static_cast<double>(py) - y;
                    nearest = std::min(nearest, dx * dx + dy * dy);
                }
            }
        }
        return std::sqrt(nearest);
    }

 private:
    struct Point {
        float x, y;
    };
    static constexpr int kCell = static_cast<int>(kSearch);

    static int ColumnOf(double x) { return static_cast<int>(std::floor(x / kCell)) + 1; }
    std::size_t CellAt(int u, int v) const {
        return static_cast<std::size_t>(v) * static_cast<std::size_t>(across_) + static_cast<std::size_t>(u);
    }
    std::vector<std::vector<Point>> Cells(int height) const {
        return std::vector<std::vector<Point>>(CellAt(0, height / kCell + 3));
    }

    void Add(const Cubic& curve) {
        double length = 0;
        for (int i = 0; i < 3; ++i) length += std::hypot(curve.x[i + 1] - curve.x[i], curve.y[i + 1] - curve.y[i]);
        const int count = static_cast<int>(length * 8) + 2;
        for (int i = 0; i <= count; ++i) {
            const double t = static_cast<double>(i) / count, s = 1 - t;
            const auto at = [&](const double* p) {
                return s * s * s * p[0] + 3 * s * t * (s * p[1] + t * p[2]) + t * t * t * p[3];
            };
            const double x = at(curve.x), y = at(curve.y);
            const int u = ColumnOf(x), v = ColumnOf(y);
            if (u < 0 || v < 0 || u >= across_ || CellAt(u, v) >= cells_.size()) continue;
            cells_[CellAt(u, v)].push_back({static_cast<float>(x), static_cast<float>(y)});
        }
    }

    int across_;
    std::vector<std::vector<Point>> cells_;
};

double MeanDistance(const Bitmap& bitmap, const std::vector<Cubic>& curves) {
    const CurvePoints points(curves, bitmap.width, bitmap.height);
    const auto set = [&](int x, int y) {
        return x >= 0 && y >= 0 && x < bitmap.width && y < bitmap.height &&
               bitmap.set[static_cast<std::size_t>(y) * static_cast<std::size_t>(bitmap.width) + static_cast<std::size_t>(x)] !=
                   0;
    };
    double sum = 0;
    std::size_t count = 0;
    const auto add = [&](double x, double y) {
        sum += points.Nearest(x, y);
        ++count;
    };
    for (int y = 0; y <= bitmap.height; ++y) {
        for (int x = 0; x <= bitmap.width; ++x) {
            if (set(x, y) != set(x - 1, y)) add(x, y + 0.5);
            if (set(x, y) != set(x, y - 1)) add(x + 0.5, y);
        }
    }
    return count == 0 ? 0 : sum / static_cast<double>(count);
}

std::vector<Cubic> CurvesOf(const Shapes& shapes) {
    std::vector<Cubic> curves;
    for (const auto& shape : shapes) {
        const std::int32_t count = (*shape->GetPoints())->count;
        const auto item = [&](std::int32_t i) {
            WEX_Item read{};
            WEX_GetItem(shape->GetPoints(), i % count, &read);
            return read;
        };
        for (std::int32_t i = 0; i < count; i += 3) {
            Cubic& curve = curves.emplace_back();
            for (std::int32_t k = 0; k < 4; ++k) {
                curve.x[k] = static_cast<double>(item(i + k).x);
                curve.y[k] = static_cast<double>(item(i + k).y);
            }
        }
    }
    return curves;
}

void Report(benchmark::State& state, const Bitmap& bitmap, const std::vector<Cubic>& curves) {
    state.counters["vertices"] = static_cast<double>(curves.size());
    state.counters["off"] = MeanDistance(bitmap, curves);
}

void AutoTrace(benchmark::State& state, const Bitmap& bitmap) {
    const auto world = WorldOf(bitmap);
    const VRL_AutoTraceParams params;
    Shapes shapes;
    const auto trace = [&] {
        shapes.clear();
        VRL_NewMasksFromWorld(world.get(), &params, shapes);
    };
    trace();  // the first of a process pays for its memory; the peer's is not timed either
    for ([[maybe_unused]] auto _ : state) trace();
    Report(state, bitmap, CurvesOf(shapes));
}

#ifdef VRL_BENCH_POTRACE
/// libpotrace counts rows from below, as the bitmap is given to it; corners are two straight lines.
std::vector<Cubic> CurvesOf(const potrace_state_t& trace) {
    std::vector<Cubic> curves;
    for (const potrace_path_t* path = trace.plist; path != nullptr; path = path->next) {
        const potrace_curve_t& curve = path->curve;
        if (curve.n == 0) continue;
        potrace_dpoint_t from = curve.c[curve.n - 1][2];
        const auto line_to = [&](potrace_dpoint_t to) {
            curves.push_back({{from.x, from.x, to.x, to.x}, {from.y, from.y, to.y, to.y}});
            from = to;
        };
        for (int i = 0; i < curve.n; ++i) {
            const potrace_dpoint_t* c = curve.c[i];
            if (curve.tag[i] == POTRACE_CORNER) {
                line_to(c[1]);
                line_to(c[2]);
            } else {
                curves.push_back({{from.x, c[0].x, c[1].x, c[2].x}, {from.y, c[0].y, c[1].y, c[2].y}});
                from = c[2];
            }
        }
    }
    return curves;
}

void AutoTracePotrace(benchmark::State& state, const Bitmap& bitmap) {
    const PotraceBitmap input(bitmap);
    auto result = input.Trace();
    for ([[maybe_unused]] auto _ : state) {
        result.reset();
        result = input.Trace();
        if (!result) return state.SkipWithError("potrace failed");
    }
    Report(state, bitmap, CurvesOf(*result));
}
#endif

void StagePreprocess(benchmark::State& state, const Bitmap& bitmap) {
    const auto world = WorldOf(bitmap);
    VRLp_TraceContext context = VRLp_FillContext({}, *world);
    context.bitmap.reset(GW_World::New(world->width, world->height, 8, 0));
    for ([[maybe_unused]] auto _ : state) VRLp_Preprocess(context);
}

RPTrace TraceOf(const GW_World& world) {
    auto raster = ts::make_auto<RPRaster>(world);
    return RPTrace(raster, 0, false);
}

void StageTrace(benchmark::State& state, const Bitmap& bitmap) {
    const auto world = WorldOf(bitmap);
    for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(TraceOf(*world).graph.get());
}

void StageTraceAndMerge(benchmark::State& state, const Bitmap& bitmap) {
    constexpr std::int32_t kMinimumArea = 16;
    const auto world = WorldOf(bitmap);
    for ([[maybe_unused]] auto _ : state) {
        RPTrace trace = TraceOf(*world);
        RPMergeSmallRegions(&trace, kMinimumArea);
    }
}

void StageFit(benchmark::State& state, const Bitmap& bitmap) {
    RPTrace trace = TraceOf(*WorldOf(bitmap));
    for ([[maybe_unused]] auto _ : state) {
        KVPathGenerator generator(VRL_AutoTraceParams().tolerance, kCornerAngle, kWindow);
        RPEdgeFitting fitting(trace, generator);
        for (const RPRegion& region : trace.regions) fitting.FitRings(region);
    }
    state.counters["s/step"] = benchmark::Counter(static_cast<double>(trace.graph->steps.size()),
                                                  benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void StageShapes(benchmark::State& state, const Bitmap& bitmap) {
    const auto world = WorldOf(bitmap);
    const VRL_AutoTraceParams params;
    VRLp_TraceOptions options = VRLp_BuildOptions(VRLp_FillContext(params, *world));
    RPTrace trace = TraceOf(*world);
    std::vector<RPPath> outlines;
    VRLp_ShapeGenerator(&trace, options)
        .Art()
        .ForEachArt([](const RPRegion& region) { return region.index % 2 == 1; },
                    [&](const RPOutlineArt& art) {
                        outlines.insert(outlines.end(), art.outer.begin(), art.outer.end());
                        outlines.insert(outlines.end(), art.holes.begin(), art.holes.end());
                    });
    for ([[maybe_unused]] auto _ : state) {
        Shapes shapes;
        for (const RPPath& outline : outlines) shapes.emplace_back(VRLp_MakeShape(outline));
        for (const auto& shape : shapes) DY_SetPolyDir(1, shape.get());
    }
}

struct Input {
    std::string name;
    std::function<const Bitmap&()> bitmap;
};

const bool registered = [] {
    const std::vector<Input> inputs = {
        {"photo/3840x2160", []() -> const Bitmap& { return PhotoLike(3840, 2160); }},
        {"text/2480x3508", TextPage},
        {"matte/3840x2160", []() -> const Bitmap& { return SoftMatte(3840, 2160); }},
        {"icons/1536x1024", IconSheet},
    };
    using Run = void (*)(benchmark::State&, const Bitmap&);
    const std::vector<std::pair<std::string, Run>> runs = {{"AutoTrace/", AutoTrace},
#ifdef VRL_BENCH_POTRACE
                                                           {"AutoTracePotrace/", AutoTracePotrace},
#endif
                                                           {"Stage/preprocess/", StagePreprocess},
                                                           {"Stage/trace/", StageTrace},
                                                           {"Stage/trace_and_merge/", StageTraceAndMerge},
                                                           {"Stage/fit/", StageFit},
                                                           {"Stage/shapes/", StageShapes}};
    for (const Input& input : inputs) {
        for (const auto& [name, run] : runs) {
            const auto body = [run = run, bitmap = input.bitmap](benchmark::State& state) {
                bitmap().set.empty() ? state.SkipWithError("its package is not installed") : run(state, bitmap());
            };
            auto* const added = benchmark::RegisterBenchmark((name + input.name).c_str(), body)->Unit(benchmark::kMillisecond);
            if (name.starts_with("AutoTrace")) added->MinTime(kSecondsOfWholeTraces);
        }
    }
    return true;
}();

}  // namespace
