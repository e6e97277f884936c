#pragma once

#include "host/image.h"
#include "tool/output_file.h"
#include "tool/work_progress.h"

namespace vrltool {

/// Writes a coverage buffer as a grey PNG of its own depth. 16-bit samples s of 0 to 32768 become
/// round(s * 65535 / 32768). Does not commit the file. The rows
/// are the steps of the current part of `progress`.
/// @throws Failure
/// @throws Interruption
void WritePng(const GW_UnoBuffer& buffer, OutputFile& file, WorkProgress& progress);

}  // namespace vrltool
