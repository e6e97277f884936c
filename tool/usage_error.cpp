#include "tool/usage_error.h"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

#include "tool/usage_text.h"

namespace vrltool {
namespace {

/// How many letters must be put in, taken out or replaced to make `b` of `a`.
std::size_t EditDistance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);  // distances of the part of `a` read so far to every beginning of `b`
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
        }
    }
    return row.back();
}

/// "; did you mean NAME?" with the name nearest to `text`, or nothing when none is near.
std::string DidYouMean(const std::string& text, const std::vector<std::string>& names) {
    constexpr std::size_t kSlips = 2;
    const auto distance = [&](const std::string& name) { return name.starts_with(text) ? 0 : EditDistance(text, name); };
    const auto nearest = std::ranges::min_element(names, {}, distance);
    return nearest == names.end() || distance(*nearest) > kSlips ? "" : "; did you mean " + *nearest + '?';
}

std::vector<std::string> CommandNames(const CLI::App& program) {
    std::vector<std::string> names;
    for (const CLI::App* command : CommandsOf(program)) names.push_back(command->get_name());
    return names;
}

std::vector<std::string> OptionNames(const CLI::App& command) {
    std::vector<std::string> names;
    for (const ArgumentText& option : OptionsOf(command)) names.push_back(option.flags.back());
    return names;
}

std::string Quoted(const std::string& text) { return '"' + text + '"'; }

std::string SeeHelp(const CLI::App& program, const CLI::App& command) {
    const std::string name = &command == &program ? "" : ' ' + command.get_name();
    return " (see " + program.get_name() + name + " --help)";
}

std::string UnknownOption(const CLI::App& command, const std::string& argument) {
    const std::string name = argument.substr(0, argument.find('='));
    return name + " is not an option of " + command.get_name() + DidYouMean(name, OptionNames(command));
}

std::string UnexpectedArgument(const CLI::App& program, const CLI::App& command, const std::string& argument) {
    if (&command != &program) return Quoted(argument) + " is one argument too many";
    const std::vector<std::string> names = CommandNames(program);
    const std::string meant = DidYouMean(argument, names);
    return Quoted(argument) + " is not a command" + (meant.empty() ? "; there are " + JoinNames(names, "and") : meant);
}

// The parser's own sentences for these are hard to read: "--feather: 1 required X[,Y] missing".
std::string WrongCount(const std::string& sentence) {
    const std::string option = sentence.substr(0, sentence.find(':'));
    return option + (sentence.ends_with("missing") ? " needs a value" : " is given more than once");
}

// "--quality: good not in {draft,best}"
std::string WrongChoice(const std::string& sentence, std::size_t rule) {
    const std::size_t colon = sentence.find(": ");
    const std::string list = sentence.substr(sentence.find('{') + 1, sentence.rfind('}') - sentence.find('{') - 1);
    return sentence.substr(0, colon + 2) + Quoted(sentence.substr(colon + 2, rule - colon - 2)) + " is not " +
           JoinNames(CLI::detail::split(list, ','), "or");
}

std::string Problem(const CLI::App& program, const CLI::App& command, const CLI::Error& error) {
    const std::vector<std::string> unexpected = program.remaining(true);
    const auto option =
        std::ranges::find_if(unexpected, [](const auto& text) { return text.starts_with('-') && text != "-" && text != "--"; });
    // An option that is not known may be why another one is missing.
    if (option != unexpected.end()) return UnknownOption(command, *option);
    const std::string sentence = error.what();
    const auto is = [&](CLI::ExitCodes kind) { return error.get_exit_code() == static_cast<int>(kind); };
    if (is(CLI::ExitCodes::ExtrasError)) return UnexpectedArgument(program, command, unexpected.front());
    if (is(CLI::ExitCodes::ArgumentMismatch)) return WrongCount(sentence);
    const std::size_t rule = sentence.find(" not in {");
    return rule == std::string::npos ? sentence : WrongChoice(sentence, rule);
}

}  // namespace

std::string ExplainUsageError(const CLI::App& program, const CLI::Error& error) {
    const std::vector<CLI::App*> named = program.get_subcommands();
    const CLI::App& command = named.empty() ? program : *named.front();
    return Problem(program, command, error) + SeeHelp(program, command);
}

std::string ExplainMissingCommand(const CLI::App& program) {
    return "a command is missing; there are " + JoinNames(CommandNames(program), "and") + SeeHelp(program, program);
}

}  // namespace vrltool
