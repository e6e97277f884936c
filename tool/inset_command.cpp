#include "tool/inset_command.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "api/vrl.h"
#include "host/status_of.h"
#include "tool/library_session.h"
#include "tool/message.h"
#include "tool/option_values.h"
#include "tool/output_file.h"
#include "tool/shape_file.h"
#include "tool/standard_stream.h"
#include "tool/work_progress.h"

namespace vrltool {
namespace {

struct InsetOptions {
    std::string shapes, output, format;
    double distance = 0;
    double aspect = 1;
    VRL_Join join = kVRLJoinRound;
};

const std::map<std::string, VRL_Join> kJoins = {{"miter", kVRLJoinMiter}, {"round", kVRLJoinRound}, {"bevel", kVRLJoinBevel}};

constexpr const char* kExamples = R"(Examples:
  vrl inset hand.json --distance 4 -o smaller.json
  vrl inset hand.json --distance -12 --join miter -o larger.svg
  vrl inset - --distance 2 -o - < icon.svg > icon.json
  vrl inset icon.svg --distance 2 -o - --format svg > icon2.svg

Every shape is moved by itself and leaves any number of pieces, none where it is too narrow; they take over its mode, but
no feather points. A drawing (.svg) shows all of them as one path, filled by the even-odd rule, on the canvas of the drawing they
come from; a JSON file (.json, or standard output) holds one shape a piece.)";

using Shapes = std::vector<boost::shared_ptr<DY_Shape>>;

std::vector<ShapeRecord> InsetShapes(const std::vector<ShapeRecord>& records, const InsetOptions& options) {
    LibrarySession library;
    WorkProgress progress(records.size());
    std::vector<ShapeRecord> results;
    for (std::size_t i = 0; i < records.size(); ++i) {
        progress.BeginPart(i);
        progress.Report(0, 1);
        Shapes pieces;
        const std::int32_t status = VRLp_StatusOf([&] {
            constexpr bool kBest = true;
            VRL_InsetShapeJoin(*records[i].shape, kBest, options.distance, options.aspect, options.join, pieces);
        });
        library.Check(status, InputName(options.shapes));
        for (const auto& piece : pieces) results.push_back({piece, records[i].mode});
    }
    return results;
}

void NoteWhenNothingIsLeft(const std::vector<ShapeRecord>& results, const InsetOptions& options) {
    if (!results.empty()) return;
    const char* const advice = options.distance > 0 ? "try a smaller --distance" : "its outlines enclose no area";
    PrintMessage(InputName(options.shapes) + ": nothing is left of it; " + advice);
}

void RunInset(const InsetOptions& options) {
    const Drawing drawing = LoadDrawing(options.shapes);
    NoteWhenEmpty(drawing.shapes, options.shapes);
    OutputFile output(options.output);
    const std::vector<ShapeRecord> results = InsetShapes(drawing.shapes, options);
    const ShapeFileExtras extras = {.canvas = drawing.canvas, .total_ms = {}};
    WriteShapes(results, extras, ShapeWriterFor(options.output, options.format), output);
    output.Commit();
    if (!drawing.shapes.empty()) NoteWhenNothingIsLeft(results, options);
}

void AddArguments(CLI::App& command, InsetOptions& options) {
    command.add_option("SHAPES", options.shapes, "SVG or JSON file, - for standard input")->required()->type_name("");
    AddValue(command, "--distance", "PX", "how far inwards the outlines move, outwards when negative",
             [&](const std::string& text) { options.distance = ParseNumber(text, -kMaxSide, kMaxSide); })
        ->required();
    AddValue(command, "-o,--output", "FILE", "SVG or JSON file to write, - for standard output", [&](const std::string& text) {
        options.output = ParseOutputName(text);
    })->required();
    AddFormatOption(command, options.format, "kind of the file, svg or json, where its name does not tell it")
        ->default_str("json");
    AddValue(command, "--join", "NAME", "shape of outward corners: miter, round or bevel",
             [&](const std::string& text) { options.join = kJoins.at(text); })
        ->check(CLI::IsMember(kJoins))
        ->default_str("round");
    AddAspect(command, options.aspect);
}

}  // namespace

void AddInsetCommand(CLI::App& program, Command& chosen) {
    const auto options = std::make_shared<InsetOptions>();
    CLI::App& command = *program.add_subcommand("inset", "Move outlines inwards or outwards");
    AddArguments(command, *options);
    command.footer(kExamples);
    command.callback([options, &chosen] {
        if (ShapeWriterFor(options->output, options->format) == nullptr) {
            throw CLI::ValidationError("-o", ExplainNoShapeWriter(options->output, options->format));
        }
        chosen = [options] { RunInset(*options); };
    });
}

}  // namespace vrltool
