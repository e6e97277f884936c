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
        stream_ = OpenFile(path, "wb");
        if (stream_ == nullptr) Fail(errno);
        return;
    }
    target_ = fs::is_symlink(fs::symlink_status(path, error)) ? fs::weakly_canonical(path, error).string() : path;
    OpenBeside();
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
