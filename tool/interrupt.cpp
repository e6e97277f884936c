#include "tool/interrupt.h"

#include <signal.h>

#include <initializer_list>

namespace vrltool {
namespace {

volatile sig_atomic_t stop_signal = 0;

void RememberSignal(int signal) { stop_signal = signal; }

}  // namespace

void WatchInterrupts() {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action {};
        sigaction(signal, nullptr, &action);
        if (action.sa_handler == SIG_IGN) continue;
        action.sa_handler = RememberSignal;
        action.sa_flags = 0;  // no SA_RESTART: a read that waits for input must wake up
        sigaction(signal, &action, nullptr);
    }
}

int InterruptSignal() { return stop_signal; }

void ThrowIfInterrupted() {
    if (stop_signal != 0) throw Interruption{stop_signal};
}

}  // namespace vrltool
