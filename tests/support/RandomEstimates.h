// SPDX-License-Identifier: Apache-2.0
// Seeded random estimates, well conditioned and correlated.
#pragma once

#include <veskar/Estimation.h>

#include <random>

namespace VeskarTest {

/// A state with its covariance.
struct Estimate {
    Veskar::StateVector x;
    Veskar::StateMatrix P;
};

/// Generates estimates; the same seed gives the same ones on every machine.
class RandomEstimates {
public:
    explicit RandomEstimates(unsigned seed) : engine_(seed) {}

    /// @return a number in [low, high)
    double uniform(double low, double high);
    /// @return an integer in [low, high]
    int integer(int low, int high);
    /// @return a state with components in [-1, 1)
    Veskar::StateVector state();
    /// @return a symmetric positive definite matrix with all correlations, condition number
    ///         below 1000
    Veskar::StateMatrix covariance();
    /// @return state() with covariance()
    Estimate estimate();

private:
    std::mt19937_64 engine_;
};

}  // namespace VeskarTest
