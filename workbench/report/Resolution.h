// SPDX-License-Identifier: Apache-2.0
// Resolution of the numbers in a report: finer than a screen shows, coarser than in files.
#pragma once

#include "report/Column.h"

#include <cmath>
#include <vector>

namespace Workbench {

constexpr double milliseconds = 0.001;
constexpr double metres = 0.01;
constexpr double metresPerSecond = 0.02;
constexpr double wholeDegrees = 1.0;
constexpr double image = 0.0005;  ///< half a pixel of a wide image
constexpr double tenths = 0.1;    ///< s
constexpr double percent = 0.01;
constexpr double twentieths = 0.05;
constexpr double ratio = 0.001;

/// @param seconds a coasting time
/// @return the same rounded down to whole tenths: shorter coasting is not distinguished from 0
inline double wholeTenths(double seconds) {
    return tenths * std::floor(seconds / tenths + 1e-6);
}

/// @param times s
/// @param start time 0 of the report, s
/// @return the encoded times
Json timeColumn(const std::vector<double>& times, double start);

}  // namespace Workbench
