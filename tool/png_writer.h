#pragma once

#include "host/image.h"
#include "host/world.h"
#include "tool/output_file.h"
#include "tool/png_appearance.h"
#include "tool/work_progress.h"

namespace vrltool {

// 16-bit samples s of 0 to 32768 become round(s * 65535 / 32768). The file is not committed. The rows are the steps of
// the current part of `progress`.

/// Writes a coverage buffer as a grey PNG of its own depth.
/// @throws Failure
/// @throws Interruption
void WritePng(const GW_UnoBuffer& buffer, OutputFile& file, WorkProgress& progress);

/// Writes a world as an RGBA PNG of its own depth, with the appearance of the picture it was made of. With a colour profile
/// for grey it is one of grey, which its red is, and alpha.
/// @throws Failure
/// @throws Interruption
void WritePng(const GW_World& world, OutputFile& file, WorkProgress& progress, const PngAppearance& appearance = {});

}  // namespace vrltool
