// SPDX-License-Identifier: Apache-2.0
#include "io/Interruption.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <ctime>

#include <fcntl.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Workbench {
namespace {

// Stays readable once a signal has come; poll() ignores it while it is negative.
int wakeup = -1;
std::atomic<int> received = 0;
std::atomic<std::time_t> receivedAt = 0;
static_assert(std::atomic<int>::is_always_lock_free &&
              std::atomic<std::time_t>::is_always_lock_free);

std::time_t secondsSinceStart() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec;
}

// A closing terminal sends SIGHUP twice, and users press Ctrl-C twice: both count as one request.
void remember(int signal) {
    const int faultBefore = errno;
    int none = 0;
    if (received.compare_exchange_strong(none, signal)) {
        receivedAt = secondsSinceStart();
        const std::uint64_t one = 1;
        static_cast<void>(::write(wakeup, &one, sizeof one));
    } else if (secondsSinceStart() > receivedAt + 1) {
        std::signal(signal, SIG_DFL);
        std::raise(signal);
    }
    errno = faultBefore;
}

}  // namespace

void listenForInterruption() {
    wakeup = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        struct sigaction action {};
        if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
            action = {};
            action.sa_handler = remember;
            ::sigaction(signal, &action, nullptr);
        }
    }
}

void throwIfInterrupted() {
    if (const int signal = received; signal != 0) {
        throw Interrupted(signal);
    }
}

void endBy(int signal) {
    std::signal(signal, SIG_DFL);
    std::raise(signal);
    std::_Exit(128 + signal);
}

std::vector<pollfd> waitFor(std::vector<pollfd> waited, std::chrono::milliseconds patience) {
    waited.push_back({wakeup, POLLIN, 0});
    // Other errors of poll() recur in the caller's next system call and are reported there.
    while (::poll(waited.data(), waited.size(), static_cast<int>(patience.count())) < 0 &&
           errno == EINTR) {
        throwIfInterrupted();
    }
    throwIfInterrupted();
    waited.pop_back();
    return waited;
}

void sleepUntil(std::chrono::steady_clock::time_point moment) {
    using std::chrono::milliseconds;
    constexpr milliseconds longest = std::chrono::hours(1);
    for (;;) {
        const auto left = moment - std::chrono::steady_clock::now();
        if (left <= left.zero()) {
            return;
        }
        waitFor({}, std::min(longest, std::chrono::ceil<milliseconds>(left)));
    }
}

int openFile(const std::string& path, int flags) {
    constexpr std::chrono::milliseconds patience(20);
    const auto isPipe = [&] {
        struct stat status {};
        return ::stat(path.c_str(), &status) == 0 && S_ISFIFO(status.st_mode);
    };
    for (;;) {
        // With O_NONBLOCK, a signal just before the call cannot be missed: open() does not wait.
        const int descriptor = ::open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC);
        if (descriptor >= 0) {
            ::fcntl(descriptor, F_SETFL, flags);
            return descriptor;
        }
        if (const int fault = errno; fault != ENXIO || !isPipe()) {
            errno = fault;
            return -1;
        }
        waitFor({}, patience);
    }
}

}  // namespace Workbench
