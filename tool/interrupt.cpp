#include "tool/interrupt.h"

#include <atomic>

#include "tool/system.h"

namespace vrltool {
namespace {

std::atomic<int> stop_signal = 0;
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler writes it");

void RememberSignal(int signal) { stop_signal = signal; }

}  // namespace

void WatchInterrupts() { CatchStopRequests(RememberSignal); }

int InterruptSignal() { return stop_signal; }

void ThrowIfInterrupted() {
    if (stop_signal != 0) throw Interruption{stop_signal.load()};
}

}  // namespace vrltool
