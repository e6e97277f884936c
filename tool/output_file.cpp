#include "tool/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "tool/failure.h"
#include "tool/standard_stream.h"

namespace vrltool {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kUsualMode = 0666;  // less what the umask takes away

/// A new file in the folder of `target` for writing; -1 and errno when there can be none.
int CreateBeside(const std::string& target, std::string& created) {
    const fs::path folder = fs::path(target).parent_path();
    constexpr int kAttempts = 100;  // names left behind by a killed program that had the same process number
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        created = (folder / (".vrl-" + std::to_string(getpid()) + '-' + std::to_string(attempt) + ".tmp")).string();
        const int file = open(created.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kUsualMode);
        if (file >= 0 || errno != EEXIST) return file;
    }
    return -1;
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : name_(OutputName(path)) {
    if (path == kStandardStream) {
        stream_ = stdout;
        return;
    }
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::is_directory(status)) Fail(EISDIR);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        stream_ = std::fopen(path.c_str(), "wb");
        if (stream_ == nullptr) Fail(errno);
        return;
    }
    target_ = fs::is_symlink(fs::symlink_status(path, error)) ? fs::weakly_canonical(path, error).string() : path;
    OpenBeside();
}

void OutputFile::OpenBeside() {
    const int file = CreateBeside(target_, temporary_);
    if (file < 0) {
        const int error = errno;
        temporary_.clear();
        const fs::path folder = fs::path(target_).parent_path();
        if (error == ENOENT && !folder.empty() && !fs::exists(folder)) throw Failure(name_ + ": there is no such folder");
        Fail(error);
    }
    struct stat existing {};
    constexpr mode_t kPermissions = 07777;
    if (stat(target_.c_str(), &existing) == 0) fchmod(file, existing.st_mode & kPermissions);  // replaced, not reopened
    stream_ = fdopen(file, "wb");
}

OutputFile::~OutputFile() {
    if (stream_ != nullptr && stream_ != stdout) std::fclose(stream_);
    if (!temporary_.empty()) unlink(temporary_.c_str());
}

void OutputFile::Write(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stream_) != text.size()) Fail(errno);
}

void OutputFile::Commit() {
    if (std::ferror(stream_) || std::fflush(stream_) != 0) Fail(errno);
    if (stream_ != stdout && std::fclose(std::exchange(stream_, nullptr)) != 0) Fail(errno);
    if (temporary_.empty()) return;
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) Fail(errno);
    temporary_.clear();
}

void OutputFile::Fail(int error) const { throw Failure(name_ + ": " + std::strerror(error)); }

}  // namespace vrltool
