#pragma once

#include <memory>
#include <string>

#include "host/world.h"
#include "tool/work_progress.h"

namespace vrltool {

/// The picture of any PNG file as a world of 8 or 16 bits; fewer bits become 8. 16-bit samples p of 0 to 65535 become
/// round(p * 32768 / 65535). The rows are the steps of the current part of `progress`.
/// @throws Failure  with the file's name
/// @throws Interruption
std::unique_ptr<GW_World> ReadPng(const std::string& path, WorkProgress& progress);

}  // namespace vrltool
