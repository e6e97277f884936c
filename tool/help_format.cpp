#include "tool/help_format.h"

#include "tool/usage_text.h"

namespace vrltool {

HelpFormat::HelpFormat() { label("Positionals", "Files"); }

std::string HelpFormat::make_usage(const CLI::App* app, std::string name) const {
    const bool takes_command = !CommandsOf(*app).empty();
    return "\nUsage: " + name + ' ' + (takes_command ? "COMMAND ..." : SynopsisOf(*app)) + '\n';
}

std::string HelpFormat::make_option_opts(const CLI::Option* option) const {
    const ArgumentText text = ArgumentTextOf(*option);
    if (text.flags.empty()) return text.repeats ? "..." : "";
    return text.value.empty() ? "" : ' ' + text.value;
}

std::string HelpFormat::make_option_desc(const CLI::Option* option) const { return DescriptionOf(ArgumentTextOf(*option)); }

}  // namespace vrltool
