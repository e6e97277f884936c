#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <thread>

namespace vrltool {

/// The time in which the library may be called, from any thread. Host reports made meanwhile are collected for every thread,
/// so that a failure can be told in one line.
class LibrarySession {
 public:
    /// @throws what `VRL_Birth` throws
    LibrarySession();
    LibrarySession(const LibrarySession&) = delete;
    LibrarySession& operator=(const LibrarySession&) = delete;
    ~LibrarySession();

    /// Judges the status of a library call that the calling thread made to work on `subject` (a file).
    /// @throws Failure       for a status other than 0, with what was reported about it
    /// @throws Interruption  when the call stopped because it was asked to
    void Check(std::int32_t status, const std::string& subject);

 private:
    std::string TakeReports();

    std::mutex lock_;
    std::map<std::thread::id, std::string> reports_;  // of a thread since its last check
};

}  // namespace vrltool
