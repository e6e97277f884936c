#pragma once

#include <CLI/CLI.hpp>

#include "tool/command.h"

namespace vrltool {

/// `vrl trace`: pictures into shapes.
void AddTraceCommand(CLI::App& program, Command& chosen);

}  // namespace vrltool
