// SPDX-License-Identifier: Apache-2.0
// Random numbers that are the same on every platform.
#pragma once

#include <cstdint>
#include <random>
#include <string_view>

namespace Workbench {

/// A stream of random numbers. The generator is std::mt19937_64, whose output the language fixes;
/// the distributions are written out here, because those of the standard library are not fixed.
class Random {
public:
    /// @param seed seed of the whole run
    /// @param stream name of this stream: streams of one run are independent, and a new one leaves
    ///               the others as they were
    Random(std::uint64_t seed, std::string_view stream);

    /// @return uniform in [0, 1)
    double uniform();
    /// @param least lower end
    /// @param most upper end
    /// @return uniform between both
    double uniform(double least, double most);
    /// @return standard normal
    double normal();
    /// @param probability of true
    /// @return a coin toss
    bool chance(double probability);
    /// @param mean expected count, at most a few hundred
    /// @return Poisson count
    int poisson(double mean);

private:
    std::mt19937_64 engine_;
    double spare_ = 0.0;
    bool hasSpare_ = false;
};

/// A first-order Gauss-Markov process: an error that wanders instead of jumping.
class GaussMarkov {
public:
    /// @param random source of randomness
    /// @param dt seconds since the last step; the first step starts in the stationary distribution
    /// @param std stationary standard deviation
    /// @param correlationTime seconds after which the correlation is 1/e
    /// @return the value
    double step(Random& random, double dt, double std, double correlationTime);

private:
    double value_ = 0.0;  ///< in units of the standard deviation
    bool isStarted_ = false;
};

}  // namespace Workbench
