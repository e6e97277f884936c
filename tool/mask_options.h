#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "api/mask_params.h"
#include "host/geometry_records.h"

namespace vrltool {

/// How masks are rendered, as the user asks for it: what every command that renders masks shares.
struct MaskOptions {
    VRL_MaskParams params = {.pixel_aspect = 1, .quality = 1};
    M_Matrix3 transform = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    bool print_touched = false;
};

void AddMaskOptions(CLI::App& command, MaskOptions& options);

/// @throws CLI::ValidationError  when rectangles and picture would both go to standard output
void RequireOneWriter(const MaskOptions& options, const std::string& output);

/// Tells on standard error that nothing of the shapes shows, and what to do about it.
void NoteEmptyMask(const std::string& shapes);

/// A line a mask: left top right bottom.
void PrintTouched(const std::vector<M_LRect>& rects);

}  // namespace vrltool
