// SPDX-License-Identifier: Apache-2.0
// Ctrl-C at once and without debris.
#pragma once

#include <chrono>
#include <exception>
#include <string>
#include <vector>

#include <poll.h>

namespace Workbench {

/// A signal has asked the program to end. It is no fault of an input and belongs to nobody but
/// runCommandLine.
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

/// From now on SIGINT, SIGTERM, SIGHUP and SIGQUIT are remembered instead of ending the process, so
/// that unfinished outputs are removed; those that were ignored so far (nohup) stay so. A signal
/// that comes a second after the first one or later ends a program that is stuck.
void listenForInterruption();

/// @throw Interrupted when a signal has come
void throwIfInterrupted();

/// Ends the process by a signal, as it would have ended without listening for it: whoever started
/// it sees why.
/// @param signal its number
[[noreturn]] void endBy(int signal);

// All that may take long without anything to do waits in one of these functions, on any thread: a
// signal ends the wait whether it comes before or in the midst of it.

/// poll() that a signal ends.
/// @param waited what is waited for
/// @param patience how long; negative: for good
/// @return the same with the events that have come
/// @throw Interrupted when a signal has come
std::vector<pollfd> waitFor(std::vector<pollfd> waited,
                            std::chrono::milliseconds patience = std::chrono::milliseconds(-1));

/// @param moment when to go on
/// @throw Interrupted when a signal has come
void sleepUntil(std::chrono::steady_clock::time_point moment);

/// open() that waits for the other end of a pipe with a name.
/// @param path of the file
/// @param flags as open() takes them
/// @return the descriptor; negative, with errno, when it cannot be opened
/// @throw Interrupted when a signal has come
int openFile(const std::string& path, int flags);

}  // namespace Workbench
