#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

#include "host/progress.h"

namespace vrltool {

/// Follows work that consists of several parts, calls of the library or the program's own loops: passes on a request to
/// stop, and draws a bar on standard error when that is a terminal and the work has gone on for half a second. The line
/// is cleared at the end. Of one thread.
class WorkProgress {
 public:
    enum class Bar { kOnTerminal, kNever };
    explicit WorkProgress(std::size_t parts, Bar bar = Bar::kOnTerminal);
    WorkProgress(const WorkProgress&) = delete;
    WorkProgress& operator=(const WorkProgress&) = delete;
    ~WorkProgress();

    void BeginPart(std::size_t index) { part_ = index; }

    /// For a call of the library that is the current part.
    const GW_ProgressInfo* Callbacks() const { return &info_; }

    /// For a loop that is the current part, once a step.
    /// @throws Interruption
    void Report(std::int32_t step, std::int32_t total);

 private:
    static std::int32_t OnAbort(void* refcon);
    static std::int32_t OnProgress(void* refcon, std::int32_t step, std::int32_t total);
    void Show(std::int32_t step, std::int32_t total);

    GW_ProgressInfo info_;
    std::size_t parts_;
    std::size_t part_ = 0;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    bool shows_bar_;
    int shown_percent_ = -1;  // -1: no bar on the screen
};

}  // namespace vrltool
