// Writes what the system tells about the program, from the program's own arguments: vrl_describe FOLDER DATE puts its
// manual page and its completions for bash, zsh and fish into the folder.

#include <cstdio>
#include <exception>
#include <string>

#include "tool/command_line.h"
#include "tool/describe/completions.h"
#include "tool/describe/manual_page.h"
#include "tool/output_file.h"

int main(int argc, char** argv) {
    using namespace vrltool;
    if (argc != 3) {
        std::fputs("usage: vrl_describe FOLDER DATE\n", stderr);
        return 2;
    }
    const auto write = [&](const char* name, const std::string& text) {
        OutputFile file(std::string(argv[1]) + '/' + name);
        file.Write(text);
        file.Commit();
    };
    try {
        const CommandLine line;
        write("vrl.1", ManualPage(line.program, argv[2]));
        write("vrl.bash", BashCompletion(line.program));
        write("_vrl", ZshCompletion(line.program));
        write("vrl.fish", FishCompletion(line.program));
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vrl_describe: %s\n", error.what());
        return 1;
    }
}
