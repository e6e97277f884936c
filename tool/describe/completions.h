#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace vrltool {

// What shells need to complete the program's commands, options, their values and files.

std::string BashCompletion(const CLI::App& program);
std::string ZshCompletion(const CLI::App& program);
std::string FishCompletion(const CLI::App& program);

}  // namespace vrltool
