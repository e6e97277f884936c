#pragma once

#include <CLI/CLI.hpp>

#include "tool/command.h"

namespace vrltool {

/// `vrl info`: what is in a file of shapes. Sets `chosen` when the user names the command.
void AddInfoCommand(CLI::App& program, Command& chosen);

}  // namespace vrltool
