// SPDX-License-Identifier: Apache-2.0
// Means that are undefined without values.
#pragma once

#include <limits>

namespace Workbench {

constexpr double nothingToAverage = std::numeric_limits<double>::quiet_NaN();

/// @param sum of the values
/// @param count of the values
/// @return the mean; nothingToAverage without values, since 0 would look like a perfect result
inline double average(double sum, double count) {
    return count > 0.0 ? sum / count : nothingToAverage;
}

}  // namespace Workbench
