#pragma once

#include <CLI/CLI.hpp>

#include "tool/command.h"

namespace vrltool {

/// `vrl apply`: a picture and shapes in, the picture cut out by their masks out. Sets `chosen` when the user names the
/// command.
void AddApplyCommand(CLI::App& program, Command& chosen);

}  // namespace vrltool
