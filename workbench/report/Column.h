// SPDX-License-Identifier: Apache-2.0
// A list of numbers in few bytes.
#pragma once

#include "recording/Header.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Workbench {

/// A number in steps: what a column holds. Numbers that are not finite are `missing`.
///
/// @param value the number
/// @param step size of a step, in the unit of the number
/// @return the nearest count of steps, at most 2^28 of them
std::int32_t inSteps(double value, double step);

/// Stands for a number that is not there.
constexpr std::int32_t missing = -(std::int32_t{1} << 28) - 1;

/// Numbers that change little from one to the next, as most of what tracks carry does.
///
/// The page gets {"step": s, "data": base64}. The bytes are variable-length integers of seven bits
/// each, lowest first, the eighth bit set on all but the last: the differences from the number
/// before, folded so that 0, -1, 1, -2 become 0, 1, 2, 3; a zero is followed by how many more zeros
/// there are.
class Column {
public:
    /// @param size of a step, in the unit of the numbers
    explicit Column(double size) : step_(size) {}

    /// @param value appended; what is not finite is kept as missing
    void add(double value) { append(inSteps(value, step_)); }
    /// @param steps appended, any number
    void append(std::int32_t steps);
    /// @return the column as the page gets it
    Json json() const;

private:
    double step_;
    std::string bytes_;
    std::int32_t last_ = 0;
    std::uint64_t zeros_ = 0;
};

/// @param bytes any bytes
/// @return them in base64 (RFC 4648), padded
std::string base64(std::string_view bytes);

}  // namespace Workbench
