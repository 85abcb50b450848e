// SPDX-License-Identifier: Apache-2.0
#include "check/MountingEstimate.h"

#include <veskar-host/Projection.h>

#include "HostLibrary.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <Eigen/Cholesky>
#include <Eigen/LU>

namespace Workbench {
namespace {

using Unknowns = Eigen::Vector4d;  ///< yaw, height, pitch, lag
using Normal = Eigen::Matrix4d;

/// One linear equation row * x = value.
struct Equation {
    Unknowns row;
    double value;
};

struct Equations {
    std::vector<Equation> bearing;
    std::vector<Equation> depression;
    std::vector<double> time;  ///< s
};

Equations equationsOf(const std::vector<PairSample>& samples, double height) {
    Equations equations;
    for (const PairSample& sample : samples) {
        equations.time.push_back(sample.time);
        const double d = sample.groundDistance;
        const double perHeight = d / (d * d + height * height);
        // If the radar's stamps are late by lag, its object of time t + lag is paired with video's
        // of time t.
        equations.bearing.push_back(
            {Unknowns(-1.0, 0.0, 0.0, sample.bearingRate), sample.bearingError});
        // An error of the foot point that is a fraction of the object's height matters less at a
        // distance.
        equations.depression.push_back({d * Unknowns(0.0, perHeight, -1.0, sample.depressionRate),
                                        d * sample.depressionError});
    }
    return equations;
}

/// Robust standard deviation from the median absolute value.
double scaleOf(const std::vector<Equation>& equations, const Unknowns& x) {
    std::vector<double> residuals;
    residuals.reserve(equations.size());
    for (const Equation& equation : equations) {
        residuals.push_back(std::abs(equation.value - equation.row.dot(x)));
    }
    const auto middle = residuals.begin() + static_cast<std::ptrdiff_t>(residuals.size() / 2);
    std::nth_element(residuals.begin(), middle, residuals.end());
    return std::max(1.4826 * *middle, 1e-9);
}

/// The weighted normal equations of consecutive samples.
struct Block {
    Normal information = Normal::Zero();
    Unknowns vector = Unknowns::Zero();

    void add(const Equation& equation, const Unknowns& x, double scale) {
        constexpr double huber = 1.345;
        const double residual = std::abs(equation.value - equation.row.dot(x)) / scale;
        const double weight = (residual <= huber ? 1.0 : huber / residual) / (scale * scale);
        information += weight * equation.row * equation.row.transpose();
        vector += weight * equation.row * equation.value;
    }
    Block& operator+=(const Block& other) {
        information += other.information;
        vector += other.vector;
        return *this;
    }
    Block operator-(const Block& other) const {
        return {information - other.information, vector - other.vector};
    }
    /// A weak prior (standard deviations of a radian, ten metres, a radian, ten seconds) keeps
    /// unobservable values finite without affecting observable ones.
    Unknowns solve() const {
        const Unknowns prior(1.0, 0.01, 1.0, 0.01);
        const Normal regular = information + Normal(prior.asDiagonal());
        return regular.ldlt().solve(vector);
    }
    Unknowns priorStd() const {
        const Unknowns prior(1.0, 0.01, 1.0, 0.01);
        const Normal regular = information + Normal(prior.asDiagonal());
        return regular.inverse().diagonal().cwiseSqrt();
    }
};

/// Blocks whose errors are independent: a block ends at a pause without samples, or after the
/// correlation time of a tracker's errors, but not before it has its share of the samples.
std::vector<Block> blocksOf(const Equations& equations, const Unknowns& x) {
    constexpr std::size_t mostBlocks = 20;
    constexpr double pause = 1.0;   // seconds
    constexpr double memory = 5.0;  // seconds
    const double bearingScale = scaleOf(equations.bearing, x);
    const double depressionScale = scaleOf(equations.depression, x);
    const std::vector<double>& time = equations.time;
    std::vector<Block> blocks(1);
    std::size_t first = 0;
    for (std::size_t i = 0; i < time.size(); ++i) {
        const bool isLarge = (i - first) * mostBlocks >= time.size();
        if (isLarge && (time[i] - time[i - 1] > pause || time[i] - time[first] > memory)) {
            blocks.emplace_back();
            first = i;
        }
        blocks.back().add(equations.bearing[i], x, bearingScale);
        blocks.back().add(equations.depression[i], x, depressionScale);
    }
    return blocks;
}

Block sumOf(const std::vector<Block>& blocks) {
    Block sum;
    for (const Block& block : blocks) {
        sum += block;
    }
    return sum;
}

/// Covariance by the delete-a-group jackknife: (n - 1)/n times the sum of squared changes.
Normal jackknifeCovariance(const std::vector<Block>& blocks, const Block& all, const Unknowns& x) {
    Normal sum = Normal::Zero();
    for (const Block& block : blocks) {
        const Unknowns change = (all - block).solve() - x;
        sum += change * change.transpose();
    }
    const auto n = static_cast<double>(blocks.size());
    return sum * (n - 1.0) / n;
}

/// Deviations below the accuracy of the scene model: radians, metres, radians, seconds.
const Unknowns negligible(radians(0.1), 0.05, radians(0.2), 0.01);
constexpr double significance = 4.0;

/// Height and pitch, and yaw and lag, have similar effects: where one of them explains all
/// differences, the other is not significant. Sets the least significant value that is negligible
/// or uncertain to zero and adapts the others by their covariance, until none is left.
Unknowns withoutNegligible(Unknowns x, Normal P) {
    for (;;) {
        Eigen::Index least = -1;
        double leastRatio = 1.0;
        for (Eigen::Index i = 0; i < x.size(); ++i) {
            const double threshold =
                std::max(negligible[i], significance * std::sqrt(std::max(0.0, P(i, i))));
            const double ratio = std::abs(x[i]) / threshold;
            if (x[i] != 0.0 && ratio < leastRatio) {
                leastRatio = ratio;
                least = i;
            }
        }
        if (least < 0) {
            return x;
        }
        const Unknowns gain = P.col(least) / P(least, least);
        x -= gain * x[least];
        x[least] = 0.0;
        P -= gain * P.row(least);
    }
}

}  // namespace

MountingEstimate estimateMounting(const std::vector<PairSample>& samples, double height) {
    constexpr int iterations = 15;
    const Equations equations = equationsOf(samples, height);
    Unknowns x = Unknowns::Zero();
    for (int i = 0; i < iterations; ++i) {
        x = sumOf(blocksOf(equations, x)).solve();
    }
    const std::vector<Block> blocks = blocksOf(equations, x);
    const Block all = sumOf(blocks);
    const Normal P = jackknifeCovariance(blocks, all, x);
    // The jackknife alone would give a value that only the prior determines a small deviation.
    const Unknowns std = P.diagonal().cwiseSqrt().cwiseMax(all.priorStd());
    const Unknowns significant = withoutNegligible(x, P);
    const auto estimated = [&](Eigen::Index i) {
        return Estimated{significant[i] != 0.0 ? significant[i] : x[i], std[i],
                         significant[i] != 0.0};
    };
    return {estimated(0), estimated(1), estimated(2), estimated(3), samples.size(), blocks.size()};
}

}  // namespace Workbench
