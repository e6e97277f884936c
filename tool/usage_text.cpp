#include "tool/usage_text.h"

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace vrltool {
namespace {

// The parser keeps a value's name and what it must fulfil in one text: "NAME:{draft,best}".
struct ValueText {
    std::string name;
    std::vector<std::string> choices;
};

ValueText ValueTextOf(const CLI::Option& option) {
    const std::string text = option.get_type_name();
    const std::size_t colon = text.find(':');
    ValueText value{text.substr(0, colon), {}};
    if (colon == std::string::npos) return value;
    const std::string rule = text.substr(colon + 1);
    if (rule.starts_with('{') && rule.ends_with('}')) value.choices = CLI::detail::split(rule.substr(1, rule.size() - 2), ',');
    return value;
}

// Descriptions of files name their formats: "SVG or JSON file, - for standard input".
std::vector<std::string> EndingsIn(const std::string& description) {
    std::vector<std::string> endings;
    for (const char* const format : {"PNG", "SVG", "JSON"}) {
        if (description.find(format) != std::string::npos) endings.push_back(CLI::detail::to_lower(format));
    }
    return endings;
}

std::vector<std::string> FlagsOf(const CLI::Option& option) {
    std::vector<std::string> flags;
    for (const std::string& name : option.get_snames()) flags.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) flags.push_back("--" + name);
    return flags;
}

std::vector<ArgumentText> ArgumentsOf(const CLI::App& command, bool positional) {
    std::vector<ArgumentText> arguments;
    for (const CLI::Option* option : command.get_options()) {
        if (option->get_positional() == positional) arguments.push_back(ArgumentTextOf(*option));
    }
    return arguments;
}

}  // namespace

ArgumentText ArgumentTextOf(const CLI::Option& option) {
    ArgumentText text;
    ValueText value = ValueTextOf(option);
    text.flags = FlagsOf(option);
    text.value = option.get_positional() ? option.get_name(true) : option.get_type_size_max() == 0 ? "" : value.name;
    text.choices = std::move(value.choices);
    text.usual = option.get_default_str();
    text.description = option.get_description();
    text.required = option.get_required();
    text.repeats = option.get_expected_max() > 1;
    if (option.get_positional() || text.value == "FILE") text.endings = EndingsIn(text.description);
    return text;
}

std::vector<ArgumentText> PositionalsOf(const CLI::App& command) { return ArgumentsOf(command, true); }
std::vector<ArgumentText> OptionsOf(const CLI::App& command) { return ArgumentsOf(command, false); }

std::vector<const CLI::App*> CommandsOf(const CLI::App& program) { return program.get_subcommands({}); }

std::string SynopsisOf(const CLI::App& command) {
    std::string text;
    for (const ArgumentText& argument : PositionalsOf(command)) text += argument.value + (argument.repeats ? "... " : " ");
    for (const ArgumentText& option : OptionsOf(command)) {
        if (option.required) text += option.flags.front() + ' ' + option.value + ' ';
    }
    return text + "[options]";
}

std::string DescriptionOf(const ArgumentText& argument) {
    if (argument.required && !argument.flags.empty()) return argument.description + " (required)";
    return argument.usual.empty() ? argument.description : argument.description + " (default " + argument.usual + ")";
}

std::string JoinNames(const std::vector<std::string>& names, const std::string& last) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        text += (i == 0 ? "" : i + 1 == names.size() ? ' ' + last + ' ' : ", ") + names[i];
    }
    return text;
}

}  // namespace vrltool
