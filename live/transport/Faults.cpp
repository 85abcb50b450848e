// SPDX-License-Identifier: Apache-2.0
#include "live/transport/Faults.h"

#include <utility>

namespace Veskar::Live {

void Faults::report(const std::string& cause, const std::string& reason, Clock::time_point now) {
    std::string text = cause + ": " + reason;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        const bool isKnown = records_.size() < mostCauses || records_.count(cause) > 0;
        Record& record = records_[isKnown ? cause : otherCauses];
        ++record.count;
        if (record.told && now - *record.told < silence) {
            ++record.untold;
            return;
        }
        record.told = now;
        if (const std::uint64_t untold = std::exchange(record.untold, 0); untold > 0) {
            text += " (" + std::to_string(untold) + " more since it was last told)";
        }
    }
    tell_(text);
}

std::map<std::string, std::uint64_t> Faults::counts() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::map<std::string, std::uint64_t> counts;
    for (const auto& [cause, record] : records_) {
        counts.emplace(cause, record.count);
    }
    return counts;
}

}  // namespace Veskar::Live
