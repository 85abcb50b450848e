// SPDX-License-Identifier: Apache-2.0
// Means that say so when there is nothing to average.
#pragma once

#include <limits>

namespace Workbench {

constexpr double nothingToAverage = std::numeric_limits<double>::quiet_NaN();

/// @param sum of the values
/// @param count of the values
/// @return the mean; nothingToAverage without a value, since an error of zero would be praise
inline double average(double sum, double count) {
    return count > 0.0 ? sum / count : nothingToAverage;
}

}  // namespace Workbench
