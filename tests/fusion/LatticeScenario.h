// SPDX-License-Identifier: Apache-2.0
// Seeded scenes full of exact ties.
#pragma once

#include "fusion/Step.h"
#include "support/RandomEstimates.h"

namespace VeskarTest {

/// Objects that stand on the points of a lattice, reported by either sensor with one and the same
/// covariance, a power of two. Time stands still, but for jumps in empty frames that no track
/// survives. All sums, inverses and squares are exact then, whatever the order of computing, so
/// that equal distances are equal.
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
