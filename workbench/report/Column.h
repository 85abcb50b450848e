// SPDX-License-Identifier: Apache-2.0
// Compact encoding of a sequence of numbers.
#pragma once

#include "recording/Header.h"

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace Workbench {

/// Quantises a number for a column. Values that are not finite become `missing`.
///
/// @param value the number
/// @param step size of a step, in the unit of the number
/// @return the nearest multiple of the step, as a count limited to +-2^28
std::int32_t inSteps(double value, double step);

/// What a column takes for a missing number.
constexpr double noValue = std::numeric_limits<double>::quiet_NaN();

/// Represents a missing number in steps.
constexpr std::int32_t missing = -(std::int32_t{1} << 28) - 1;

/// A sequence of numbers with small differences, as most quantities of tracks are.
///
/// The page gets {"step": s, "data": base64}. The bytes are variable-length integers of seven bits
/// each, lowest first, the eighth bit set on all but the last. They encode the difference from the
/// previous number, folded so that 0, -1, 1, -2 become 0, 1, 2, 3; a zero is followed by the number
/// of further zeros.
class Column {
public:
    /// @param size of a step, in the unit of the numbers
    explicit Column(double size) : step_(size) {}

    /// @param value appended; missing if it is not finite
    void add(double value) { append(inSteps(value, step_)); }
    /// @param steps number of steps, appended
    void append(std::int32_t steps);
    /// @return the encoded column
    Json json() const;

private:
    double step_;
    std::string bytes_;
    std::int32_t last_ = 0;
    std::uint64_t zeros_ = 0;
};

/// @param bytes any bytes
/// @return base64 text (RFC 4648), padded
std::string base64(std::string_view bytes);

}  // namespace Workbench
