#include "tool/output_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "tool/failure.h"
#include "tool/standard_stream.h"
#include "tool/system.h"

namespace vrltool {
namespace {

namespace fs = std::filesystem;

/// A new file in the folder of `target` for writing; null and errno when there can be none.
std::FILE* CreateBeside(const std::string& target, std::string& created) {
    const fs::path folder = fs::path(target).parent_path();
    constexpr int kAttempts = 100;  // names left behind by a killed program that had the same process number
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        created = (folder / (".vrl-" + std::to_string(getpid()) + '-' + std::to_string(attempt) + ".tmp")).string();
        std::FILE* file = CreateNewFile(created);
        if (file != nullptr || errno != EEXIST) return file;
    }
    return nullptr;
}

/// "/dev/fd/3" and the like.
bool IsOpenFilesName(const std::string& path) {
    const std::string name = fs::path(path).lexically_normal().generic_string();
    return name == "/dev/stderr" || name.starts_with("/dev/fd/") || name.starts_with("/proc/");
}

}  // namespace

bool IsStream(const std::string& path) {
    if (path == kStandardStream || IsOpenFilesName(path)) return true;
    std::error_code ignored;
    return fs::is_other(fs::status(path, ignored));
}

OutputFile::OutputFile(const std::string& path) : name_(OutputName(path)) {
    if (path == kStandardStream) {
        stream_ = stdout;
        return;
    }
    if (IsStream(path)) {
        stream_ = OpenFile(path, "ab");  // appended to, a file that is open already keeps what it has
        if (stream_ == nullptr) Fail(errno);
        return;
    }
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::is_directory(status)) Fail(EISDIR);
    target_ = path;
    if (fs::is_symlink(fs::symlink_status(path, error))) {
        if (!fs::exists(status)) throw Failure(name_ + ": is a link to a file that is not there");
        target_ = fs::canonical(path, error).string();
    }
    if (fs::exists(status)) RequireWritable();
    OpenBeside();
}

/// Replacing a file takes a right to its folder only.
void OutputFile::RequireWritable() const {
    constexpr fs::perms kWritable = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
    std::error_code ignored;
    // The system's administrator may write any file, but hardly means one that is marked so.
    if ((fs::status(target_, ignored).permissions() & kWritable) == fs::perms::none) throw Failure(name_ + ": is read-only");
    std::FILE* const opened = OpenFile(target_, "r+b");
    if (opened == nullptr) Fail(errno);
    std::fclose(opened);
}

void OutputFile::OpenBeside() {
    stream_ = CreateBeside(target_, temporary_);
    if (stream_ == nullptr) {
        const int error = errno;
        temporary_.clear();
        const fs::path folder = fs::path(target_).parent_path();
        if (error == ENOENT && !folder.empty() && !fs::exists(folder)) throw Failure(name_ + ": there is no such folder");
        Fail(error);
    }
    std::error_code ignored;
    const fs::file_status existing = fs::status(target_, ignored);
    if (fs::exists(existing)) fs::permissions(temporary_, existing.permissions(), ignored);  // replaced, not reopened
}

OutputFile::~OutputFile() {
    if (stream_ != nullptr && stream_ != stdout) std::fclose(stream_);
    std::error_code ignored;
    if (!temporary_.empty()) fs::remove(temporary_, ignored);
}

void OutputFile::Write(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stream_) != text.size()) Fail(errno);
}

void OutputFile::Commit() {
    if (std::ferror(stream_) || std::fflush(stream_) != 0) Fail(errno);
    if (stream_ != stdout && std::fclose(std::exchange(stream_, nullptr)) != 0) Fail(errno);
    if (temporary_.empty()) return;
    std::error_code error;
    fs::rename(temporary_, target_, error);
    if (error) Fail(error.default_error_condition().value());
    temporary_.clear();
}

void OutputFile::Fail(int error) const { throw Failure(name_ + ": " + std::strerror(error)); }

}  // namespace vrltool
