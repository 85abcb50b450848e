// SPDX-License-Identifier: Apache-2.0
#include "dbus/SdBus.h"

#include "net/WaitBudget.h"

#include <cerrno>
#include <cstdint>

namespace Veskar::SdBus {
namespace {

std::uint64_t microseconds(std::chrono::steady_clock::duration duration) {
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::microseconds>(duration).count());
}

/// Waits until the bus has accepted a new connection. The first call would do the same, but without
/// a limit when the bus hangs.
int awaitReady(sd_bus* bus) {
    const auto begin = WaitBudget::Clock::now();
    auto now = begin;
    int r = 0;
    while (r >= 0 && sd_bus_is_ready(bus) == 0) {
        r = sd_bus_process(bus, nullptr);
        now = WaitBudget::Clock::now();
        if (r == 0) {
            r = now - begin < callTimeout
                    ? sd_bus_wait(bus, microseconds(begin + callTimeout - now))
                    : -ETIMEDOUT;
        }
    }
    WaitBudget::ofThisThread().spend(begin, now);
    return r;
}

}  // namespace

int openSystem(Bus& bus) {
    sd_bus* opened = nullptr;
    int r = sd_bus_open_system(&opened);
    if (r >= 0) {
        r = awaitReady(opened);
    }
    if (r < 0) {
        // Without flushing, which would wait again.
        sd_bus_close_unref(opened);
        return r;
    }
    bus.reset(opened);
    return limitCalls(opened, callTimeout);
}

int limitCalls(sd_bus* bus, std::chrono::steady_clock::duration limit) {
    return sd_bus_set_method_call_timeout(bus, microseconds(limit));
}

void discardPending(sd_bus* bus) {
    // Bounded, because a peer might send faster than this reads.
    constexpr int most = 1000;
    for (int i = 0; i < most && sd_bus_process(bus, nullptr) > 0; ++i) {
    }
}

int enter(sd_bus_message* message, char type, const char* contents) {
    const int r = sd_bus_message_enter_container(message, type, contents);
    return r == 0 ? -ENXIO : r;
}

}  // namespace Veskar::SdBus
