#include "tool/apply_command.h"

#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "api/vrl.h"
#include "tool/failure.h"
#include "tool/library_session.h"
#include "tool/mask_options.h"
#include "tool/message.h"
#include "tool/option_values.h"
#include "tool/output_file.h"
#include "tool/png_reader.h"
#include "tool/png_writer.h"
#include "tool/shape_file.h"
#include "tool/standard_stream.h"
#include "tool/work_progress.h"
#include "tool/world_rows.h"

namespace vrltool {
namespace {

struct ApplyOptions {
    std::string layer, shapes, output;
    MaskOptions masks;
};

constexpr const char* kExamples = R"(Examples:
  vrl apply photo.png hand.json -o cut.png
  vrl apply photo.png hand.json --feather 6 --expand 2 -o soft.png
  vrl apply photo.png icon.svg --transform 10,0,0,10,0,0 --invert -o hole.png
  vrl apply - hand.json -o - < photo.png > cut.png

The masks are joined by union, whatever their order, and multiplied into the alpha the picture has. Shapes whose file
names another mode than add are refused. The result has red, green, blue and alpha in 8 or 16 bits, as the picture does,
and its colour profile and resolution; with a profile for grey it has grey and alpha. Masks have 256 levels in both depths.
Distances are in the picture's pixels.)";

void RequireAdding(const std::vector<ShapeRecord>& records, const std::string& file) {
    for (std::size_t i = 0; i < records.size(); ++i) {
        const CombineMode mode = records[i].mode.value_or(CombineMode::kAdd);
        if (mode == CombineMode::kAdd) continue;
        throw Failure(InputName(file) + ": shape " + std::to_string(i + 1) + " has the mode " + NameOf(mode) +
                      ", but apply can only add masks");
    }
}

/// Joins the masks of all shapes to the world's alpha.
std::vector<M_LRect> MergeMasks(const std::vector<ShapeRecord>& records, const ApplyOptions& options, GW_World& world,
                                WorkProgress& progress, std::size_t first_part) {
    LibrarySession library;
    GW_LayerDef layer = {world.width, world.height, &world};
    std::vector<M_LRect> touched;
    for (std::size_t i = 0; i < records.size(); ++i) {
        progress.BeginPart(first_part + i);
        VRL_MaskParams params = options.masks.params;
        params.progress = progress.Callbacks();
        records[i].shape->Transform(options.masks.transform);
        library.Check(VRL_MaskWithWorld(records[i].shape.get(), &params, &layer, &touched.emplace_back()),
                      InputName(options.shapes));
    }
    return touched;
}

/// The alpha of every pixel, which becomes 0 in the world.
template <class P>
std::vector<P> TakeAlpha(GW_World& world) {
    std::vector<P> alpha;
    alpha.reserve(static_cast<std::size_t>(world.width) * static_cast<std::size_t>(world.height));
    for (std::int32_t y = 0; y < world.height; ++y) {
        const std::span<P> row = RowOf<P>(world, y);
        for (std::size_t i = 0; i < row.size(); i += kComponents) alpha.push_back(std::exchange(row[i], P{0}));
    }
    return alpha;
}

/// False when all of the alphas were 0 before.
template <class P>
bool MultiplyAlpha(const std::vector<P>& factors, GW_World& world) {
    constexpr std::uint32_t kMax = SampleTraits<P>::kMax;
    auto factor = factors.begin();
    bool any = false;
    for (std::int32_t y = 0; y < world.height; ++y) {
        const std::span<P> row = RowOf<P>(world, y);
        for (std::size_t i = 0; i < row.size(); i += kComponents) {
            any |= row[i] != 0;
            row[i] = static_cast<P>((std::uint32_t{row[i]} * *factor++ + kMax / 2) / kMax);
        }
    }
    return any;
}

/// What `merge` joins to an alpha of 0 is the share that each pixel keeps of its own. False when that is nothing.
template <class P, class Merge>
bool CutOut(GW_World& world, Merge merge) {
    const std::vector<P> alpha = TakeAlpha<P>(world);
    merge();
    return MultiplyAlpha(alpha, world);
}

/// What is told once the picture is written.
struct Applied {
    std::string layer_note;  // empty for none
    bool has_mask;
    std::vector<M_LRect> touched;  // one per shape
};

Applied Apply(const std::vector<ShapeRecord>& records, const ApplyOptions& options) {
    WorkProgress progress(records.size() + 2);  // reading the picture, the masks, writing
    PngContent layer = ReadPng(options.layer, progress);
    OutputFile output(options.output);
    Applied applied = {std::move(layer.note), false, {}};
    const auto merge = [&] { applied.touched = MergeMasks(records, options, *layer.world, progress, 1); };
    applied.has_mask = IsDeep(*layer.world) ? CutOut<GW_Pixel16>(*layer.world, merge) : CutOut<GW_Pixel8>(*layer.world, merge);
    progress.BeginPart(records.size() + 1);
    WritePng(*layer.world, output, progress, layer.appearance);
    output.Commit();
    return applied;
}

void RunApply(const ApplyOptions& options) {
    const std::vector<ShapeRecord> records = LoadShapes(options.shapes);
    NoteWhenEmpty(records, options.shapes);
    RequireAdding(records, options.shapes);
    const Applied applied = Apply(records, options);
    if (!applied.layer_note.empty()) PrintMessage(InputName(options.layer) + ": " + applied.layer_note);
    if (!records.empty() && !applied.has_mask) NoteEmptyMask(options.shapes);
    if (options.masks.print_touched) PrintTouched(applied.touched);
}

}  // namespace

void AddApplyCommand(CLI::App& program, Command& chosen) {
    const auto options = std::make_shared<ApplyOptions>();
    CLI::App& command = *program.add_subcommand("apply", "Cut a picture out by the masks of shapes");
    command.add_option("LAYER", options->layer, "PNG file, - for standard input")->required()->type_name("");
    command.add_option("SHAPES", options->shapes, "SVG or JSON file, - for standard input")->required()->type_name("");
    AddPngOutput(command, options->output);
    AddMaskOptions(command, options->masks);
    command.footer(kExamples);
    command.callback([options, &chosen] {
        RequireOneWriter(options->masks, options->output);
        if (options->layer == kStandardStream && options->shapes == kStandardStream) {
            throw CLI::ValidationError("LAYER and SHAPES cannot both be standard input");
        }
        chosen = [options] { RunApply(*options); };
    });
}

}  // namespace vrltool
