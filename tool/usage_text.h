#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace vrltool {

/// What the user sees of one argument of a command: an option with a value, a flag, or a positional argument.
struct ArgumentText {
    std::vector<std::string> flags;    // "-o", "--output"; none for a positional argument
    std::string value;                 // "FILE", "SHAPES"; empty for a flag
    std::vector<std::string> choices;  // the only values it takes, when there are only a few
    std::string usual;                 // the value it has when it is left out; empty when there is none
    std::string description;
    bool required = false;
    bool repeats = false;              // takes any number of values
    std::vector<std::string> endings;  // of the files it names: "png", "svg", "json"; empty when it names no file
};

ArgumentText ArgumentTextOf(const CLI::Option& option);

/// The arguments of one command in the order they are listed.
std::vector<ArgumentText> PositionalsOf(const CLI::App& command);
std::vector<ArgumentText> OptionsOf(const CLI::App& command);

/// The commands of the program, in the order they are listed.
std::vector<const CLI::App*> CommandsOf(const CLI::App& program);

/// Which arguments the command must have, without its name: "SHAPES -o FILE --size WxH [options]".
std::string SynopsisOf(const CLI::App& command);

/// The option's description and, in brackets, whether it must be there or what it usually is.
std::string DescriptionOf(const ArgumentText& argument);

/// "a, b or c", with `last` "or".
std::string JoinNames(const std::vector<std::string>& names, const std::string& last);

}  // namespace vrltool
