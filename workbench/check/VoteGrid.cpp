// SPDX-License-Identifier: Apache-2.0
#include "check/VoteGrid.h"

#include <veskar-host/Projection.h>

#include "HostLibrary.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Workbench {
namespace {

constexpr double bearingStep = radians(1.0);
constexpr double ratioStep = 0.1;
constexpr double halfWidth = 1.5;  // steps
constexpr int bearingReach = 6;

std::size_t countOf(int reach) {
    return 2 * static_cast<std::size_t>(reach) + 1;
}

}  // namespace

bool VoteGrid::Window::holds(double otherBearingError, double otherLogRatio) const {
    return std::abs(otherBearingError - bearingError) < halfWidth * bearingStep &&
           std::abs(otherLogRatio - logRatio) < halfWidth * ratioStep;
}

VoteGrid::VoteGrid(int ratioReach)
    : ratioReach_(ratioReach),
      votes_(countOf(bearingReach) * countOf(ratioReach)),
      lastVoter_(votes_.size()) {}

void VoteGrid::vote(std::uint64_t voter, double bearingError, double logRatio) {
    const double bearing = std::round(bearingError / bearingStep);
    const double ratio = std::round(logRatio / ratioStep);
    if (std::abs(bearing) > bearingReach + 1 || std::abs(ratio) > ratioReach_ + 1) {
        return;
    }
    const auto neighbours = [](double middle, int reach) {
        const int step = static_cast<int>(middle);
        return std::make_pair(std::max(step - 1, -reach), std::min(step + 1, reach));
    };
    const auto [firstBearing, lastBearing] = neighbours(bearing, bearingReach);
    const auto [firstRatio, lastRatio] = neighbours(ratio, ratioReach_);
    for (int i = firstBearing; i <= lastBearing; ++i) {
        for (int j = firstRatio; j <= lastRatio; ++j) {
            const std::size_t window =
                static_cast<std::size_t>(i + bearingReach) * countOf(ratioReach_) +
                static_cast<std::size_t>(j + ratioReach_);
            if (lastVoter_[window] != voter) {
                lastVoter_[window] = voter;
                ++votes_[window];
            }
        }
    }
}

std::uint64_t VoteGrid::most() const {
    return *std::max_element(votes_.begin(), votes_.end());
}

VoteGrid::Window VoteGrid::best() const {
    const auto window =
        static_cast<std::size_t>(std::max_element(votes_.begin(), votes_.end()) - votes_.begin());
    const auto bearing = static_cast<int>(window / countOf(ratioReach_)) - bearingReach;
    const auto ratio = static_cast<int>(window % countOf(ratioReach_)) - ratioReach_;
    return {bearing * bearingStep, ratio * ratioStep};
}

double VoteGrid::bearingLimit() {
    return (bearingReach + halfWidth) * bearingStep;
}

}  // namespace Workbench
