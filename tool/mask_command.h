#pragma once

#include <CLI/CLI.hpp>

#include "tool/command.h"

namespace vrltool {

/// `vrl mask`: shapes in, one grey picture out. Sets `chosen` when the user names the command.
void AddMaskCommand(CLI::App& program, Command& chosen);

}  // namespace vrltool
