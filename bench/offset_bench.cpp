// Time and vertices of the offset, on smooth and traced outlines of 50 to 10^5 vertices, and its deviation from the true offset.
// Built with VRL_BENCH_CLIPPER (and linked with polyclipping) it runs that library's polygon offset on the same outlines,
// flattened to 0.02 px, with an arc tolerance of 0.02 px, in turns with our own.

#include <benchmark/benchmark.h>

#include <cmath>
#include <iterator>
#include <random>
#include <string>

#ifdef VRL_BENCH_CLIPPER
#include <polyclipping/clipper.hpp>
#endif

#include "refhost/engine/cubic.h"
#include "refhost/engine/offset.h"
#include "tests/support/offset_distance.h"
#include "tests/support/outlines.h"

namespace {

using support::Outline;

struct Case {
    std::string name;
    Outline path;
    double distance;
};

/// Random corners in a square: about a quarter of all pairs of sides cross.
Outline RandomPolygon(int corners) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> coordinate(0, 1000);
    std::vector<refhost::Point> points;
    while (std::ssize(points) < corners) {
        const double x = coordinate(random);
        points.push_back({x, coordinate(random)});
    }
    return support::Polygon(points);
}

Outline RegularPolygon(int corners) { return support::StarPolygon(corners, 1, 100); }

std::vector<Case> Cases() {
    std::vector<Case> cases;
    const auto add = [&](const std::string& name, const Outline& path, const std::vector<double>& distances) {
        for (const double d : distances)
            cases.push_back(
                {name + "/" + std::to_string(path.VertexCount()) + "/" + std::to_string(static_cast<int>(d)), path, d});
    };
    add("letter", support::Letter(), {3, -3, 25});
    add("smooth", support::Blob(50, 100, 3), {5, -5, 25, -25});
    add("smooth", support::Blob(200, 200, 5), {5, -5, 25, -25});
    add("traced", support::Traced(100, 13), {5});
    add("traced", support::Traced(1000, 13), {5, -5});
    add("traced", support::Traced(4000, 13), {5, -5, 25, -25, 120, -120});
    add("traced", support::Traced(10000, 13), {5, -5, 25});
    add("traced", support::Traced(100000, 13), {5, -5});
    // Growth of time with size: crossings grow fourfold from row to row, pieces of the circle tenfold.
    for (const int corners : {250, 500, 1000, 2000}) add("tangle", RandomPolygon(corners), {3});
    for (const int corners : {1000, 10000}) add("circle", RegularPolygon(corners), {50, -50});
    return cases;
}

std::size_t CountVertices(const std::vector<refhost::CurveContour>& contours) {
    std::size_t count = 0;
    for (const refhost::CurveContour& contour : contours) count += contour.segments.size();
    return count;
}

void OffsetCurves(benchmark::State& state, const Case& c) {
    std::vector<refhost::CurveContour> result;
    for (auto _ : state) result = refhost::OffsetOutline(c.path.View(), c.distance, refhost::OffsetJoin::kRound, 1);
    const auto vertices = static_cast<double>(c.path.VertexCount());
    state.counters["vertices_out"] = static_cast<double>(CountVertices(result));
    state.counters["vertices/s"] = benchmark::Counter(vertices, benchmark::Counter::kIsIterationInvariantRate);
}

/// One run; its counters are the deviation from the true offset in pixels.
void OffsetDeviation(benchmark::State& state, const Case& c) {
    OffsetErrors errors;
    for (auto _ : state) {
        errors = MeasureOffset(c.path.View(), c.distance,
                               refhost::OffsetOutline(c.path.View(), c.distance, refhost::OffsetJoin::kRound, 1));
    }
    state.counters["stray"] = errors.stray;
    state.counters["missing"] = errors.missing;
    state.counters["wrong_windings"] = errors.wrong_windings;
}

#ifdef VRL_BENCH_CLIPPER
constexpr double kTolerance = 0.02;  // pixels
constexpr double kUnits = 1024;      // of the integer grid, per pixel

ClipperLib::Paths Flattened(const Outline& path) {
    ClipperLib::Paths out;
    refhost::Point current{};
    const auto at = [&](std::size_t i) {
        return refhost::Point{static_cast<double>(path.points[i].x), static_cast<double>(path.points[i].y)};
    };
    const auto add = [&](refhost::Point p) { out.back().emplace_back(std::llround(p.x * kUnits), std::llround(p.y * kUnits)); };
    for (std::size_t i = 0; i < path.points.size(); ++i) {
        if (path.operators[i] == kPIVClose) continue;
        if (path.operators[i] == kPIVMove) out.emplace_back();
        if (path.operators[i] == kPIVCurve) {
            const refhost::Cubic curve = {current, at(i), at(i + 1), at(i + 2)};
            const int steps = refhost::StepCount(curve, kTolerance);
            for (int k = 1; k < steps; ++k) add(refhost::Evaluate(curve, static_cast<double>(k) / steps));
            i += 2;
        }
        current = at(i);
        add(current);
    }
    return out;
}

void OffsetPolygons(benchmark::State& state, const Case& c) {
    ClipperLib::Paths result;
    for (auto _ : state) {
        ClipperLib::ClipperOffset offset(2, kTolerance * kUnits);
        offset.AddPaths(Flattened(c.path), ClipperLib::jtRound, ClipperLib::etClosedPolygon);
        offset.Execute(result, c.distance * kUnits);
    }
    std::size_t count = 0;
    for (const ClipperLib::Path& path : result) count += path.size();
    state.counters["vertices_out"] = static_cast<double>(count);
}
#endif

void RegisterAll() {
    const std::vector<Case> cases = Cases();
    for (const Case& c : cases) {
        benchmark::RegisterBenchmark(("OffsetCurves/" + c.name).c_str(), OffsetCurves, c)->Unit(benchmark::kMillisecond);
#ifdef VRL_BENCH_CLIPPER
        if (c.path.VertexCount() <= 10000 && !c.name.starts_with("tangle")) {
            benchmark::RegisterBenchmark(("OffsetPolygons/" + c.name).c_str(), OffsetPolygons, c)->Unit(benchmark::kMillisecond);
        }
#endif
    }
    for (const Case& c : cases) {
        if (c.path.VertexCount() > 10000 || c.name.starts_with("tangle")) continue;
        benchmark::RegisterBenchmark(("OffsetDeviation/" + c.name).c_str(), OffsetDeviation, c)
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
    }
}

const bool g_registered = (RegisterAll(), true);

}  // namespace
