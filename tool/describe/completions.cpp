#include "tool/describe/completions.h"

#include <sstream>
#include <string_view>
#include <vector>

#include "tool/usage_text.h"

namespace vrltool {
namespace {

std::string Join(const std::vector<std::string>& words, const char* separator) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : separator) + word;
    return text;
}

/// `text` between single quotes, with a backslash before every character of `special`.
std::string Quoted(const std::string& text, std::string_view special = {}) {
    std::string quoted = "'";
    for (const char c : text) {
        if (special.find(c) != std::string_view::npos) quoted += '\\';
        c == '\'' ? quoted += "'\\''" : quoted += c;
    }
    return quoted + '\'';
}

std::vector<std::string> NamesOf(const std::vector<const CLI::App*>& commands) {
    std::vector<std::string> names;
    for (const CLI::App* command : commands) names.push_back(command->get_name());
    return names;
}

std::vector<std::string> FlagsOf(const std::vector<ArgumentText>& options) {
    std::vector<std::string> flags;
    for (const ArgumentText& option : options) flags.insert(flags.end(), option.flags.begin(), option.flags.end());
    return flags;
}

// --- bash

/// A branch for the word after an option that takes a value.
void PutBashValue(std::ostream& script, const std::string& command, const ArgumentText& option) {
    std::vector<std::string> patterns;
    for (const std::string& flag : option.flags) patterns.push_back(command + ':' + flag);
    script << "        " << Join(patterns, " | ") << ") ";
    if (!option.endings.empty()) {
        script << "_vrl_files " << Join(option.endings, " ");
    } else {
        script << "_vrl_words " << Quoted(Join(option.choices, " "));
    }
    script << " ;;\n";
}

/// A branch for all other words of a command.
void PutBashCommand(std::ostream& script, const CLI::App& command) {
    const std::vector<ArgumentText> files = PositionalsOf(command);
    std::vector<std::string> endings;
    for (const ArgumentText& file : files) endings.insert(endings.end(), file.endings.begin(), file.endings.end());
    script << "        " << command.get_name() << ":*) _vrl_flags_or_files " << Quoted(Join(FlagsOf(OptionsOf(command)), " "))
           << ' ' << Join(endings, " ") << " ;;\n";
}

constexpr const char* kBashHead = R"(# Completion of vrl for bash.

_vrl_words() { mapfile -t COMPREPLY < <(compgen -W "$1" -- "$current"); }

# Folders and the files with one of the endings given.
_vrl_files() {
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(
        compgen -d -- "$current"
        for ending; do compgen -f -X "!*.$ending" -- "$current"; done
    )
}

_vrl_flags_or_files() {
    case $current in
        -*) _vrl_words "$1" ;;
        *) _vrl_files "${@:2}" ;;
    esac
}

_vrl() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command=
    [ "$COMP_CWORD" -gt 1 ] && command=${COMP_WORDS[1]}
    [ "$previous" = = ] && previous=${COMP_WORDS[COMP_CWORD - 2]}
    [ "$current" = = ] && current=
    COMPREPLY=()
    case $command:$previous in
)";

// --- zsh

// Inside an argument's description and action these end it.
constexpr std::string_view kZshSpecial = "[]:\\";

std::string ZshAction(const ArgumentText& argument) {
    if (!argument.choices.empty()) return '(' + Join(argument.choices, " ") + ')';
    if (argument.endings.empty()) return " ";
    const std::string endings = Join(argument.endings, "|");
    return "_files -g \"*." + (argument.endings.size() == 1 ? endings : '(' + endings + ')') + '"';
}

/// An argument as _arguments takes it: '(-o --output)'{-o+,--output=}'[picture]:FILE:_files'.
std::string ZshArgument(const ArgumentText& argument) {
    const std::string message = Quoted(argument.value, kZshSpecial);
    const std::string value =
        argument.value.empty() ? "" : ':' + message.substr(1, message.size() - 2) + ':' + ZshAction(argument);
    if (argument.flags.empty()) return Quoted((argument.repeats ? "*" : "") + value);
    std::vector<std::string> names = argument.flags;
    if (!argument.value.empty()) {
        for (std::string& name : names) name += name.starts_with("--") ? '=' : '+';
    }
    const std::string description = Quoted(argument.description, kZshSpecial);
    const std::string shown = "'[" + description.substr(1, description.size() - 2) + ']' + value + '\'';
    if (names.size() == 1) return "'" + names.front() + shown.substr(1);
    return '\'' + ('(' + Join(argument.flags, " ") + ")'{") + Join(names, ",") + '}' + shown;
}

