#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace vrltool {

/// The program's page for man(1), in section 1. `date` is year-month-day.
std::string ManualPage(const CLI::App& program, const std::string& date);

}  // namespace vrltool
