#include "tool/work_progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "tool/interrupt.h"

namespace vrltool {
namespace {

constexpr std::chrono::milliseconds kShortWork{500};  // nobody needs a bar for less
constexpr int kBarWidth = 40;                         // characters
constexpr int kLineWidth = kBarWidth + 7;             // with brackets and " 100%"

}  // namespace

WorkProgress::WorkProgress(std::size_t parts, Bar bar)
    : info_{this, OnAbort, OnProgress}, parts_(parts), shows_bar_(bar == Bar::kOnTerminal && isatty(STDERR_FILENO) != 0) {}

WorkProgress::~WorkProgress() {
    if (shown_percent_ >= 0) std::fprintf(stderr, "\r%*s\r", kLineWidth, "");
}

void WorkProgress::Report(std::int32_t step, std::int32_t total) {
    Show(step, total);
    ThrowIfInterrupted();
}

// The signal's number serves as the stop code: any number but 0 does.
std::int32_t WorkProgress::OnAbort(void*) { return InterruptSignal(); }

std::int32_t WorkProgress::OnProgress(void* refcon, std::int32_t step, std::int32_t total) {
    static_cast<WorkProgress*>(refcon)->Show(step, total);
    return InterruptSignal();
}

void WorkProgress::Show(std::int32_t step, std::int32_t total) {
    if (!shows_bar_) return;
    const double of_part = total > 0 ? std::clamp(static_cast<double>(step) / total, 0.0, 1.0) : 0;
    const double share = (static_cast<double>(part_) + of_part) / static_cast<double>(parts_);
    const int percent = static_cast<int>(share * 100);
    if (percent == shown_percent_ || std::chrono::steady_clock::now() - start_ < kShortWork) return;
    shown_percent_ = percent;
    const auto filled = static_cast<std::size_t>(share * kBarWidth);
    const std::string bar = std::string(filled, '#') + std::string(kBarWidth - filled, '.');
    std::fprintf(stderr, "\r[%s] %3d%%", bar.c_str(), percent);
    std::fflush(stderr);
}

}  // namespace vrltool
