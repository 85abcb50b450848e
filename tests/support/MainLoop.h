// SPDX-License-Identifier: Apache-2.0
// A GLib main context that runs where a test wants it.
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include <glib.h>

namespace VeskarTest {

/// Iterates a main context, on a thread of its own or within iterateUntil(). Nobody sleeps:
/// whoever waits is woken after each iteration.
class MainLoop {
public:
    /// Which context to run.
    enum class Context { Own, GlobalDefault };

    explicit MainLoop(Context which = Context::Own);
    ~MainLoop();
    MainLoop(const MainLoop&) = delete;
    MainLoop& operator=(const MainLoop&) = delete;

    GMainContext* get() const { return context_; }

    /// Runs a function with the context as the calling thread's default; not while it is started.
    void asThreadDefault(const std::function<void()>& function);
    /// Starts to iterate on a thread.
    void start();
    /// Stops iterating.
    void stop();
    /// While started: runs a function on the thread that iterates.
    void call(const std::function<void()>& function);
    /// While started: waits until a condition holds, looking after each iteration.
    /// @return false when it did not come to hold for a very long time
    bool waitUntil(const std::function<bool()>& condition);
    /// While not started: iterates on the calling thread until a condition holds.
    /// @return false when it did not come to hold for a very long time
    bool iterateUntil(const std::function<bool()>& condition);
    /// While not started: iterates until nothing is left to do.
    /// @return false when there is always something
    bool iterateUntilIdle();

private:
    void runCalls();

    GMainContext* context_;
    std::atomic<bool> running_{false};
    std::mutex mutex_;
    std::condition_variable iterated_;
    std::vector<std::function<void()>> calls_;
    std::thread thread_;
};

}  // namespace VeskarTest
