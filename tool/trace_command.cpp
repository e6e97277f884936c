#include "tool/trace_command.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "api/vrl.h"
#include "host/status_of.h"
#include "tool/failure.h"
#include "tool/library_session.h"
#include "tool/message.h"
#include "tool/option_values.h"
#include "tool/output_file.h"
#include "tool/overlay.h"
#include "tool/parallel_jobs.h"
#include "tool/png_reader.h"
#include "tool/png_writer.h"
#include "tool/shape_file.h"
#include "tool/standard_stream.h"
#include "tool/trace_report.h"
#include "tool/work_progress.h"
#include "tool/world_rows.h"

namespace vrltool {
namespace {

namespace fs = std::filesystem;

constexpr const char *kStatsTable = "true", *kStatsJson = "json";  // of the flag: alone, and with a value

struct TraceOptions {
    std::vector<std::string> images;
    std::string output;
    std::string format;  // of the files; empty when their names tell it
    VRL_AutoTraceParams params;
    M_Matrix3 transform = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    bool transforms = false;
    OverlayOptions overlay;
    bool reduces = false;
    std::string stats;  // kStatsTable, kStatsJson or empty for none
    std::size_t jobs = std::max(std::thread::hardware_concurrency(), 1U);
};

const std::map<std::string, VRL_TraceChannel> kChannels = {{"luminance", kVRLTraceLuminance}, {"red", kVRLTraceRed},
                                                           {"green", kVRLTraceGreen},         {"blue", kVRLTraceBlue},
                                                           {"alpha", kVRLTraceAlpha},         {"hue", kVRLTraceHue},
                                                           {"lightness", kVRLTraceLightness}, {"saturation", kVRLTraceSaturation},
                                                           {"value", kVRLTraceValue}};

constexpr const char* kExamples = R"(Examples:
  vrl trace logo.png -o logo.svg
  vrl trace logo.png --channel alpha --tolerance 0.5 --corner-angle 30 -o logo.json
  vrl trace scan.png --blur 1.5 --threshold 40 --invert --min-area 12 -o scan.svg --stats
  vrl trace page1.png page2.png page3.png --jobs 2 -o traced/
  vrl trace - -o - < logo.png > logo.json
  vrl trace logo.png -o - --format svg > logo.svg
  vrl trace logo.png -o logo.svg --overlay look.png

A pixel is set when the value of its channel is at least the threshold; --invert turns the picture into its negative first.
Every outline and every hole of the set pixels becomes a closed shape. A drawing (.svg) shows all of them as one path, filled by
the even-odd rule; a JSON file holds one shape an outline.

Hue, lightness and saturation have wider ranges than the threshold, 0 to 32767, 0 to 65280 and 0 to 32767, and are compared with
the same 0 to 255: any colour with a hue above 3 degrees is set, for one.

Several pictures go into a folder, each to a file named after it, and their overlays into a folder too.

An overlay shows the picture, or its alpha where that is traced, dimmed and magnified, with the fitted outlines in red, smooth
anchors as blue dots, corners as black squares, and handles in blue.)";

constexpr const char* kNoShapes =
    "there is nothing to trace; try a lower --threshold, another --channel, --invert or a smaller --min-area";

using Shapes = std::vector<boost::shared_ptr<DY_Shape>>;

std::unique_ptr<GW_World> ReducedTo8Bits(const GW_World& deep) {
    constexpr std::uint32_t kMax = SampleTraits<GW_Pixel8>::kMax, kDeepMax = SampleTraits<GW_Pixel16>::kMax;
    std::unique_ptr<GW_World> world(GW_World::New(deep.width, deep.height, 8, 0));
    if (!world) throw std::bad_alloc();
    for (std::int32_t y = 0; y < deep.height; ++y) {
        std::ranges::transform(RowOf<GW_Pixel16>(deep, y), RowOf<GW_Pixel8>(*world, y).begin(), [](std::uint32_t sample) {
            return static_cast<GW_Pixel8>((sample * kMax + kDeepMax / 2) / kDeepMax);
        });
    }
    return world;
}

std::unique_ptr<GW_World> ReadPicture(const std::string& image, bool reduces, Traced& traced) {
    WorkProgress unseen(1, WorkProgress::Bar::kNever);
    PngContent content = ReadPng(image, unseen);
    if (!content.note.empty()) traced.notes.push_back(std::move(content.note));
    if (!IsDeep(*content.world)) return std::move(content.world);
    if (!reduces) throw Failure(InputName(image) + ": has 16 bits a sample, tracing takes 8; --reduce reduces them");
    traced.notes.push_back("reduced from 16 to 8 bits");
    return ReducedTo8Bits(*content.world);
}

void TraceWorld(const GW_World& world, const VRL_AutoTraceParams& params, const std::string& subject, LibrarySession& library,
                Traced& traced) {
    traced.width = world.width;
    traced.height = world.height;
    Shapes shapes;
    const auto start = std::chrono::steady_clock::now();
    const std::int32_t status = VRLp_StatusOf([&] { VRL_NewMasksFromWorld(&world, &params, shapes); });
    traced.milliseconds = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    library.Check(status, subject);
    for (auto& shape : shapes) traced.shapes.push_back({std::move(shape), std::nullopt});
    if (traced.shapes.empty()) traced.notes.push_back(kNoShapes);
}

M_FloatRect PictureOf(const Traced& traced, const TraceOptions& options) {
    const M_FloatRect image = {0, 0, static_cast<double>(traced.width), static_cast<double>(traced.height)};
    M_FloatRect picture;
    M_TransformBounds(&options.transform, &image, &picture);
    return picture;
}

/// From the shapes' pixels back to the image's; no value when the transform loses some.
std::optional<Affine> Inverse(const M_Matrix3& transform) {
    M_Matrix3 inverse;
    if (M_InverseMatrixQuiet(&transform, &inverse) != 0) return std::nullopt;
    return AffineOf(inverse);
}

bool IsFolder(const std::string& path) {
    std::error_code ignored;  // what cannot be looked at is no folder
    return (!path.empty() && !fs::path(path).has_filename()) || fs::is_directory(path, ignored);
}

void MakeFolder(const std::string& path) {
    std::error_code error;
    fs::create_directories(path, error);
    if (error) throw Failure(path + ": " + error.message());
}

/// The file for each picture: `output` itself or, in that folder, one named after the picture.
std::vector<std::string> OutputPaths(const TraceOptions& options, const std::string& output, const std::string& ending) {
    if (!IsFolder(output)) return {output};
    std::vector<std::string> paths;
    for (const std::string& image : options.images) {
        const fs::path stem = image == kStandardStream ? fs::path("stdin") : fs::path(image).stem();
        paths.push_back((fs::path(output) / stem).string() + ending);
    }
    return paths;
}

std::vector<std::string> ShapePaths(const TraceOptions& options) {
    return OutputPaths(options, options.output, options.format.empty() ? ".svg" : '.' + options.format);
}

/// None without overlays. Their names never are those of the pictures.
std::vector<std::string> OverlayPaths(const TraceOptions& options) {
    if (options.overlay.path.empty()) return {};
    return OutputPaths(options, options.overlay.path, ".overlay.png");
}

void RequireDistinct(const std::vector<std::string>& paths) {
    std::set<std::string> seen;
    for (const std::string& path : paths) {
        if (!seen.insert(path).second) throw CLI::ValidationError("two results would both be written to " + OutputName(path));
    }
}

/// The JSON holds the notes and failures; without it the notes come a line each.
void PrintReport(const TraceOptions& options, const std::vector<Traced>& results) {
    if (options.stats == kStatsJson) {
        std::fputs(StatsJson(results).c_str(), stderr);
        return;
    }
    for (const Traced& traced : results) {
        for (const std::string& note : traced.notes) PrintMessage(traced.image + ": " + note);
    }
    if (options.stats == kStatsTable) std::fputs(StatsTable(results).c_str(), stderr);
}

Overlay DrawOverlay(const GW_World& world, const std::vector<ShapeRecord>& shapes, const TraceOptions& options,
                    const std::string& path, LibrarySession& library) {
    constexpr double kSquarePixels = 1;
    Overlay overlay(world, options.params.channel == kVRLTraceAlpha, options.overlay.scale, path);
    overlay.Draw(shapes, *Inverse(options.transform), kSquarePixels, library);
    return overlay;
}

void WriteOverlay(const Overlay& overlay, const std::string& path) {
    WorkProgress unseen(1, WorkProgress::Bar::kNever);
    OutputFile output(path);
    WritePng(overlay.Picture(), output, unseen);
    output.Commit();
}

/// Each picture's results; one that fails stops no other.
std::vector<Traced> TracePictures(const TraceOptions& options) {
    constexpr std::int32_t kSteps = 3;  // reading, tracing, writing
    const std::vector<std::string> paths = ShapePaths(options), overlay_paths = OverlayPaths(options);
    VRL_AutoTraceParams params = options.params;
    params.layer_transform = options.transforms ? &options.transform : nullptr;

    LibrarySession library;
    std::vector<Traced> results(options.images.size());
    const auto trace = [&](std::size_t i, const JobCalls& calls) {
        Traced& traced = results[i];
        const std::unique_ptr<GW_World> world = ReadPicture(options.images[i], options.reduces, traced);
        calls.step_done();
        TraceWorld(*world, params, traced.image, library, traced);
        calls.step_done();
        ShapeFileExtras extras = {.canvas = PictureOf(traced, options), .total_ms = {}};
        if (!options.stats.empty()) extras.total_ms = traced.milliseconds;
        std::optional<Overlay> overlay;
        if (!overlay_paths.empty()) overlay = DrawOverlay(*world, traced.shapes, options, overlay_paths[i], library);
        calls.commit([&] {
            if (overlay) WriteOverlay(*overlay, overlay_paths[i]);
            OutputFile output(paths[i]);
            WriteShapes(traced.shapes, extras, ShapeWriterFor(paths[i], options.format), output);
            output.Commit();
        });
        calls.step_done();
    };
    for (std::size_t i = 0; i < results.size(); ++i) results[i].image = InputName(options.images[i]);
    const std::vector<std::optional<std::string>> complaints = RunJobs(results.size(), options.jobs, kSteps, trace);
    for (std::size_t i = 0; i < results.size(); ++i) results[i].failure = complaints[i];
    return results;
}

void RunTrace(const TraceOptions& options) {
    for (const std::string& path : {options.output, options.overlay.path}) {
        if (IsFolder(path)) MakeFolder(path);
    }
    const std::vector<Traced> results = TracePictures(options);
    PrintReport(options, results);
    FailedFiles failed;
    for (const Traced& traced : results) {
        if (traced.failure) failed.complaints.push_back(*traced.failure);
    }
    if (failed.complaints.empty()) return;
    if (options.stats == kStatsJson) failed.complaints.clear();  // it has told them
    throw failed;
}

void AddFileArguments(CLI::App& command, TraceOptions& options) {
    command.add_option("IMAGE", options.images, "PNG files, - for standard input")->required()->type_name("");
    AddValue(command, "-o,--output", "FILE", "SVG or JSON file to write, - for standard output, or a folder (FOLDER/)",
             [&](const std::string& text) { options.output = ParseOutputName(text); })
        ->required();
    AddFormatOption(command, options.format, "kind of the files, svg or json, where their names do not tell it")
        ->default_str("svg in a folder, else json");
    AddValue(command, "--jobs", "N", "pictures traced at the same time", [&](const std::string& text) {
        options.jobs = static_cast<std::size_t>(ParseWhole(text, 1, 256));
    })->default_str("one a processor core");
    command.add_flag("--reduce", options.reduces, "take pictures of 16 bits, reduced to 8");
    command
        .add_flag("--stats", options.stats,
                  "print sizes, counts and times, --stats=json as JSON; JSON files get the time as \"total_ms\"")
        ->check([](const std::string& text) {
            return text == kStatsTable || text == kStatsJson ? std::string() : '"' + text + "\" is not json";
        });
}

void AddTracingArguments(CLI::App& command, TraceOptions& options) {
    VRL_AutoTraceParams& params = options.params;
    const auto add_number = [&](const char* name, const char* unit, const char* description, float& value, double high) {
        AddValue(command, name, unit, description, [&value, high](const std::string& text) {
            value = static_cast<float>(ParseNumber(text, 0, high));
        })->default_str(CLI::detail::to_string(value));
    };
    constexpr double kPercent = 100, kMostPixels = 2147483647;
    AddValue(command, "--channel", "NAME",
             "what is compared: luminance, red, green, blue, alpha, hue, lightness, saturation or value",
             [&](const std::string& text) { params.channel = kChannels.at(text); })
        ->check(CLI::IsMember(kChannels))
        ->default_str("luminance");
    add_number("--threshold", "PCT", "set pixels are those not below it", params.threshold, kPercent);
    add_number("--tolerance", "PX", "how far curves may stray from the pixels' outline", params.tolerance, kMaxSide);
    add_number("--blur", "PX", "radius of a blur before the threshold", params.blur_radius, kMaxSide);
    command.add_flag_callback(
        "--invert", [&] { params.invert = 1; }, "trace the negative");
    add_number("--min-area", "PX", "merge smaller regions into their neighbours", params.minimum_area, kMostPixels);
    add_number("--corner-angle", "PCT", "outlines that turn further have a corner, in per cent of half a turn",
               params.corner_angle, kPercent);
    AddValue(command, "--transform", "a,b,c,d,tx,ty", "maps the shapes: x to a x + c y + tx, y to b x + d y + ty",
             [&](const std::string& text) {
                 options.transform = ParseMatrix(text);
                 options.transforms = true;
             });
}

void CheckOverlay(const TraceOptions& options) {
    if (options.overlay.path.empty()) return;
    if (options.images.size() > 1 && !IsFolder(options.overlay.path)) {
        throw CLI::ValidationError("--overlay", "several pictures need a folder for their overlays, --overlay FOLDER/");
    }
    if (!Inverse(options.transform)) {
        throw CLI::ValidationError("--overlay", "shapes are drawn over the picture only with a --transform that can be undone");
    }
}

void CheckOutput(const TraceOptions& options) {
    CheckOverlay(options);
    std::vector<std::string> paths = ShapePaths(options);
    std::ranges::copy(OverlayPaths(options), std::back_inserter(paths));
    RequireDistinct(paths);
    if (IsFolder(options.output)) return;
    if (options.images.size() > 1) throw CLI::ValidationError("several pictures need a folder to be written to, -o FOLDER/");
    if (ShapeWriterFor(options.output, options.format) == nullptr) {
        const std::string or_folder = options.format.empty() ? ", nor in / for a folder" : "";
        throw CLI::ValidationError("-o", ExplainNoShapeWriter(options.output, options.format) + or_folder);
    }
}

}  // namespace

void AddTraceCommand(CLI::App& program, Command& chosen) {
    const auto options = std::make_shared<TraceOptions>();
    CLI::App& command = *program.add_subcommand("trace", "Trace pictures into shapes");
    AddFileArguments(command, *options);
    AddTracingArguments(command, *options);
    AddOverlayOptions(command, options->overlay, "picture of the outlines over the IMAGE to write, PNG, or a folder (FOLDER/)");
    command.footer(kExamples);
    command.callback([options, &chosen] {
        CheckOutput(*options);
        chosen = [options] { RunTrace(*options); };
    });
}

}  // namespace vrltool
