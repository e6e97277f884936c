#pragma once

#include <CLI/CLI.hpp>

#include "tool/command.h"

namespace vrltool {

/// The whole command line of the program: every command with its arguments, ready to be parsed or described.
struct CommandLine {
    CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    CLI::App program;
    Command chosen;  // the command the user named, once `program` has parsed the arguments; empty when there was none
};

}  // namespace vrltool
