// SPDX-License-Identifier: Apache-2.0
#include "support/MainLoop.h"

#include <chrono>

namespace VeskarTest {
namespace {

/// Far longer than any operation; reached only by failing tests.
constexpr std::chrono::seconds deadline{60};

}  // namespace

MainLoop::MainLoop(Context which)
    : context_(which == Context::Own ? g_main_context_new()
                                     : g_main_context_ref(g_main_context_default())) {
    // Otherwise created at the first use of a context, which would open a descriptor in the middle
    // of a test that counts descriptors.
    g_main_context_default();
}

MainLoop::~MainLoop() {
    stop();
    g_main_context_unref(context_);
}

void MainLoop::asThreadDefault(const std::function<void()>& function) {
    g_main_context_push_thread_default(context_);
    function();
    g_main_context_pop_thread_default(context_);
}

void MainLoop::start() {
    running_ = true;
    thread_ = std::thread([this] {
        g_main_context_push_thread_default(context_);
        while (running_) {
            runCalls();
            g_main_context_iteration(context_, TRUE);
            const std::lock_guard<std::mutex> lock(mutex_);
            iterated_.notify_all();
        }
        g_main_context_pop_thread_default(context_);
    });
}

void MainLoop::stop() {
    if (thread_.joinable()) {
        running_ = false;
        g_main_context_wakeup(context_);
        thread_.join();
    }
}

void MainLoop::call(const std::function<void()>& function) {
    std::unique_lock<std::mutex> lock(mutex_);
    bool done = false;
    calls_.emplace_back([&] {
        function();
        const std::lock_guard<std::mutex> doneLock(mutex_);
        done = true;
    });
    g_main_context_wakeup(context_);
    iterated_.wait(lock, [&] { return done; });
}

void MainLoop::runCalls() {
    std::vector<std::function<void()>> due;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        due.swap(calls_);
    }
    for (const std::function<void()>& call : due) {
        call();
        // Ends the wait of the calling thread.
        g_main_context_wakeup(context_);
    }
}

bool MainLoop::waitUntil(const std::function<bool()>& condition) {
    std::unique_lock<std::mutex> lock(mutex_);
    return iterated_.wait_for(lock, deadline, condition);
}

bool MainLoop::iterateUntil(const std::function<bool()>& condition) {
    bool expired = false;
    GSource* alarm = g_timeout_source_new_seconds(deadline.count());
    g_source_set_callback(
        alarm,
        [](gpointer data) -> gboolean {
            *static_cast<bool*>(data) = true;
            return G_SOURCE_REMOVE;
        },
        &expired, nullptr);
    g_source_attach(alarm, context_);
    while (!expired && !condition()) {
        g_main_context_iteration(context_, TRUE);
    }
    g_source_destroy(alarm);
    g_source_unref(alarm);
    return !expired;
}

bool MainLoop::iterateUntilIdle() {
    for (int i = 0; i < 10000; ++i) {
        if (g_main_context_iteration(context_, FALSE) == FALSE) {
            return true;
        }
    }
    return false;
}

}  // namespace VeskarTest
