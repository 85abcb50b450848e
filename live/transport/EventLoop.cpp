// SPDX-License-Identifier: Apache-2.0
#include "live/transport/EventLoop.h"

#include <cerrno>
#include <ctime>
#include <limits>
#include <system_error>
#include <utility>

#include <systemd/sd-event.h>

namespace Veskar::Live {
namespace {

using Microseconds = std::chrono::duration<std::uint64_t, std::micro>;

/// sd-event would otherwise gather timers within 250 ms.
constexpr std::uint64_t timerAccuracy = 1000;

int checked(int result, const char* what) {
    if (result < 0) {
        throw std::system_error(-result, std::generic_category(), what);
    }
    return result;
}

/// For requests that cannot fail on a source of ours.
void enable(sd_event_source* source, int how) {
    checked(sd_event_source_set_enabled(source, how), "sd_event_source_set_enabled");
}

}  // namespace

/// What a source's user data points to. A callback that destroys its own registration runs to its
/// end, because the dispatch holds it, too.
struct EventLoop::Callback : std::enable_shared_from_this<Callback> {
    Callback(CallbackThrow& holder, std::function<void(std::uint32_t)> called)
        : thrown(holder), function(std::move(called)) {}

    static int run(void* data, std::uint32_t events) noexcept {
        const std::shared_ptr<Callback> held = static_cast<Callback*>(data)->shared_from_this();
        held->thrown.hold([&] { held->function(events); });
        return 0;
    }

