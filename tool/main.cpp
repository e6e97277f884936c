#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <new>
#include <string>
#include <vector>

#include "refhost/refhost.h"
#include "tool/command_line.h"
#include "tool/failure.h"
#include "tool/interrupt.h"
#include "tool/message.h"
#include "tool/system.h"
#include "tool/usage_error.h"

namespace {

using namespace vrltool;

enum ExitStatus { kDone = 0, kFailed = 1, kWrongUsage = 2 };

int Complain(const std::string& text) {
    PrintMessage(text);
    return kFailed;
}

void FlushStandardOutput() {
    if (std::ferror(stdout) || std::fflush(stdout) != 0) throw Failure(std::string("standard output: ") + std::strerror(errno));
}

/// In UTF-8 and in reverse order, as the parser wants them.
template <class Char>
std::vector<std::string> Arguments(int argc, Char** argv) {
    std::vector<std::string> arguments;
    for (int i = argc - 1; i > 0; --i) arguments.push_back(std::filesystem::path(argv[i]).string());
    return arguments;
}

int Run(std::vector<std::string> arguments) {
    CommandLine line;
    try {
        line.program.parse(arguments);
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

template <class Char>
int Main(int argc, Char** argv) {
    PrepareStandardStreams();
    WatchInterrupts();
    try {
        return Run(Arguments(argc, argv));
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

}  // namespace

#if defined(_WIN32)
int wmain(int argc, wchar_t** argv) { return Main(argc, argv); }
#else
int main(int argc, char** argv) { return Main(argc, argv); }
#endif
