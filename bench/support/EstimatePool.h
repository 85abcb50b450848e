// SPDX-License-Identifier: Apache-2.0
// Many different estimates, so that branch prediction does not learn the data.
#pragma once

#include "support/RandomEstimates.h"

#include <cstddef>
#include <vector>

namespace VeskarBench {

/// A ring of random estimates.
class EstimatePool {
public:
    EstimatePool() {
        VeskarTest::RandomEstimates random(2024);
        for (std::size_t i = 0; i < size; ++i) {
            estimates_.push_back(random.estimate());
        }
    }

    /// @return the next estimate of the ring
    const VeskarTest::Estimate& next() { return estimates_[position_++ % size]; }

private:
    static constexpr std::size_t size = 509;
    std::vector<VeskarTest::Estimate> estimates_;
    std::size_t position_ = 0;
};

}  // namespace VeskarBench
