#include "tool/mask_options.h"

#include <cstdio>

#include "tool/message.h"
#include "tool/option_values.h"
#include "tool/standard_stream.h"

namespace vrltool {

void AddMaskOptions(CLI::App& command, MaskOptions& options) {
    VRL_MaskParams& params = options.params;
    AddValue(command, "--feather", "X[,Y]", "softness of the edge in pixels", [&](const std::string& text) {
        const M_Vector2T<double> radii = ParseRadii(text);
        params.feather_x = ToFixed(radii.x);
        params.feather_y = ToFixed(radii.y);
    });
    AddValue(command, "--expand", "PX", "moves the outlines outwards, inwards when negative",
             [&](const std::string& text) { params.expansion = ToFixed(ParseNumber(text, -kMaxSide, kMaxSide)); });
    AddValue(command, "--opacity", "PCT", "level of full coverage in per cent", [&](const std::string& text) {
        params.opacity = ToFixed(ParseNumber(text, 0, 100) / 100);
    })->default_str("100");
    command.add_flag_callback(
        "--invert", [&] { params.invert = 1; }, "invert every shape's mask");
    AddAspect(command, params.pixel_aspect);
    AddValue(command, "--quality", "NAME", "care taken over edges, draft or best",
             [&](const std::string& text) { params.quality = text == "best" ? 1 : 0; })
        ->check(CLI::IsMember({"draft", "best"}))
        ->default_str("best");
    AddValue(command, "--falloff", "NAME", "course of a variable-width feather, smooth or linear",
             [&](const std::string& text) { params.variable_feather_option = text == "smooth" ? 0 : 1; })
        ->check(CLI::IsMember({"smooth", "linear"}))
        ->default_str("smooth");
    AddValue(command, "--transform", "a,b,c,d,tx,ty",
             "maps the shapes into the picture: x to a x + c y + tx, y to b x + d y + ty",
             [&](const std::string& text) { options.transform = ParseMatrix(text); });
    command.add_flag("--touched", options.print_touched, "print the rectangle each mask touches: left top right bottom");
}

void RequireOneWriter(const MaskOptions& options, const std::string& output) {
    if (!options.print_touched || output != kStandardStream) return;
    throw CLI::ValidationError("--touched and -o - would both write to standard output");
}

void NoteEmptyMask(const std::string& shapes) {
    PrintMessage(InputName(shapes) +
                 ": the mask is empty; try another --transform, --expand or --opacity (vrl info tells where its shapes are)");
}

void PrintTouched(const std::vector<M_LRect>& rects) {
    for (const M_LRect& r : rects) std::printf("%d %d %d %d\n", r.left, r.top, r.right, r.bottom);
}

}  // namespace vrltool
