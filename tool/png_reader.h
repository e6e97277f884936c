#pragma once

#include <memory>
#include <string>

#include "host/world.h"
#include "tool/png_appearance.h"
#include "tool/work_progress.h"

namespace vrltool {

/// A picture read from a PNG file.
struct PngContent {
    std::unique_ptr<GW_World> world;
    PngAppearance appearance;
    std::string note;  // what the user should know about the file; empty when there is nothing to say
};

/// The picture of any PNG file as a world of 8 or 16 bits; fewer bits become 8. 16-bit samples p of 0 to 65535 become
/// round(p * 32768 / 65535). The rows are the steps of the current part of `progress`. The file is read to its end; what
/// follows the picture is noted.
/// @throws Failure  with the file's name
/// @throws Interruption
PngContent ReadPng(const std::string& path, WorkProgress& progress);

}  // namespace vrltool