    CallbackThrow& thrown;
    std::function<void(std::uint32_t)> function;
    std::uint32_t wanted = 0;  ///< events of a descriptor that is always ready
};

void EventLoop::DisableSource::operator()(sd_event_source* source) const noexcept {
    sd_event_source_disable_unref(source);
}

void EventLoop::UnrefLoop::operator()(sd_event* event) const noexcept {
    sd_event_unref(event);
}

EventLoop::EventLoop() {
    std::signal(SIGPIPE, SIG_IGN);
    sd_event* made = nullptr;
    checked(sd_event_new(&made), "sd_event_new");
    event_.reset(made);
}

EventLoop::~EventLoop() = default;

EventLoop::Watch EventLoop::watch(int descriptor, std::uint32_t events,
                                  std::function<void(std::uint32_t)> ready) {
    Watch watch;
    watch.callback_ = std::make_shared<Callback>(thrown_, std::move(ready));
    sd_event_source* source = nullptr;
    const int result = sd_event_add_io(
        event_.get(), &source, descriptor, events,
        [](sd_event_source*, int, std::uint32_t occurred, void* data) {
            return Callback::run(data, occurred);
        },
        watch.callback_.get());
    if (result != -EPERM) {
        checked(result, "sd_event_add_io");
        watch.source_.reset(source);
        return watch;
    }
    // epoll refuses regular files, which never wait.
    watch.isAlwaysReady_ = true;
    checked(sd_event_add_defer(
                event_.get(), &source,
                [](sd_event_source*, void* data) {
                    return Callback::run(data, static_cast<Callback*>(data)->wanted);
                },
                watch.callback_.get()),
            "sd_event_add_defer");
    watch.source_.reset(source);
    // Files must not keep other sources waiting.
    checked(sd_event_source_set_priority(source, SD_EVENT_PRIORITY_IDLE),
            "sd_event_source_set_priority");
    watch.setEvents(events);
    return watch;
}

void EventLoop::Watch::setEvents(std::uint32_t events) {
    if (isAlwaysReady_) {
        callback_->wanted = events;
        enable(source_.get(), events == 0 ? SD_EVENT_OFF : SD_EVENT_ON);
    } else {
        checked(sd_event_source_set_io_events(source_.get(), events),
                "sd_event_source_set_io_events");
    }
}

EventLoop::Timer EventLoop::timer(Task expired) {
    Timer timer;
    timer.callback_ =
        std::make_shared<Callback>(thrown_, [task = std::move(expired)](std::uint32_t) { task(); });
    sd_event_source* source = nullptr;
    checked(sd_event_add_time(
                event_.get(), &source, CLOCK_MONOTONIC, std::numeric_limits<std::uint64_t>::max(),
                timerAccuracy,
                [](sd_event_source*, std::uint64_t, void* data) { return Callback::run(data, 0); },
                timer.callback_.get()),
            "sd_event_add_time");
    timer.source_.reset(source);
    return timer;
}

void EventLoop::Timer::expireAt(Clock::time_point moment) {
    // On Linux the steady clock is CLOCK_MONOTONIC.
    const auto time = std::chrono::ceil<Microseconds>(moment.time_since_epoch());
    checked(sd_event_source_set_time(source_.get(), time.count()), "sd_event_source_set_time");
    enable(source_.get(), SD_EVENT_ONESHOT);
}

void EventLoop::Timer::disarm() {
    enable(source_.get(), SD_EVENT_OFF);
}

EventLoop::Deferral EventLoop::deferral(Task task) {
    Deferral deferral;
    deferral.callback_ = std::make_shared<Callback>(
        thrown_, [deferred = std::move(task)](std::uint32_t) { deferred(); });
    sd_event_source* source = nullptr;
    checked(sd_event_add_defer(
                event_.get(), &source,
                [](sd_event_source*, void* data) { return Callback::run(data, 0); },
                deferral.callback_.get()),
            "sd_event_add_defer");
    deferral.source_.reset(source);
    enable(source, SD_EVENT_OFF);
    return deferral;
}

void EventLoop::Deferral::request() {
    enable(source_.get(), SD_EVENT_ONESHOT);
}

EventLoop::SignalWatch EventLoop::onSignal(int signal, Task arrived) {
    SignalWatch watch;
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    sigaddset(&blocked, signal);
    checked(-pthread_sigmask(SIG_BLOCK, &blocked, &before), "pthread_sigmask");
    watch.unblocks_ = sigismember(&before, signal) == 0 ? signal : 0;
    watch.callback_ =
        std::make_shared<Callback>(thrown_, [task = std::move(arrived)](std::uint32_t) { task(); });
    sd_event_source* source = nullptr;
    checked(sd_event_add_signal(
                event_.get(), &source, signal,
                [](sd_event_source*, const signalfd_siginfo*, void* data) {
                    return Callback::run(data, 0);
                },
                watch.callback_.get()),
            "sd_event_add_signal");
    watch.source_.reset(source);
    return watch;
}

EventLoop::SignalWatch::SignalWatch(SignalWatch&& other) noexcept
    : callback_(std::move(other.callback_)),
      source_(std::move(other.source_)),
      unblocks_(std::exchange(other.unblocks_, 0)) {}

EventLoop::SignalWatch& EventLoop::SignalWatch::operator=(SignalWatch&& other) noexcept {
    std::swap(callback_, other.callback_);
    std::swap(source_, other.source_);
    std::swap(unblocks_, other.unblocks_);
    return *this;
}

EventLoop::SignalWatch::~SignalWatch() {
    source_.reset();
    if (unblocks_ != 0) {
        sigset_t unblocked;
        sigemptyset(&unblocked);
        sigaddset(&unblocked, unblocks_);
        pthread_sigmask(SIG_UNBLOCK, &unblocked, nullptr);
    }
}

void EventLoop::run() {
    while (!isStopped_) {
        turn(Duration::max());
    }
    isStopped_ = false;
}

bool EventLoop::turn(Duration patience) {
    const std::uint64_t limit = patience == Duration::max()
                                    ? std::numeric_limits<std::uint64_t>::max()
                                    : std::chrono::ceil<Microseconds>(patience).count();
    const bool wasEvent = checked(sd_event_run(event_.get(), limit), "sd_event_run") > 0;
    thrown_.release();
    return wasEvent;
}

bool EventLoop::keepWatchdog() {
    return checked(sd_event_set_watchdog(event_.get(), 1), "sd_event_set_watchdog") > 0;
}

}  // namespace Veskar::Live
