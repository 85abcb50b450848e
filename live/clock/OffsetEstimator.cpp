// SPDX-License-Identifier: Apache-2.0
#include "live/clock/OffsetEstimator.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Veskar::Live {

OffsetEstimator::Verdict OffsetEstimator::add(double lag, double arrived) {
    const Lag added{arrived, lag};
    if (lags_.empty() || std::abs(lag - leastLag()) <= farAway) {
        candidates_.clear();
        take(added);
        return Verdict::Fits;
    }
    if (!agree(added)) {
        return Verdict::Far;
    }
    lags_.clear();
    sorted_.clear();
    for (const Lag& candidate : std::exchange(candidates_, {})) {
        take(candidate);
    }
    return Verdict::NewBase;
}

void OffsetEstimator::take(const Lag& lag) {
    lags_.push_back(lag);
    sorted_.insert(std::upper_bound(sorted_.begin(), sorted_.end(), lag.value), lag.value);
    // A sensor that sends less often than the window is long keeps its last lag.
    while (lags_.size() > mostLags || lags_.front().arrived < lag.arrived - window) {
        sorted_.erase(std::lower_bound(sorted_.begin(), sorted_.end(), lags_.front().value));
        lags_.pop_front();
    }
}

/// @return whether a new base is certain
bool OffsetEstimator::agree(const Lag& lag) {
    if (!candidates_.empty() && std::abs(lag.value - candidates_.front().value) > agreement) {
        candidates_.clear();
    }
    if (candidates_.size() == mostLags) {
        candidates_.pop_back();
    }
    candidates_.push_back(lag);
    return candidates_.size() >= fewestAgreeing &&
           lag.arrived - candidates_.front().arrived >= shortestAgreement;
}

double OffsetEstimator::at(double part) const {
    return sorted_.empty()
               ? 0.0
               : sorted_[static_cast<std::size_t>(part * static_cast<double>(sorted_.size() - 1))];
}

double OffsetEstimator::leastLag() const {
    return at(quantile);
}

double OffsetEstimator::jitter() const {
    return at(1.0 - quantile) - at(quantile);
}

bool OffsetEstimator::isSettled() const {
    return !lags_.empty() && lags_.back().arrived - lags_.front().arrived >= 1.0;
}

}  // namespace Veskar::Live
