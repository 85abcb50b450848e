// SPDX-License-Identifier: Apache-2.0
// Random numbers that are the same on every platform.
#pragma once

#include <cstdint>
#include <random>
#include <string_view>

namespace Workbench {

/// A stream of random numbers. The generator is std::mt19937_64, whose output the language
/// specifies; the distributions are implemented here, because the results of those of the standard
/// library are unspecified.
class Random {
public:
    /// @param seed seed of the whole run
    /// @param stream name of this stream: streams of one run are independent, and adding one does
    ///               not change the others
    Random(std::uint64_t seed, std::string_view stream);

    /// @return uniform in [0, 1)
    double uniform();
    /// @param least lower end
    /// @param most upper end
    /// @return uniform between both
    double uniform(double least, double most);
    /// @return standard normal
    double normal();
    /// @param probability probability of true
    /// @return true or false at random
    bool chance(double probability);
    /// @param mean expected count, at most a few hundred
    /// @return Poisson count
    int poisson(double mean);

private:
    std::mt19937_64 engine_;
    double spare_ = 0.0;
    bool hasSpare_ = false;
};

/// A first-order Gauss-Markov process: an error that varies slowly.
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
