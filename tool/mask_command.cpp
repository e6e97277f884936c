#include "tool/mask_command.h"

#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "api/vrl.h"
#include "base/errors.h"
#include "base/fixed16.h"
#include "tool/failure.h"
#include "tool/library_session.h"
#include "tool/option_values.h"
#include "tool/output_file.h"
#include "tool/png_writer.h"
#include "tool/shape_file.h"
#include "tool/standard_stream.h"
#include "tool/work_progress.h"

namespace vrltool {
namespace {

struct MaskOptions {
    std::string shapes, output;
    PixelSize size;
    std::int32_t depth = 8;
    VRL_MaskParams params = {};
    M_Matrix3 transform = {};
    CombineMode combine = CombineMode::kAdd;
    bool print_touched = false;
};

constexpr const char* kExamples = R"(Examples:
  vrl mask hand.json --size 640x480 -o hand.png
  vrl mask hand.json --size 640x480 --feather 12,4 --depth 16 -o soft.png
  vrl mask icon.svg --size 512x512 --transform 10,0,0,10,0,0 --combine difference -o icon.png
  vrl mask icon.svg --size 48x48 --invert --combine intersect -o around.png
  vrl mask - --size 48x48 -o - < icon.svg > icon.png

Every shape gives one mask, and the masks are combined in the order of the file. A shape whose file names a mode uses
that one instead of --combine. The first mask starts from an empty picture under add, lighten and difference, and from a
full one under subtract, intersect and darken.)";

using MaskBuffer = std::unique_ptr<GW_UnoBuffer>;

MaskBuffer NewBuffer(const MaskOptions& options) {
    const auto [width, height] = options.size;
    try {
        return std::make_unique<GW_UnoBuffer>(width, height, options.depth);
    } catch (const std::bad_alloc&) {
        throw Failure(OutputName(options.output) + ": not enough memory for a mask of " + std::to_string(width) + "x" +
                      std::to_string(height));
    }
}

MaskBuffer NewClearBuffer(const MaskOptions& options) {
    MaskBuffer buffer = NewBuffer(options);
    ThrowIfFailed(buffer->IsDeep() ? GW_FillDeepUnoBuffer(0, buffer.get()) : GW_FillUnoBuffer(0, buffer.get()));
    return buffer;
}

struct RenderedMask {
    MaskBuffer total;
    std::vector<M_LRect> touched;  // one per shape
};

/// The first mask is rendered where the total grows; a second buffer is needed from the second shape on only.
RenderedMask RenderMasks(const std::vector<ShapeRecord>& records, const MaskOptions& options, WorkProgress& progress) {
    LibrarySession library;
    RenderedMask result;
    MaskBuffer mask;
    for (std::size_t i = 0; i < records.size(); ++i) {
        if (!mask) mask = NewBuffer(options);
        VRL_MaskParams params = options.params;
        progress.BeginPart(i);
        params.progress = progress.Callbacks();
        M_LRect& touched = result.touched.emplace_back();
        library.Check(VRL_MaskWithShape(records[i].shape.get(), &params, &options.transform, mask.get(), &touched),
                      InputName(options.shapes));

        const CombineMode mode = records[i].mode.value_or(options.combine);
        if (result.total) {
            Combine(mode, *mask, *result.total);
        } else {
            StartTotal(mode, *mask);
            result.total = std::move(mask);
        }
    }
    if (!result.total) result.total = NewClearBuffer(options);
    return result;
}

void PrintTouched(const std::vector<M_LRect>& rects) {
    for (const M_LRect& r : rects) std::printf("%d %d %d %d\n", r.left, r.top, r.right, r.bottom);
}

void RunMask(const MaskOptions& options) {
    const std::vector<ShapeRecord> records = LoadShapes(options.shapes);
    OutputFile output(options.output);
    WorkProgress progress(records.size() + 1);  // the last part is the writing
    const RenderedMask rendered = RenderMasks(records, options, progress);
    progress.BeginPart(records.size());
    WritePng(*rendered.total, output, progress);
    output.Commit();
    if (options.print_touched) PrintTouched(rendered.touched);
}

/// An option whose value `read` takes from its text. A complaint gets the option's name.
template <class Read>
CLI::Option* AddValue(CLI::App& command, const char* name, const char* value_name, const char* description, Read read) {
    const auto named_read = [name, read](const std::string& text) {
        try {
            read(text);
        } catch (const CLI::ValidationError& error) {
            throw CLI::ValidationError(name, error.what());
        }
    };
    return command.add_option_function<std::string>(name, named_read, description)->type_name(value_name);
}

void AddFileArguments(CLI::App& command, MaskOptions& options) {
    command.add_option("SHAPES", options.shapes, "SVG or JSON file, - for standard input")->required()->type_name("");
    command.add_option("-o,--output", options.output, "PNG file to write, - for standard output")->required()->type_name("FILE");
    AddValue(command, "--size", "WxH", "size of the mask in pixels", [&](const std::string& text) {
        options.size = ParseSize(text);
    })->required();
    AddValue(command, "--depth", "BITS", "bits per sample, 8 or 16",
             [&](const std::string& text) { options.depth = text == "16" ? kDeepDepth : 8; })
        ->check(CLI::IsMember({"8", "16"}))
        ->default_str("8");
}

void AddMaskArguments(CLI::App& command, MaskOptions& options) {
    VRL_MaskParams& params = options.params;
    params.opacity = kFixedOne;
    params.pixel_aspect = 1;
    params.quality = 1;
    ThrowIfFailed(M_SetIdentityMatrix(&options.transform));

    AddValue(command, "--feather", "X[,Y]", "softness of the edge in pixels", [&](const std::string& text) {
        const M_Vector2T<double> radii = ParseRadii(text);
        params.feather_x = ToFixed(radii.x);
        params.feather_y = ToFixed(radii.y);
    });
    AddValue(command, "--expand", "PX", "0; other distances are not supported by this version", [](const std::string& text) {
        if (ParseNumber(text, -kMaxSide, kMaxSide) != 0)
            throw CLI::ValidationError("a distance other than 0 is not supported by this version");
    });
    AddValue(command, "--opacity", "PCT", "level of full coverage in per cent", [&](const std::string& text) {
        params.opacity = ToFixed(ParseNumber(text, 0, 100) / 100);
    })->default_str("100");
    command.add_flag_callback(
        "--invert", [&] { params.invert = 1; }, "invert every shape's mask");
    AddValue(command, "--aspect", "R", "width of a pixel divided by its height", [&](const std::string& text) {
        params.pixel_aspect = ParseNumber(text, 0.01, 100);
    })->default_str("1");
    AddValue(command, "--quality", "NAME", "draft or best",
             [&](const std::string& text) { params.quality = text == "best" ? 1 : 0; })
        ->check(CLI::IsMember({"draft", "best"}))
        ->default_str("best");
    AddValue(command, "--falloff", "NAME", "course of a variable-width feather, smooth or linear",
             [&](const std::string& text) { params.variable_feather_option = text == "smooth" ? 0 : 1; })
        ->check(CLI::IsMember({"smooth", "linear"}))
        ->default_str("smooth");
    AddValue(command, "--transform", "a,b,c,d,tx,ty", "maps the shapes into the mask: x to a x + c y + tx, y to b x + d y + ty",
             [&](const std::string& text) { options.transform = ParseMatrix(text); });
}

void AddCombineArguments(CLI::App& command, MaskOptions& options) {
    AddValue(command, "--combine", "MODE", "add, subtract, intersect, lighten, darken or difference",
             [&](const std::string& text) { options.combine = *CombineModeNamed(text); })
        ->check(CLI::IsMember(std::vector<std::string>(std::begin(kCombineNames), std::end(kCombineNames))))
        ->default_str("add");
    command.add_flag("--touched", options.print_touched, "print the rectangle each mask touches: left top right bottom");
}

}  // namespace

void AddMaskCommand(CLI::App& program, Command& chosen) {
    const auto options = std::make_shared<MaskOptions>();
    CLI::App& command = *program.add_subcommand("mask", "Render shapes into a mask");
    AddFileArguments(command, *options);
    AddMaskArguments(command, *options);
    AddCombineArguments(command, *options);
    command.footer(kExamples);
    command.callback([options, &chosen] {
        if (options->print_touched && options->output == kStandardStream) {
            throw CLI::ValidationError("--touched and -o - would both write to standard output");
        }
        chosen = [options] { RunMask(*options); };
    });
}

}  // namespace vrltool
