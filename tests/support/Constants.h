// SPDX-License-Identifier: Apache-2.0
// Numbers that many tests write down.
#pragma once

#include <limits>

namespace VeskarTest {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();
/// Cost of a forbidden pair, the way it stands in cost matrices.
constexpr double F = 9999.0;

}  // namespace VeskarTest
