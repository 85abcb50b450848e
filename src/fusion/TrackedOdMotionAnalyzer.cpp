// SPDX-License-Identifier: Apache-2.0
#include <veskar/TrackedOdMotionAnalyzer.h>

#include <cmath>

namespace Veskar {

TrackedOdMotionAnalyzer::TrackedOdMotionAnalyzer(const Config& config) : config_(config) {}

bool TrackedOdMotionAnalyzer::updateAndCheckMotion(int id, double u, double v) {
    const auto [entry, isNew] = histories_.try_emplace(id);
    History& history = entry->second;
    history.emplace_back(u, v);
    if (isNew) {
        if (histories_.size() > static_cast<std::size_t>(maxHistories_)) {
            histories_.erase(histories_.begin());
        }
        return false;
    }

    const Config::ModuleConfig& limits = config_.module;
    int length = static_cast<int>(history.size());
    if (length > limits.trackedOdMotionAnalyzerMaxHistoryLength) {
        history.pop_front();
        --length;
    }
    if (length < limits.trackedOdMotionAnalyzerMinHistoryLength) {
        return false;
    }
    const double du = history.back().first - history.front().first;
    const double dv = history.back().second - history.front().second;
    return limits.trackedOdMotionAnalyzerDistanceThreshold < std::sqrt(du * du + dv * dv);
}

}  // namespace Veskar
