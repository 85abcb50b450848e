// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace Workbench {

/// @param numbers at least one
/// @return the middle number in ascending order; of an even count the upper one of the two
template <typename Number>
Number medianOf(std::vector<Number> numbers) {
    const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2);
    std::nth_element(numbers.begin(), middle, numbers.end());
    return *middle;
}

}  // namespace Workbench
