#pragma once

namespace vrltool {

/// Thrown when the user or the system asked the program to stop.
struct Interruption {
    int signal;
};

/// From here on Ctrl-C and the other polite requests to stop set a flag instead of ending the program, so that work in
/// progress can undo itself. A request that was ignored when the program started stays ignored.
void WatchInterrupts();

/// The signal that asked to stop, 0 when none did.
int InterruptSignal();

/// @throws Interruption  once a stop was asked for
void ThrowIfInterrupted();

/// The exit status of a program that `signal` stopped.
inline int ExitStatusOf(const Interruption& interruption) {
    constexpr int kSignalBase = 128;
    return kSignalBase + interruption.signal;
}

}  // namespace vrltool
