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
#include "tool/command_line.h"
#include "tool/failure.h"
#include "tool/interrupt.h"
#include "tool/usage_error.h"

namespace {

using namespace vrltool;

enum ExitStatus { kDone = 0, kFailed = 1, kWrongUsage = 2 };

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
    CommandLine line;
    try {
        line.program.parse(argc, argv);
    } catch (const CLI::Success& help_or_version) {
        line.program.exit(help_or_version);
        FlushStandardOutput();
        return kDone;
    } catch (const CLI::Error& error) {
        Complain(ExplainUsageError(line.program, error));
        return kWrongUsage;
    }
    if (!line.chosen) {
        Complain(ExplainMissingCommand(line.program));
        return kWrongUsage;
    }
    refhost::Initialize();
    line.chosen();
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