void PutZshCommand(std::ostream& script, const CLI::App& command) {
    script << "        " << command.get_name() << ")\n            _arguments";
    for (const ArgumentText& option : OptionsOf(command)) script << " \\\n                " << ZshArgument(option);
    for (const ArgumentText& file : PositionalsOf(command)) script << " \\\n                " << ZshArgument(file);
    script << "\n            ;;\n";
}

// --- fish

void PutFishArgument(std::ostream& script, const std::string& condition, const ArgumentText& argument) {
    script << "complete -c vrl -n " << Quoted(condition);
    for (const std::string& flag : argument.flags) {
        script << (flag.starts_with("--") ? " -l " + flag.substr(2) : " -s " + flag.substr(1));
    }
    if (!argument.choices.empty()) script << " -xa " << Quoted(Join(argument.choices, " "));
    if (!argument.endings.empty()) {
        script << " -k -xa '(__fish_complete_suffix ." << Join(argument.endings, "; __fish_complete_suffix .") << ")'";
    }
    if (!argument.value.empty() && argument.choices.empty() && argument.endings.empty()) script << " -x";
    if (!argument.flags.empty()) script << " -d " << Quoted(argument.description, "\\");
    script << '\n';
}

}  // namespace

std::string BashCompletion(const CLI::App& program) {
    const std::vector<const CLI::App*> commands = CommandsOf(program);
    std::ostringstream script;
    script << kBashHead;
    for (const CLI::App* command : commands) {
        for (const ArgumentText& option : OptionsOf(*command)) {
            if (!option.value.empty()) PutBashValue(script, command->get_name(), option);
        }
        PutBashCommand(script, *command);
    }
    script << "        *) _vrl_words " << Quoted(Join(NamesOf(commands), " ") + ' ' + Join(FlagsOf(OptionsOf(program)), " "))
           << " ;;\n    esac\n}\n\ncomplete -F _vrl vrl\n";
    return script.str();
}

std::string ZshCompletion(const CLI::App& program) {
    std::ostringstream script;
    script << "#compdef vrl\n# Completion of vrl for zsh.\n\n_vrl() {\n    local state line\n    local -a commands=(\n";
    for (const CLI::App* command : CommandsOf(program)) {
        script << "        " << Quoted(command->get_name() + ':' + command->get_description()) << '\n';
    }
    script << "    )\n    _arguments -C";
    for (const ArgumentText& option : OptionsOf(program)) script << " \\\n        " << ZshArgument(option);
    script << " \\\n        '1:command:->command' '*::argument:->argument'\n    [[ $state = command ]] && _describe command "
              "commands\n"
           << "    [[ $state = argument ]] && case $line[1] in\n";
    for (const CLI::App* command : CommandsOf(program)) PutZshCommand(script, *command);
    script << "    esac\n}\n\n_vrl \"$@\"\n";
    return script.str();
}

std::string FishCompletion(const CLI::App& program) {
    std::ostringstream script;
    script << "# Completion of vrl for fish.\n\ncomplete -c vrl -f\n";
    for (const ArgumentText& option : OptionsOf(program)) PutFishArgument(script, "__fish_use_subcommand", option);
    for (const CLI::App* command : CommandsOf(program)) {
        script << "complete -c vrl -n '__fish_use_subcommand' -a " << command->get_name() << " -d "
               << Quoted(command->get_description(), "\\") << '\n';
        const std::string condition = "__fish_seen_subcommand_from " + command->get_name();
        for (const ArgumentText& file : PositionalsOf(*command)) PutFishArgument(script, condition, file);
        for (const ArgumentText& option : OptionsOf(*command)) PutFishArgument(script, condition, option);
    }
    return script.str();
}

}  // namespace vrltool
