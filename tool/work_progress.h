#pragma once

#include <chrono>
#include <cstdint>

#include "host/progress.h"

namespace vrltool {

/// The library's progress callbacks: they pass on a request to stop and draw a bar on standard error when that is a
/// terminal and the work has gone on for half a second. The line is cleared at the end.
class WorkProgress {
 public:
    /// `parts`: how many calls of the library the work consists of.
    explicit WorkProgress(std::size_t parts);
    WorkProgress(const WorkProgress&) = delete;
    WorkProgress& operator=(const WorkProgress&) = delete;
    ~WorkProgress();

    /// For the call that is part `index` of the work.
    const GW_ProgressInfo* ForPart(std::size_t index);

 private:
    static std::int32_t OnAbort(void* refcon);
    static std::int32_t OnProgress(void* refcon, std::int32_t step, std::int32_t total);
    void Show(double share);

    GW_ProgressInfo info_;
    std::size_t parts_;
    std::size_t part_ = 0;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    bool on_terminal_;
    int shown_percent_ = -1;  // -1: no bar on the screen
};

}  // namespace vrltool
