// SPDX-License-Identifier: Apache-2.0
// The median of very many numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Workbench {

/// The exact median in two passes over the numbers, of which only a small part is stored: the first
/// pass finds the interval that contains it, the second one collects the numbers in the interval.
class Median {
public:
    /// @param value not negative; first pass
    void count(float value);
    /// Begins the second pass.
    void beginAgain();
    /// The same calls as of count.
    void countAgain(float value);

    /// @return number of values
    std::size_t size() const { return size_; }
    /// @return the median after the second pass, the upper one of an even number; nothingToAverage
    ///         without values
    double result() const;

private:
    std::size_t size_ = 0;
    std::vector<std::uint32_t> counts_;  ///< by interval
    std::size_t interval_ = 0;           ///< the one with the median
    std::size_t rank_ = 0;               ///< of the median in its interval
    std::vector<float> candidates_;
};

}  // namespace Workbench
