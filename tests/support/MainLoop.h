// SPDX-License-Identifier: Apache-2.0
// A GLib main context that runs on a chosen thread.
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include <glib.h>

namespace VeskarTest {

/// Iterates a main context, on its own thread or within iterateUntil(). Waiting threads do not
/// poll: they are woken after each iteration.
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
    /// Starts iterating on a thread.
    void start();
    /// Stops iterating.
    void stop();
    /// While started: runs a function on the thread that iterates.
    void call(const std::function<void()>& function);
    /// While started: waits until a condition holds, checking after each iteration.
    /// @return false when it does not hold within a very long time
    bool waitUntil(const std::function<bool()>& condition);
    /// While not started: iterates on the calling thread until a condition holds.
    /// @return false when it does not hold within a very long time
    bool iterateUntil(const std::function<bool()>& condition);
    /// While not started: iterates until no work is left.
    /// @return false when there is always work
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
