// SPDX-License-Identifier: Apache-2.0
#include "dbus/ServiceCaller.h"

#include "dbus/SdBus.h"
#include "net/WaitBudget.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace Veskar::SdBus {
namespace {

constexpr std::chrono::seconds rest(10);
/// With less time left no answer can be expected, and no call is made.
constexpr std::chrono::milliseconds leastLimit(10);
/// A service that had less time does not count as silent.
constexpr std::chrono::milliseconds fairLimit(100);

}  // namespace

ServiceCaller::ServiceCaller(SteadyClock steadyClock) : clock_(std::move(steadyClock)) {}

std::optional<int> ServiceCaller::ask(sd_bus* bus, const Call& call) {
    return ask(bus, call, WaitBudget::ofThisThread().left(WaitBudget::Clock::now()));
}

std::optional<int> ServiceCaller::askPatiently(sd_bus* bus, const Call& call) {
    return ask(bus, call, callTimeout);
}

std::optional<int> ServiceCaller::ask(sd_bus* bus, const Call& call,
                                      std::chrono::steady_clock::duration available) {
    if (available < leastLimit || (silentSince_ && clock_() - *silentSince_ < rest)) {
        return std::nullopt;
    }
    silentSince_.reset();
    const auto limit = std::min<std::chrono::steady_clock::duration>(available, callTimeout);
    limitCalls(bus, limit);
    const auto begin = WaitBudget::Clock::now();
    const int r = call();
    const auto end = WaitBudget::Clock::now();
    WaitBudget::ofThisThread().spend(begin, end);
    // The bus itself reports a service that leaves without an answer with the same code, at once.
    if (r == -ETIMEDOUT && limit >= fairLimit && end - begin >= limit) {
        silentSince_ = clock_();
    }
    return r;
}

}  // namespace Veskar::SdBus
