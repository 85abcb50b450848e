// SPDX-License-Identifier: Apache-2.0
// The event loop of a live host: descriptors, timers, signals and deferred work on one thread.
#pragma once

#include "live/transport/CallbackThrow.h"

#include <chrono>
#include <csignal>
#include <cstdint>
#include <functional>
#include <memory>

#include <sys/epoll.h>

struct sd_event;
struct sd_event_source;

namespace Veskar::Live {

/// An sd-event loop. Callbacks run within run and turn, on their thread, and may make and destroy
/// registrations, their own included. What they throw reaches the caller of run or turn, after
/// which the loop can be run again.
///
/// Registrations end with the objects that stand for them, which must not outlive the loop. All is
/// thread-bound: one thread makes the loop, its registrations and runs it.
class EventLoop {
    struct Callback;
    struct DisableSource {
        void operator()(sd_event_source* source) const noexcept;
    };
    struct UnrefLoop {
        void operator()(sd_event* event) const noexcept;
    };
    using SourceHandle = std::unique_ptr<sd_event_source, DisableSource>;

public:
    using Clock = std::chrono::steady_clock;
    using Duration = Clock::duration;
    using Task = std::function<void()>;

    /// A descriptor that is watched.
    class Watch {
    public:
        Watch() = default;
        /// @param events EPOLLIN, EPOLLOUT, both or 0; errors and hang-ups are reported always
        void setEvents(std::uint32_t events);
        /// @return whether something is watched
        explicit operator bool() const { return static_cast<bool>(source_); }

    private:
        friend class EventLoop;
        std::shared_ptr<Callback> callback_;
        SourceHandle source_;
        bool isAlwaysReady_ = false;
    };

    /// Runs a task at a time.
    class Timer {
    public:
        Timer() = default;
        /// Sets or moves the time.
        void expireAt(Clock::time_point moment);
        /// As expireAt, from now on.
        void expireAfter(Duration delay) { expireAt(Clock::now() + delay); }
        /// The task does not run unless a new time is set.
        void disarm();

    private:
        friend class EventLoop;
        std::shared_ptr<Callback> callback_;
        SourceHandle source_;
    };

    /// Runs a task behind the callback that asks for it.
    class Deferral {
    public:
        Deferral() = default;
        /// Lets the task run once, however often this is called before.
        void request();

    private:
        friend class EventLoop;
        std::shared_ptr<Callback> callback_;
        SourceHandle source_;
    };

    /// A signal that is received by the loop instead of its action.
    class SignalWatch {
    public:
        SignalWatch() = default;
        ~SignalWatch();
        SignalWatch(SignalWatch&& other) noexcept;
        SignalWatch& operator=(SignalWatch&& other) noexcept;

    private:
        friend class EventLoop;
        std::shared_ptr<Callback> callback_;
        SourceHandle source_;
        int unblocks_ = 0;  ///< the signal, when it was not blocked before
    };

    /// SIGPIPE is ignored by the process from here on: pipes and sockets report their end by EPIPE.
    /// @throw std::system_error
    EventLoop();
    ~EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    /// @param descriptor must stay open; a regular file counts as always ready
    /// @param events EPOLLIN, EPOLLOUT, both or 0
    /// @param ready receives what the descriptor is ready for
    /// @throw std::system_error
    [[nodiscard]] Watch watch(int descriptor, std::uint32_t events,
                              std::function<void(std::uint32_t)> ready);
    /// @param expired runs when the time has come that is set later
    /// @throw std::system_error
    [[nodiscard]] Timer timer(Task expired);
    /// @param task runs when it is asked for
    /// @throw std::system_error
    [[nodiscard]] Deferral deferral(Task task);
    /// Blocks the signal for this thread and those that it starts later; threads that run already
    /// must block it themselves.
    /// @param signal its number
    /// @param arrived runs for each signal
    /// @throw std::system_error
    [[nodiscard]] SignalWatch onSignal(int signal, Task arrived);

    /// Runs callbacks until stop is called.
    /// @throw std::system_error, or what a callback throws
    void run();
    /// Ends run behind the callback that calls this; the next run when none is under way.
    void stop() { isStopped_ = true; }
    /// Runs the callbacks of one event, if there is any within a time.
    /// @param patience longest wait
    /// @return whether there was one
    /// @throw std::system_error, or what the callback throws
    bool turn(Duration patience);
    /// Tells systemd's watchdog that the loop runs, where the service has one (WatchdogSec=).
    /// @return whether it has
    /// @throw std::system_error
    bool keepWatchdog();

private:
    std::unique_ptr<sd_event, UnrefLoop> event_;
    CallbackThrow thrown_;
    bool isStopped_ = false;
};

}  // namespace Veskar::Live
