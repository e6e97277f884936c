// Fills of one outline into an 8-bit buffer as large as the picture: the painter built, and all its rows pulled; against the same
// outline through other rasterizers into a cleared buffer. Names: filler, picture height, outline.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#ifdef VRL_BENCH_AGG
#include <agg_rasterizer_scanline_aa.h>
#include <agg_scanline_p.h>
#include <agg_scanline_u.h>
#endif
#ifdef VRL_BENCH_CAIRO
#include <cairo/cairo.h>
#endif

#include "bench/glyph.h"
#include "refhost/engine/fill_painter.h"
#include "refhost/engine/flatten.h"
#include "tests/support/outlines.h"

namespace {

using support::Outline;

struct Picture {
    std::int32_t width, height;
    std::vector<std::uint8_t> samples;

    explicit Picture(std::int32_t rows)
        : width(rows * 16 / 9), height(rows), samples(static_cast<std::size_t>(width) * static_cast<std::size_t>(rows)) {}
    std::uint8_t* Row(std::int32_t y) { return &samples[static_cast<std::size_t>(y) * static_cast<std::size_t>(width)]; }
    void Clear() { std::memset(samples.data(), 0, samples.size()); }
};

using Filler = void (*)(const Outline& outline, Picture& picture);

template <bool best_quality>
void FillWithPainter(const Outline& outline, Picture& picture) {
    const PIVDeviceRect device = {0, 0, picture.width, picture.height, 0, picture.width};
    const refhost::FillPainter painter(outline.View(), kPIVIdentity, device, best_quality);
    const PIVRasterPainterInfo& info = painter.Info();
    for (std::int32_t y = 0; y < picture.height; ++y) {
        std::uint8_t* const row = picture.Row(y);
        std::int32_t x = 0;
        for (const PIVRun* run = info.row(info.context, y, &info, row); x < picture.width; x = run++->end) {
            const auto length = static_cast<std::size_t>(run->end - x);
            if (run->kind == kPIVRunPartial)
                std::memcpy(row + x, info.base + x, length);
            else
                std::memset(row + x, run->kind == kPIVRunFull ? 255 : 0, length);
        }
    }
}

#ifdef VRL_BENCH_AGG
/// Renderer of AGG's scanlines into the picture.
struct SpanWriter {
    Picture& picture;

