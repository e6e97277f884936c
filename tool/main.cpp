#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <string>

#include "refhost/refhost.h"
#include "tool/apply_command.h"
#include "tool/command.h"
#include "tool/failure.h"
#include "tool/info_command.h"
#include "tool/inset_command.h"
#include "tool/interrupt.h"
#include "tool/mask_command.h"
#include "tool/trace_command.h"

namespace {

using namespace vrltool;

enum ExitStatus { kDone = 0, kFailed = 1, kWrongUsage = 2 };

constexpr const char* kExamples = R"(Examples:
  vrl mask hand.json --size 640x480 --feather 8 -o hand.png
  vrl apply photo.png hand.json -o cut.png
  vrl inset hand.json --distance 4 -o smaller.svg
  vrl trace logo.png -o logo.svg
  vrl info icon.svg
  vrl mask --help)";

/// When the caller closed a standard stream, the next file opened would get its number, and messages would land in it.
/// Opened the wrong way round, the stream fails at its first use, as a closed one should.
void TakeClosedStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) < 0) open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

/// One line on standard error, whatever a file or its name may have put into the text.
int Complain(std::string text) {
    for (char& c : text) {
        if (static_cast<unsigned char>(c) < ' ') c = ' ';
    }
    std::fprintf(stderr, "vrl: %s\n", text.c_str());
    return kFailed;
}

void FlushStandardOutput() {
    if (std::ferror(stdout) || std::fflush(stdout) != 0) throw Failure(std::string("standard output: ") + std::strerror(errno));
}

int Run(int argc, char** argv) {
    CLI::App program(
        "Renders the masks of vector shapes, cuts pictures out by them, moves outlines and traces pictures into shapes.", "vrl");
    program.set_version_flag("--version", "vrl " VRL_VERSION);
    program.require_subcommand(0, 1);  // a missing one is told below, a misspelt one by the parser
    program.footer(kExamples);
    Command chosen;
    AddMaskCommand(program, chosen);
    AddApplyCommand(program, chosen);
    AddInsetCommand(program, chosen);
    AddTraceCommand(program, chosen);
    AddInfoCommand(program, chosen);
    try {
        program.parse(argc, argv);
        if (!chosen) throw CLI::RequiredError("A command");
    } catch (const CLI::Success& help_or_version) {
        program.exit(help_or_version);
        FlushStandardOutput();
        return kDone;
    } catch (const CLI::Error& error) {
        Complain(std::string(error.what()) + " (see --help)");
        return kWrongUsage;
    }
    refhost::Initialize();
    chosen();
    FlushStandardOutput();
    return kDone;
}

}  // namespace

int main(int argc, char** argv) {
    TakeClosedStandardStreams();
    WatchInterrupts();
    try {
        return Run(argc, argv);
    } catch (const Interruption& interruption) {
        return ExitStatusOf(interruption);
    } catch (const FailedFiles& failed) {
        for (const std::string& complaint : failed.complaints) Complain(complaint);
        return kFailed;
    } catch (const std::bad_alloc&) {
        return Complain("not enough memory");
    } catch (const std::exception& error) {
        return Complain(error.what());
    } catch (int status) {
        return Complain("a call of the host failed with status " + std::to_string(status));
    }
}
