#include "tool/describe/manual_page.h"

#include <cctype>
#include <sstream>
#include <utility>

#include "tool/usage_text.h"

namespace vrltool {
namespace {

constexpr const char* kFiles = R"(.SH FILES
Shapes come from SVG drawings or from JSON files; which of the two a file
is shows from its first character.
Of a drawing every subpath of every path and basic shape becomes a shape,
with its transforms.
A JSON file lists shapes with absolute handles:
.PP
.nf
.RS
{"shapes": [{"closed": true,
             "vertices": [{"p": [10, 10], "in": [5, 15], "out": [15, 5]},
                          {"p": [50, 20]}, {"p": [20, 60]}],
             "feather": [{"position": 1.5, "radius": 12}],
             "mode": "add"}]}
.RE
.fi
.PP
Only the vertices and their
.I p
are needed.
A feather position counts segments from the first vertex; a negative radius
reaches inwards.
)";

constexpr const char* kExitStatus = R"(.SH EXIT STATUS
.TP
.B 0
The work is done.
.TP
.B 1
An input is bad or the work failed; each complaint is one line on standard
error, and no output file is left half written.
.TP
.B 2
The arguments are wrong.
.TP
.B 130
Ctrl\-C stopped the work; after another signal it is 128 plus the signal's
number.
)";

/// Text as the formatter takes it: nothing in it is an escape.
std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '\\' || c == '-') escaped += '\\';
        escaped += c == '\\' ? 'e' : c;
    }
    return escaped;
}

/// A line of text; nothing at its start is a request.
void PutLine(std::ostream& page, const std::string& text) {
    page << (text.starts_with('.') || text.starts_with('\'') ? "\\&" : "") << Escaped(text) << '\n';
}

/// Text in lines of moderate length.
void PutText(std::ostream& page, const std::string& text) {
    constexpr std::size_t kLength = 72;  // escapes come on top
    std::istringstream words(text);
    std::string line;
    for (std::string word; words >> word;) {
        if (!line.empty() && line.size() + word.size() >= kLength) PutLine(page, std::exchange(line, {}));
        line += (line.empty() ? "" : " ") + word;
    }
    PutLine(page, line);
}

std::string Bold(const std::string& text) { return "\\fB" + Escaped(text) + "\\fP"; }
std::string Italic(const std::string& text) { return "\\fI" + Escaped(text) + "\\fP"; }

/// "-o, --output FILE", "SHAPES".
std::string TermOf(const ArgumentText& argument) {
    if (argument.flags.empty()) return Italic(argument.value) + (argument.repeats ? "..." : "");
    std::string term;
    for (const std::string& flag : argument.flags) term += (term.empty() ? "" : ", ") + Bold(flag);
    return argument.value.empty() ? term : term + ' ' + Italic(argument.value);
}

std::string Sentence(std::string text) {
    if (!text.empty()) text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
    return text + '.';
}

void ListArguments(std::ostream& page, const std::vector<ArgumentText>& arguments) {
    for (const ArgumentText& argument : arguments) {
        page << ".TP\n" << TermOf(argument) << '\n';
        PutText(page, Sentence(DescriptionOf(argument)));
    }
}

/// What stands below a command's help: a heading with indented examples, then paragraphs.
void PutFooter(std::ostream& page, const std::string& footer) {
    std::istringstream lines(footer);
    std::string paragraph;
    bool in_examples = false;
    const auto end_paragraph = [&] {
        if (!paragraph.empty()) PutText(page << ".PP\n", std::exchange(paragraph, {}));
    };
    for (std::string line; std::getline(lines, line);) {
        const bool example = line.starts_with("  ");
        if (example && !in_examples) {
            end_paragraph();
            page << ".PP\n.nf\n.RS\n";
        }
        if (!example && in_examples) page << ".RE\n.fi\n";
        in_examples = example;
        if (example) PutLine(page, line.substr(2));
        if (line.empty()) end_paragraph();
        if (!example) paragraph += line + ' ';
    }
    end_paragraph();
}

void PutCommand(std::ostream& page, const CLI::App& program, const CLI::App& command) {
    const std::string name = program.get_name() + ' ' + command.get_name();
    page << ".SS " << Escaped(name) << '\n';
    PutText(page, Sentence(command.get_description()));
    page << ".PP\n" << Bold(name) << ' ' << Escaped(SynopsisOf(command)) << '\n';
    ListArguments(page, PositionalsOf(command));
    ListArguments(page, OptionsOf(command));
    PutFooter(page, command.get_footer());
}

}  // namespace

std::string ManualPage(const CLI::App& program, const std::string& date) {
    std::ostringstream page;
    page << ".TH VRL 1 " << date << " \"vrl " VRL_VERSION "\" \"User Commands\"\n"
         << ".SH NAME\nvrl \\- render, move and trace mask shapes\n"
         << ".SH SYNOPSIS\n"
         << ".B vrl\n.I COMMAND\n\\&...\n"
         << ".SH DESCRIPTION\n";
    PutText(page, program.get_description());
    page << ".SH OPTIONS\n";
    ListArguments(page, OptionsOf(program));
    page << ".SH COMMANDS\n";
    for (const CLI::App* command : CommandsOf(program)) PutCommand(page, program, *command);
    page << kFiles << kExitStatus;
    return page.str();
}

}  // namespace vrltool
