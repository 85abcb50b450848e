// SPDX-License-Identifier: Apache-2.0
// Seeded scenes with many exact ties.
#pragma once

#include "fusion/Step.h"
#include "support/RandomEstimates.h"

namespace VeskarTest {

/// Objects at lattice points, reported by either sensor with the same covariance, a power of two.
/// Time stands still, except for jumps in empty frames that delete all tracks. All sums, inverses
/// and squares are then exact in any order of computation, so that equal distances are exactly
/// equal.
class LatticeScenario {
public:
    LatticeScenario(unsigned seed, const Switches& switches);

    const Veskar::Config& getConfig() const { return config_; }
    Step next();

private:
    std::shared_ptr<Veskar::Track> makeReport(const Step& step);

    RandomEstimates random_;
    Veskar::Config config_;
    double time_ = 100.0;  ///< seconds
};

}  // namespace VeskarTest
