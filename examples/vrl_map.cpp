// vrl_map IMAGE.png -o OUT.json: the planar map that tracing makes of a picture, before any curve is fitted, as JSON.
//     {"width", "height",
//      "regions": [{"index", "colour": 0 or 255, "area", "enclosing_hole", "outer": edge, "holes": [edges]}],
//      "edges": [{"number", "a": region or -1, "b": region or -1, "closed", "points": [[x, y], ...]}]}
// Points follow the edge's direction, region a on the left of it on screen and b on the right; a closed edge does not repeat
// its first point.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "base/errors.h"
#include "refhost/refhost.h"
#include "tool/failure.h"
#include "tool/output_file.h"
#include "tool/png_reader.h"
#include "tool/work_progress.h"
#include "tool/world_rows.h"
#include "trace/color_table.h"
#include "trace/preprocess.h"
#include "trace/region_merge.h"
#include "trace/trace.h"

namespace {

struct MapOptions {
    std::string image, output;
    VRL_AutoTraceParams params;  // no curves are fitted: tolerance and corners are not read
};

const std::map<std::string, std::int32_t> kChannels = {
    {"luminance", kVRLTraceLuminance}, {"red", kVRLTraceRed},     {"green", kVRLTraceGreen},
    {"blue", kVRLTraceBlue},           {"alpha", kVRLTraceAlpha}, {"hue", kVRLTraceHue},
    {"lightness", kVRLTraceLightness}, {"value", kVRLTraceValue}, {"saturation", kVRLTraceSaturation}};

RPTrace TraceOf(const MapOptions& options) {
    vrltool::WorkProgress progress(1);
    const std::unique_ptr<GW_World> world = vrltool::ReadPng(options.image, progress).world;
    if (vrltool::IsDeep(*world)) throw vrltool::Failure(options.image + ": only pictures of 8 bits can be traced");
    VRLp_TraceContext context = VRLp_FillContext(options.params, *world);
    context.bitmap.reset(GW_World::New(world->width, world->height, world->Depth(), 0));
    if (!context.bitmap) throw std::bad_alloc();
    VRLp_Preprocess(context);
    auto raster = ts::make_auto<RPRaster>(*context.bitmap);
    const std::int32_t minimum_area = VRLp_BuildOptions(context).minimum_area;
    RPTrace trace(raster, minimum_area, false);
    if (minimum_area > 0) RPMergeSmallRegions(&trace, minimum_area);
    return trace;
}

/// Elements of a JSON array, with commas between them.
class List {
 public:
    explicit List(std::string& text) : text_(text) { text_ += '['; }
    std::string& Next() {
        text_ += std::exchange(separator_, ",");
        return text_;
    }
    void End() { text_ += ']'; }

 private:
    std::string& text_;
    const char* separator_ = "";
};

std::string Field(const char* name, std::int32_t value) { return std::string("\"") + name + "\":" + std::to_string(value); }

void AppendRegion(const RPTrace& trace, const RPRegion& region, std::string& text) {
    const std::int32_t colour = RPColorTable::OfThread().Entry(region.colour).colour.components[0];
    text += "\n{" + Field("index", region.index) + ',' + Field("colour", colour) + ',' + Field("area", region.area) + ',' +
            Field("enclosing_hole", region.enclosing_hole) + ',' + Field("outer", region.outer_edge) + ",\"holes\":";
    List holes(text);
    for (std::int32_t hole = region.first_hole; hole != kNone;) {
        const RPHole& record = trace.holes[static_cast<std::size_t>(hole)];
        holes.Next() += std::to_string(record.first_edge);
        hole = record.next;
    }
    holes.End();
    text += '}';
}

void AppendEdge(const RPGraph& graph, std::int32_t number, std::string& text) {
    const RPEdge& edge = graph.Edge(number);
    text += "\n{" + Field("number", number) + ',' + Field("a", edge.region_a) + ',' + Field("b", edge.region_b) +
            ",\"closed\":" + (edge.closed ? "true" : "false") + ",\"points\":";
    List points(text);
    RPEdgePoints next(graph, edge);
    for (std::int32_t i = 0; i < PointCount(edge); ++i) {
        const CFPoint point = next();
        points.Next() += '[' + std::to_string(static_cast<int>(point.x)) + ',' + std::to_string(static_cast<int>(point.y)) + ']';
    }
    points.End();
    text += '}';
}

std::string MapText(const RPTrace& trace) {
    std::string text = '{' + Field("width", trace.width) + ',' + Field("height", trace.height) + ",\n\"regions\":";
    List regions(text);
    for (const RPRegion& region : trace.regions) AppendRegion(trace, region, regions.Next());
    regions.End();
    text += ",\n\"edges\":";
    List edges(text);
    for (std::int32_t i = 0; i < static_cast<std::int32_t>(trace.graph->edges.size()); ++i)
        AppendEdge(*trace.graph, i, edges.Next());
    edges.End();
    return text + "}\n";
}

void Run(const MapOptions& options) {
    const RPTrace trace = TraceOf(options);
    vrltool::OutputFile output(options.output);
    output.Write(MapText(trace));
    output.Commit();
}

}  // namespace

int main(int argc, char** argv) {
    MapOptions options;
    CLI::App program("Writes the planar map that tracing makes of a picture.", "vrl_map");
    program.add_option("IMAGE", options.image, "PNG file of 8 bits")->required()->type_name("");
    program.add_option("-o,--output", options.output, "JSON file to write, - for standard output")->required()->type_name("FILE");
    program.add_option("--channel", options.params.channel, "value of a pixel that is compared")
        ->transform(CLI::CheckedTransformer(kChannels));
    program.add_option("--threshold", options.params.threshold, "set pixels are those not below it, per cent")
        ->capture_default_str();
    program.add_option("--min-area", options.params.minimum_area, "merge smaller regions into their neighbours, pixels");
    program.add_flag_callback(
        "--invert", [&] { options.params.invert = 1; }, "map the negative");
    CLI11_PARSE(program, argc, argv);
    refhost::Initialize();
    try {
        Run(options);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vrl_map: %s\n", error.what());
    } catch (int code) {
        std::fprintf(stderr, "vrl_map: %s: failed with code %d\n", options.image.c_str(), code);
    }
    return 1;
}
