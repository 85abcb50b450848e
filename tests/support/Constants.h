// SPDX-License-Identifier: Apache-2.0
// Constants of many tests.
#pragma once

#include <limits>

namespace VeskarTest {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();
/// Cost of a forbidden pair in cost matrices.
constexpr double F = 9999.0;

}  // namespace VeskarTest
