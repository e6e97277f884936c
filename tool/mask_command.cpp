#include "tool/mask_command.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "api/vrl.h"
#include "base/errors.h"
#include "tool/failure.h"
#include "tool/library_session.h"
#include "tool/mask_options.h"
#include "tool/option_values.h"
#include "tool/output_file.h"
#include "tool/overlay.h"
#include "tool/png_writer.h"
#include "tool/shape_file.h"
#include "tool/standard_stream.h"
#include "tool/work_progress.h"

namespace vrltool {
namespace {

struct PictureOptions {
    std::string shapes, output;
    PixelSize size;
    std::int32_t depth = 8;
    MaskOptions masks;
    CombineMode combine = CombineMode::kAdd;
    OverlayOptions overlay;
};

constexpr const char* kExamples = R"(Examples:
  vrl mask hand.json --size 640x480 -o hand.png
  vrl mask hand.json --size 640x480 --feather 12,4 --depth 16 -o soft.png
  vrl mask hand.json --size 640x480 --expand -3.5 -o inside.png
  vrl mask icon.svg --size 512x512 --transform 10,0,0,10,0,0 --combine difference -o icon.png
  vrl mask icon.svg --size 48x48 --invert --combine intersect -o around.png
  vrl mask - --size 48x48 -o - < icon.svg > icon.png
  vrl mask hand.json --size 640x480 --feather 8 -o hand.png --overlay look.png

Every shape gives one mask, and the masks are combined in the order of the file. A shape whose file names a mode uses
that one instead of --combine. The first mask starts from an empty picture under add, lighten and difference, and from a
full one under subtract, intersect and darken.

--expand and the radii of feather points are in the shapes' own pixels, before --transform; --feather is in the mask's.

An overlay shows the mask dimmed and magnified, with the outlines in red, smooth anchors as blue dots, corners as black squares,
handles in blue, and in green the feather points with lines from the outline to their radius.)";

using MaskBuffer = std::unique_ptr<GW_UnoBuffer>;

MaskBuffer NewBuffer(const PictureOptions& options) {
    const auto [width, height] = options.size;
    try {
        return std::make_unique<GW_UnoBuffer>(width, height, options.depth);
    } catch (const std::bad_alloc&) {
        throw Failure(OutputName(options.output) + ": not enough memory for a mask of " + std::to_string(width) + "x" +
                      std::to_string(height));
    }
}

MaskBuffer NewClearBuffer(const PictureOptions& options) {
    MaskBuffer buffer = NewBuffer(options);
    ThrowIfFailed(buffer->IsDeep() ? GW_FillDeepUnoBuffer(0, buffer.get()) : GW_FillUnoBuffer(0, buffer.get()));
    return buffer;
}

/// Outside of it the mask is 0. A feather of varying width may reach beyond the rectangle that is reported, so it counts whole.
M_LRect CombinedRect(const DY_Shape& shape, const M_LRect& touched, const GW_UnoBuffer& mask) {
    if (shape.GetFeatherPtCount(0) != 0) return {0, 0, mask.width, mask.height};
    return touched;
}

struct RenderedMask {
    MaskBuffer total;
    std::vector<M_LRect> touched;  // one per shape
};

/// The first mask is rendered where the total grows; a second buffer is needed from the second shape on only.
RenderedMask RenderMasks(const std::vector<ShapeRecord>& records, const PictureOptions& options, WorkProgress& progress,
                         LibrarySession& library) {
    RenderedMask result;
    MaskBuffer mask;
    for (std::size_t i = 0; i < records.size(); ++i) {
        if (!mask) mask = NewBuffer(options);
        VRL_MaskParams params = options.masks.params;
        progress.BeginPart(i);
        params.progress = progress.Callbacks();
        M_LRect& touched = result.touched.emplace_back();
        library.Check(VRL_MaskWithShape(records[i].shape.get(), &params, &options.masks.transform, mask.get(), &touched),
                      InputName(options.shapes));

        const CombineMode mode = records[i].mode.value_or(options.combine);
        if (result.total) {
            Combine(mode, *mask, CombinedRect(*records[i].shape, touched, *mask), *result.total);
        } else {
            StartTotal(mode, *mask);
            result.total = std::move(mask);
        }
    }
    if (!result.total) result.total = NewClearBuffer(options);
    return result;
}

Overlay DrawOverlay(const GW_UnoBuffer& mask, const std::vector<ShapeRecord>& records, const PictureOptions& options,
                    LibrarySession& library) {
    Overlay overlay(mask, options.overlay.scale, options.overlay.path);
    overlay.Draw(records, AffineOf(options.masks.transform), options.masks.params.pixel_aspect, library);
    return overlay;
}

RenderedMask WriteMask(const std::vector<ShapeRecord>& records, const PictureOptions& options) {
    OutputFile output(options.output);
    std::optional<OutputFile> overlay_output;
    if (!options.overlay.path.empty()) overlay_output.emplace(options.overlay.path);
    WorkProgress progress(records.size() + 2);  // the last parts are the overlay and the writing
    LibrarySession library;
    RenderedMask rendered = RenderMasks(records, options, progress, library);
    progress.BeginPart(records.size());
    if (overlay_output) {
        WritePng(DrawOverlay(*rendered.total, records, options, library).Picture(), *overlay_output, progress);
    }
    progress.BeginPart(records.size() + 1);
    WritePng(*rendered.total, output, progress);
    output.Commit();
    if (overlay_output) overlay_output->Commit();
    return rendered;
}

template <class P>
bool IsEmpty(const GW_UnoBuffer& mask) {
    return std::all_of(mask.Row<P>(0), mask.Row<P>(mask.height), [](P sample) { return sample == 0; });
}

void RunMask(const PictureOptions& options) {
    const std::vector<ShapeRecord> records = LoadShapes(options.shapes);
    NoteWhenEmpty(records, options.shapes);
    const auto [mask, touched] = WriteMask(records, options);
    if (!records.empty() && (mask->IsDeep() ? IsEmpty<GW_Pixel16>(*mask) : IsEmpty<GW_Pixel8>(*mask))) {
        NoteEmptyMask(options.shapes);
    }
    if (options.masks.print_touched) PrintTouched(touched);
}

void AddFileArguments(CLI::App& command, PictureOptions& options) {
    command.add_option("SHAPES", options.shapes, "SVG or JSON file, - for standard input")->required()->type_name("");
    AddPngOutput(command, options.output);
    AddValue(command, "--size", "WxH", "size of the mask in pixels", [&](const std::string& text) {
        options.size = ParseSize(text);
    })->required();
    AddValue(command, "--depth", "BITS", "bits per sample, 8 or 16",
             [&](const std::string& text) { options.depth = text == "16" ? kDeepDepth : 8; })
        ->check(CLI::IsMember({"8", "16"}))
        ->default_str("8");
}

void AddCombineArgument(CLI::App& command, PictureOptions& options) {
    AddValue(command, "--combine", "MODE", "how masks are joined: add, subtract, intersect, lighten, darken or difference",
             [&](const std::string& text) { options.combine = *CombineModeNamed(text); })
        ->check(CLI::IsMember(std::vector<std::string>(std::begin(kCombineNames), std::end(kCombineNames))))
        ->default_str("add");
}

}  // namespace

void AddMaskCommand(CLI::App& program, Command& chosen) {
    const auto options = std::make_shared<PictureOptions>();
    CLI::App& command = *program.add_subcommand("mask", "Render shapes into a mask");
    AddFileArguments(command, *options);
    AddMaskOptions(command, options->masks);
    AddCombineArgument(command, *options);
    AddOverlayOptions(command, options->overlay, "picture of the outlines over the mask to write, PNG");
    command.footer(kExamples);
    command.callback([options, &chosen] {
        RequireOneWriter(options->masks, options->output);
        RequireOneWriter(options->masks, options->overlay.path);
        if (options->overlay.path == options->output) {
            throw CLI::ValidationError("--overlay", "mask and overlay would both be written to " + OutputName(options->output));
        }
        chosen = [options] { RunMask(*options); };
    });
}

}  // namespace vrltool
