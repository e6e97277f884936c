#include "tool/command_line.h"

#include <memory>

#include "tool/apply_command.h"
#include "tool/help_format.h"
#include "tool/info_command.h"
#include "tool/inset_command.h"
#include "tool/mask_command.h"
#include "tool/trace_command.h"

namespace vrltool {
namespace {

constexpr const char* kDescription =
    "Renders the masks of vector shapes, cuts pictures out by them, moves outlines and traces pictures into shapes.";

constexpr const char* kExamples = R"(Examples:
  vrl mask hand.json --size 640x480 --feather 8 -o hand.png
  vrl apply photo.png hand.json -o cut.png
  vrl inset hand.json --distance 4 -o smaller.svg
  vrl trace logo.png -o logo.svg
  vrl info icon.svg
  vrl mask --help)";

}  // namespace

CommandLine::CommandLine() : program(kDescription, "vrl") {
    program.formatter(std::make_shared<HelpFormat>());  // commands take over what is set before them
    program.set_help_flag("-h,--help", "print this help");
    program.set_version_flag("-V,--version", "vrl " VRL_VERSION, "print the version");
    program.allow_windows_style_options(false);  // a file's name may start with a slash everywhere
    program.require_subcommand(0, 1);            // a missing one is told with the others' names, a misspelt one by the parser
    program.footer(kExamples);
    AddMaskCommand(program, chosen);
    AddApplyCommand(program, chosen);
    AddInsetCommand(program, chosen);
    AddTraceCommand(program, chosen);
    AddInfoCommand(program, chosen);
    for (CLI::App* command : program.get_subcommands({})) command->group("Commands");
}

}  // namespace vrltool
