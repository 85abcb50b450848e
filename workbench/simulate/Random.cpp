// SPDX-License-Identifier: Apache-2.0
#include "simulate/Random.h"

#include <cmath>

namespace Workbench {
namespace {

// FNV-1a over the stream's name and the seed, with the mixing step of splitmix64.
std::uint64_t seedOf(std::uint64_t seed, std::string_view stream) {
    std::uint64_t hash = 14695981039346656037ULL ^ seed;
    for (const char c : stream) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
    }
    hash += 0x9e3779b97f4a7c15ULL;
    hash = (hash ^ (hash >> 30)) * 0xbf58476d1ce4e5b9ULL;
    hash = (hash ^ (hash >> 27)) * 0x94d049bb133111ebULL;
    return hash ^ (hash >> 31);
}

}  // namespace

Random::Random(std::uint64_t seed, std::string_view stream) : engine_(seedOf(seed, stream)) {}

double Random::uniform() {
    return static_cast<double>(engine_() >> 11) * 0x1p-53;
}

double Random::uniform(double least, double most) {
    return least + (most - least) * uniform();
}

double Random::normal() {
    // Marsaglia's polar method.
    if (hasSpare_) {
        hasSpare_ = false;
        return spare_;
    }
    double x = 0.0;
    double y = 0.0;
    double s = 0.0;
    do {
        x = uniform(-1.0, 1.0);
        y = uniform(-1.0, 1.0);
        s = x * x + y * y;
    } while (s >= 1.0 || s == 0.0);
    const double factor = std::sqrt(-2.0 * std::log(s) / s);
    spare_ = y * factor;
    hasSpare_ = true;
    return x * factor;
}

bool Random::chance(double probability) {
    return uniform() < probability;
}

int Random::poisson(double mean) {
    const double limit = std::exp(-mean);
    double product = uniform();
    int count = 0;
    while (product > limit) {
        product *= uniform();
        ++count;
    }
    return count;
}

double GaussMarkov::step(Random& random, double dt, double std, double correlationTime) {
    const double kept = isStarted_ ? std::exp(-dt / correlationTime) : 0.0;
    isStarted_ = true;
    value_ = kept * value_ + std::sqrt(1.0 - kept * kept) * random.normal();
    return std * value_;
}

}  // namespace Workbench
