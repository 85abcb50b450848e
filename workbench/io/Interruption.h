// SPDX-License-Identifier: Apache-2.0
// Ends the program on signals without delay and without leaving unfinished files.
#pragma once

#include <chrono>
#include <exception>
#include <string>
#include <vector>

#include <poll.h>

namespace Workbench {

/// A signal has asked the program to end. Not an input fault; only runCommandLine catches it.
class Interrupted : public std::exception {
public:
    /// @param number of the signal
    explicit Interrupted(int number) : signalNumber_(number) {}
    /// @return number of the signal
    int signal() const { return signalNumber_; }
    const char* what() const noexcept override { return "interrupted"; }

private:
    int signalNumber_;
};

/// Records SIGINT, SIGTERM, SIGHUP and SIGQUIT instead of ending the process, so that unfinished
/// outputs are removed; signals that were ignored before (nohup) stay ignored. A further signal two
/// seconds after the first, or later, ends a program that is stuck.
void listenForInterruption();

/// @throw Interrupted when a signal has come
void throwIfInterrupted();

/// Ends the process by a signal with its default action, so that the parent process sees the cause.
/// @param signal its number
[[noreturn]] void endBy(int signal);

// Everything that may wait for long uses one of these functions, on any thread: a signal ends the
// wait whether it comes before or during it.

/// poll() that a recorded signal ends.
/// @param waited descriptors and events to wait for
/// @param patience timeout; negative: none
/// @return the same with the events that occurred
/// @throw Interrupted when a signal has come
std::vector<pollfd> waitFor(std::vector<pollfd> waited,
                            std::chrono::milliseconds patience = std::chrono::milliseconds(-1));

/// @param moment when to continue
/// @throw Interrupted when a signal has come
void sleepUntil(std::chrono::steady_clock::time_point moment);

/// open() for paths that may be named pipes; waits for the other end of the pipe.
/// @param path of the file
/// @param flags as open() takes them
/// @return the descriptor; negative, with errno, when it cannot be opened
/// @throw Interrupted when a signal has come
int openFile(const std::string& path, int flags);

}  // namespace Workbench
