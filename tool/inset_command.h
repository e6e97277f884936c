#pragma once

#include <CLI/CLI.hpp>

#include "tool/command.h"

namespace vrltool {

/// `vrl inset`: shapes in, the same moved inwards or outwards out. Sets `chosen` when the user names the command.
void AddInsetCommand(CLI::App& program, Command& chosen);

}  // namespace vrltool
