#include "tool/system.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#if defined(_WIN32)

#include <windows.h>

namespace vrltool {
namespace {

void (*stop_handler)(int signal) = nullptr;

BOOL WINAPI OnConsoleRequest(DWORD request) {
    stop_handler(request == CTRL_C_EVENT || request == CTRL_BREAK_EVENT ? SIGINT : SIGTERM);
    return TRUE;
}

}  // namespace

void PrepareStandardStreams() {
    for (std::FILE* stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
}

void CatchStopRequests(void (*handler)(int signal)) {
    stop_handler = handler;
    SetConsoleCtrlHandler(OnConsoleRequest, TRUE);
}

std::FILE* OpenFile(const std::string& path, const char* mode) {
    return _wfopen(std::filesystem::path(path).c_str(), std::filesystem::path(mode).c_str());
}

std::FILE* CreateNewFile(const std::string& path) {
    constexpr int kHow = _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY | _O_NOINHERIT;
    const int file = _wopen(std::filesystem::path(path).c_str(), kHow, _S_IREAD | _S_IWRITE);
    return file < 0 ? nullptr : _fdopen(file, "wb");
}

}  // namespace vrltool

#else

namespace vrltool {

/// When the caller closed a standard stream, the next file opened would get its number, and messages would land in it.
/// Opened the wrong way round, the stream fails at its first use, as a closed one should.
void PrepareStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) < 0) open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

void CatchStopRequests(void (*handler)(int signal)) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action {};
        sigaction(signal, nullptr, &action);
        if (action.sa_handler == SIG_IGN) continue;
        action.sa_handler = handler;
        action.sa_flags = 0;  // no SA_RESTART: a read that waits for input must wake up
        sigaction(signal, &action, nullptr);
    }
}

std::FILE* OpenFile(const std::string& path, const char* mode) { return std::fopen(path.c_str(), mode); }

std::FILE* CreateNewFile(const std::string& path) {
    constexpr mode_t kUsualMode = 0666;  // less what the umask takes away
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kUsualMode);
    return file < 0 ? nullptr : fdopen(file, "wb");
}

}  // namespace vrltool

#endif
