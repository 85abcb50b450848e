// SPDX-License-Identifier: Apache-2.0
#include "import/TimeSeries.h"

#include <algorithm>
#include <iterator>

namespace Workbench {

Eigen::Vector2d TimeSeries::at(double time) const {
    const auto after = samples_.lower_bound(time);
    if (after == samples_.begin()) {
        return after->second;
    }
    const auto before = std::prev(after);
    if (after == samples_.end()) {
        return before->second;
    }
    const double fraction = (time - before->first) / (after->first - before->first);
    return before->second + fraction * (after->second - before->second);
}

Eigen::Vector2d TimeSeries::rate(double time, double reach) const {
    const double from = std::max(time - reach, begin());
    const double to = std::min(time + reach, end());
    if (!(from < to)) {
        return Eigen::Vector2d::Zero();
    }
    return (at(to) - at(from)) / (to - from);
}

}  // namespace Workbench
