// SPDX-License-Identifier: Apache-2.0
// Counts faults, and tells of each cause at most once a minute.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace Veskar::Live {

/// The faults of a running host. A sensor that sends garbage twenty times a second must be seen in
/// the log, but must not fill it.
///
/// May be used by any thread.
class Faults {
public:
    using Clock = std::chrono::steady_clock;
    /// Receives the text of a fault, on the thread that reports it; must not throw.
    using Tell = std::function<void(const std::string&)>;
    /// How long a cause is silent after it has been told.
    static constexpr Clock::duration silence = std::chrono::minutes(1);
    /// Further causes are counted together: they may come from what a peer sends.
    static constexpr std::size_t mostCauses = 1000;
    static constexpr const char* otherCauses = "other faults";

    /// @param tell where the texts go, such as the log
    explicit Faults(Tell tell) : tell_(std::move(tell)) {}

    /// Counts a fault, and tells "CAUSE: REASON" when the cause is not silent, with the number of
    /// those that were counted silently before.
    /// @param cause what is silent for a minute afterwards, as "input radar: too long"
    /// @param reason this fault's particulars
    /// @param now the time
    void report(const std::string& cause, const std::string& reason,
                Clock::time_point now = Clock::now());

    /// @return how many faults each cause had
    std::map<std::string, std::uint64_t> counts() const;

private:
    struct Record {
        std::uint64_t count = 0;
        std::uint64_t untold = 0;
        std::optional<Clock::time_point> told;
    };

    Tell tell_;
    mutable std::mutex mutex_;
    std::map<std::string, Record> records_;
};

}  // namespace Veskar::Live