    void prepare() {}
    template <class Scanline>
    void render(const Scanline& line) {
        std::uint8_t* const row = picture.Row(line.y());
        auto span = line.begin();
        for (unsigned left = line.num_spans(); left > 0; --left, ++span) {
            if (span->len < 0)
                std::memset(row + span->x, *span->covers, static_cast<std::size_t>(-span->len));
            else
                std::memcpy(row + span->x, span->covers, static_cast<std::size_t>(span->len));
        }
    }
};

/// The lines are those of the painter at best quality.
void AddTo(agg::rasterizer_scanline_aa<>& rasterizer, const Outline& outline) {
    constexpr refhost::VisibleBox kEverything = {-1e9, -1e9, 1e9, 1e9};
    const refhost::PathView path = outline.View();
    const auto point = [&](std::size_t i) { return refhost::Map(kPIVIdentity, path.points[i]); };
    std::vector<refhost::Point> curve;
    refhost::Point current{};
    for (std::size_t i = 0; i < path.Size(); ++i) {
        if (path.operators[i] == kPIVMove) rasterizer.move_to_d(point(i).x, point(i).y);
        if (path.operators[i] == kPIVLine) rasterizer.line_to_d(point(i).x, point(i).y);
        if (path.operators[i] == kPIVCurve) {
            curve.clear();
            refhost::AppendFlattened({current, point(i), point(i + 1), point(i + 2)}, 0.005, kEverything, curve);
            for (const refhost::Point p : curve) rasterizer.line_to_d(p.x, p.y);
            i += 2;
        }
        current = point(i);
    }
}

template <class Scanline>
void FillWithAgg(const Outline& outline, Picture& picture) {
    picture.Clear();
    agg::rasterizer_scanline_aa<> rasterizer;
    rasterizer.clip_box(0, 0, picture.width, picture.height);
    AddTo(rasterizer, outline);
    Scanline line;
    SpanWriter writer{picture};
    if (!rasterizer.rewind_scanlines()) return;
    line.reset(rasterizer.min_x(), rasterizer.max_x());
    while (rasterizer.sweep_scanline(line)) writer.render(line);
}
#endif

#ifdef VRL_BENCH_CAIRO
void AddTo(cairo_t* context, const Outline& outline) {
    const refhost::PathView path = outline.View();
    const auto point = [&](std::size_t i) { return refhost::Map(kPIVIdentity, path.points[i]); };
    for (std::size_t i = 0; i < path.Size(); ++i) {
        if (path.operators[i] == kPIVMove) cairo_move_to(context, point(i).x, point(i).y);
        if (path.operators[i] == kPIVLine) cairo_line_to(context, point(i).x, point(i).y);
        if (path.operators[i] == kPIVClose) cairo_close_path(context);
        if (path.operators[i] == kPIVCurve) {
            cairo_curve_to(context, point(i).x, point(i).y, point(i + 1).x, point(i + 1).y, point(i + 2).x, point(i + 2).y);
            i += 2;
        }
    }
}

template <cairo_antialias_t antialias>
void FillWithCairo(const Outline& outline, Picture& picture) {
    picture.Clear();
    cairo_surface_t* const surface = cairo_image_surface_create_for_data(picture.samples.data(), CAIRO_FORMAT_A8, picture.width,
                                                                         picture.height, picture.width);
    cairo_t* const context = cairo_create(surface);
    cairo_set_antialias(context, antialias);
    cairo_set_fill_rule(context, CAIRO_FILL_RULE_WINDING);
    AddTo(context, outline);
    cairo_fill(context);
    cairo_destroy(context);
    cairo_surface_destroy(surface);
}
#endif

struct NamedFiller {
    const char* name;
    Filler fill;
};

std::vector<NamedFiller> Fillers() {
    return {
        {"FillPainter", &FillWithPainter<true>},
        {"FillPainterDraft", &FillWithPainter<false>},
#ifdef VRL_BENCH_AGG
        {"AggPacked", &FillWithAgg<agg::scanline_p8>},
        {"AggUnpacked", &FillWithAgg<agg::scanline_u8>},
#endif
#ifdef VRL_BENCH_CAIRO
        {"CairoGood", &FillWithCairo<CAIRO_ANTIALIAS_GOOD>},
        {"CairoBest", &FillWithCairo<CAIRO_ANTIALIAS_BEST>},
#endif
    };
}

struct NamedOutline {
    const char* name;
    Outline outline;
};

/// Outlines that fill most of a picture of this height.
std::vector<NamedOutline> Outlines(double height) {
    const double x = height * 8 / 9;
    const double y = height / 2;
    return {
        {"circle", support::Circle(x, y, 0.45 * height)},
        {"blob200", support::Blob(200, 0.4 * height, 1).Shifted(x, y)},
        {"glyph", bench::Glyph(bench::kSerifBold, U'&', 0.4 * height, 0.9 * height, height)},
        {"traced4000", support::RoughBlob(4000, 0.4 * height, 1).Shifted(x, y)},
        {"scribble", support::Scribble(40, 0.8 * height, 1).Shifted(0.5 * height, 0.1 * height)},
    };
}

/// Mean difference of two fills over the samples neither leaves empty or full, 8-bit levels.
double EdgeDifference(const Picture& a, const Picture& b) {
    double sum = 0;
    double count = 0;
    for (std::size_t i = 0; i < a.samples.size(); ++i) {
        if (a.samples[i] == b.samples[i] && (a.samples[i] == 0 || a.samples[i] == 255)) continue;
        sum += std::abs(a.samples[i] - b.samples[i]);
        ++count;
    }
    return count == 0 ? 0 : sum / count;
}

void BenchFill(benchmark::State& state, const Outline& outline, std::int32_t height, Filler fill) {
    constexpr double kMostDifference = 10;  // levels; peers sample coverage or sum overlaps
    Picture picture(height);
    Picture expected(height);
    FillWithPainter<true>(outline, expected);
    fill(outline, picture);
    if (EdgeDifference(picture, expected) > kMostDifference) state.SkipWithError("the fills differ");
    for (auto _ : state) {
        fill(outline, picture);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(picture.samples.size()));
}

void RegisterAll() {
    for (const std::int32_t height : {1080, 2160}) {
        for (const NamedOutline& shape : Outlines(height)) {
            if (shape.outline.View().Size() == 0) continue;
            for (const NamedFiller& filler : Fillers()) {
                const std::string name = std::string(filler.name) + "/" + std::to_string(height) + "/" + shape.name;
                benchmark::RegisterBenchmark(name.c_str(), [=, outline = shape.outline](benchmark::State& state) {
                    BenchFill(state, outline, height, filler.fill);
                })->Unit(benchmark::kMicrosecond);
            }
        }
    }
}

const bool g_registered = (RegisterAll(), true);

}  // namespace
