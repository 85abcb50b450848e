// SPDX-License-Identifier: Apache-2.0
// Keeps a service that does not answer from blocking its callers again and again.
#pragma once

#include <chrono>
#include <functional>
#include <optional>

#include <systemd/sd-bus.h>

namespace Veskar::SdBus {

/// Makes the synchronous calls of one client to one service.
///
/// A circuit breaker: after a call that ran into its limit the service is not asked for 10 s.
/// Errors that come at once block nobody, and the next call is made as usual. The limit is
/// callTimeout, or what is left of the thread's WaitBudget; running into one below 100 ms says
/// nothing about the service. Not thread-safe.
class ServiceCaller {
public:
    using SteadyClock = std::function<std::chrono::steady_clock::time_point()>;
    /// Makes a synchronous call; negative errno on failure.
    using Call = std::function<int()>;

    /// @param steadyClock tells how long ago a failure was
    explicit ServiceCaller(SteadyClock steadyClock = std::chrono::steady_clock::now);

    /// Makes a call of a frame: within the thread's budget.
    /// @param bus the connection of the call; without one the call fails by itself
    /// @return the call's code; nothing when it was not made
    std::optional<int> ask(sd_bus* bus, const Call& call);
    /// Makes a call of a client's set-up. It counts in the budget too, but always has the whole
    /// limit, because a client that could not be set up is never set up again.
    /// @param bus as above
    /// @return as above
    std::optional<int> askPatiently(sd_bus* bus, const Call& call);

private:
    std::optional<int> ask(sd_bus* bus, const Call& call,
                           std::chrono::steady_clock::duration available);

    SteadyClock clock_;
    std::optional<std::chrono::steady_clock::time_point> silentSince_;
};

}  // namespace Veskar::SdBus
