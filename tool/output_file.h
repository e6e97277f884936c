#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace vrltool {

/// True for what has no content to replace: "-", standard output, and devices, pipes and files that are open already.
bool IsStream(const std::string& path);

/// A file that appears whole or not at all: it is written beside its place and renamed into it, and keeps the permissions it
/// had. What may not be written is not replaced. Streams are written directly.
class OutputFile {
 public:
    /// @throws Failure
    explicit OutputFile(const std::string& path);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    /// Removes what was written unless it was committed.
    ~OutputFile();

    std::FILE* Stream() const { return stream_; }

    /// @throws Failure
    void Write(std::string_view text);

    /// Ends the writing and puts the file in its place.
    /// @throws Failure  when anything of it failed
    void Commit();

    /// @throws Failure  with the file's name and the system's word for `error`, an errno value
    [[noreturn]] void Fail(int error) const;

 private:
    void RequireWritable() const;
    void OpenBeside();

    std::string name_;       // for messages
    std::string target_;     // where the file goes in the end; empty when it is written directly
    std::string temporary_;  // what is on disk now; empty once committed
    std::FILE* stream_ = nullptr;
};

}  // namespace vrltool
