#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace vrltool {

/// One line for a user whose arguments `program` refused with `error`: what is wrong, what was probably meant, and which
/// help to read.
std::string ExplainUsageError(const CLI::App& program, const CLI::Error& error);

/// The same for a user who named no command.
std::string ExplainMissingCommand(const CLI::App& program);

}  // namespace vrltool
