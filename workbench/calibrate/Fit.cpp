// SPDX-License-Identifier: Apache-2.0
#include "calibrate/Fit.h"

#include "calibrate/ImageErrors.h"
#include "check/Median.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include <Eigen/Cholesky>
#include <ceres/ceres.h>

namespace Workbench {
namespace {

constexpr int size = static_cast<int>(parameterCount);
using Gradient = Eigen::Matrix<double, 2, size, Eigen::RowMajor>;
using Square = Eigen::Matrix<double, size, size>;

/// Errors beyond this many standard deviations lose weight.
constexpr double lossScale = 2.0;
/// Medians of the squared length of two independent standard normal deviates, 2 ln 2, and of one.
constexpr double medianOfSquares = 1.3863;
constexpr double medianOfSquare = 0.4549;

/// Whitened errors and their derivatives at one placement, for all samples at once: a camera is
/// made once for each step of the numeric derivatives, not for each sample.
class Errors : public ceres::EvaluationCallback {
public:
    Errors(const Installation& stated, const std::vector<CalibrationSample>& samples,
           const FreeParameters& free)
        : stated_(stated),
          samples_(samples),
          free_(free),
          values_(samples.size()),
          gradients_(samples.size(), Gradient::Zero()) {}

    void PrepareForEvaluation(bool withJacobians, bool isNewPoint) override {
        if (isNewPoint) {
            const ObjectModel model(stated_, placement);
            for (std::size_t i = 0; i < samples_.size(); ++i) {
                values_[i] =
                    scale_ * samples_[i].whitening * imageError(model, samples_[i], placement);
            }
        }
        if (withJacobians) {
            differentiate();
        }
    }

    /// Makes the errors as large as their whitening says.
    void rescale() {
        PrepareForEvaluation(false, true);
        std::vector<double> squares(values_.size());
        for (std::size_t i = 0; i < squares.size(); ++i) {
            squares[i] = values_[i].squaredNorm() /
                         (samples_[i].hasBearing() ? medianOfSquares : medianOfSquare);
        }
        scale_ /= std::sqrt(std::max(medianOf(squares), 1e-12));
    }

    const Eigen::Vector2d& value(std::size_t i) const { return values_[i]; }
    const Gradient& gradient(std::size_t i) const { return gradients_[i]; }

    Placement placement = Placement::Zero();

private:
    void differentiate() {
        for (Eigen::Index k = 0; k < size; ++k) {
            if (!free_[static_cast<std::size_t>(k)]) {
                continue;
            }
            const double step = 1e-4 * traitsOf(static_cast<MountingParameter>(k)).priorStd;
            const Placement up = placement + step * Placement::Unit(k);
            const Placement down = placement - step * Placement::Unit(k);
            const ObjectModel upper(stated_, up);
            const ObjectModel lower(stated_, down);
            for (std::size_t i = 0; i < samples_.size(); ++i) {
                const CalibrationSample& sample = samples_[i];
                gradients_[i].col(k) =
                    scale_ / (2.0 * step) * sample.whitening *
                    (imageError(upper, sample, up) - imageError(lower, sample, down));
            }
        }
    }

    const Installation& stated_;
    const std::vector<CalibrationSample>& samples_;
    const FreeParameters& free_;
    double scale_ = 1.0;
    std::vector<Eigen::Vector2d> values_;
    std::vector<Gradient> gradients_;
};

class SampleCost : public ceres::SizedCostFunction<2, size> {
public:
    SampleCost(const Errors& errors, std::size_t i) : errors_(errors), i_(i) {}

    bool Evaluate(double const* const*, double* residuals, double** jacobians) const override {
        Eigen::Map<Eigen::Vector2d>(residuals).noalias() = errors_.value(i_);
        if (jacobians != nullptr && jacobians[0] != nullptr) {
            Eigen::Map<Gradient>(jacobians[0]).noalias() = errors_.gradient(i_);
        }
        return errors_.value(i_).allFinite();
    }

private:
    const Errors& errors_;
    std::size_t i_;
};

Placement priorWeights() {
    Placement weights;
    for (const MountingParameter parameter : allParameters()) {
        weights[indexOf(parameter)] = 1.0 / traitsOf(parameter).priorStd;
    }
    return weights;
}

class PriorCost : public ceres::SizedCostFunction<size, size> {
public:
    bool Evaluate(double const* const* parameters, double* residuals,
                  double** jacobians) const override {
        const Placement weights = priorWeights();
        Eigen::Map<Placement>(residuals).noalias() =
            weights.cwiseProduct(Eigen::Map<const Placement>(parameters[0]));
        if (jacobians != nullptr && jacobians[0] != nullptr) {
            // Symmetric: the order of the elements does not matter.
            Eigen::Map<Square> jacobian(jacobians[0]);
            jacobian = weights.asDiagonal();
        }
        return true;
    }
};

void minimise(Errors& errors, std::size_t samples, const FreeParameters& free) {
    ceres::Problem::Options options;
    options.evaluation_callback = &errors;
    options.loss_function_ownership = ceres::DO_NOT_TAKE_OWNERSHIP;
    ceres::CauchyLoss loss(lossScale);
    ceres::Problem problem(options);
    for (std::size_t i = 0; i < samples; ++i) {
        problem.AddResidualBlock(new SampleCost(errors, i), &loss, errors.placement.data());
    }
    problem.AddResidualBlock(new PriorCost, nullptr, errors.placement.data());
    std::vector<int> constant;
    for (int k = 0; k < size; ++k) {
        if (!free[static_cast<std::size_t>(k)]) {
            constant.push_back(k);
        }
    }
    if (!constant.empty()) {
        problem.SetManifold(errors.placement.data(), new ceres::SubsetManifold(size, constant));
    }
    ceres::Solver::Options how;
    how.linear_solver_type = ceres::DENSE_NORMAL_CHOLESKY;
    how.max_num_iterations = 30;
    how.function_tolerance = 1e-8;
    how.logging_type = ceres::SILENT;
    ceres::Solver::Summary summary;
    ceres::Solve(how, &problem, &summary);
}

Square covarianceOf(Errors& errors, const std::vector<CalibrationSample>& samples,
                    const FreeParameters& free) {
    errors.PrepareForEvaluation(true, true);
    const Square prior = priorWeights().cwiseAbs2().asDiagonal();
    Square information = prior;
    std::map<std::size_t, Placement> scores;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const Gradient& gradient = errors.gradient(i);
        const Eigen::Vector2d& value = errors.value(i);
        const double weight = 1.0 / (1.0 + value.squaredNorm() / (lossScale * lossScale));
        information += weight * gradient.transpose() * gradient;
        const auto score = scores.try_emplace(samples[i].cluster, Placement::Zero()).first;
        score->second += weight * gradient.transpose() * value;
    }
    const auto n = static_cast<double>(scores.size());
    const auto count = static_cast<double>(std::count(free.begin(), free.end(), true));
    Square spread = Square::Zero();
    for (const auto& [cluster, score] : scores) {
        spread += score * score.transpose();
    }
    spread = spread * (n / std::max(n - count, 1.0)) + prior;
    const Square inverse = information.ldlt().solve(Square::Identity());
    Square covariance = inverse * spread * inverse;
    for (const MountingParameter parameter : allParameters()) {
        const Eigen::Index k = indexOf(parameter);
        if (free[static_cast<std::size_t>(k)]) {
            covariance(k, k) += std::pow(traitsOf(parameter).modelStd, 2);
        } else {
            covariance.row(k).setZero();
            covariance.col(k).setZero();
        }
    }
    return covariance;
}

}  // namespace

Fit fit(const Installation& stated, const std::vector<CalibrationSample>& samples,
        const Placement& start, const FreeParameters& free) {
    Errors errors(stated, samples, free);
    errors.placement = start;
    if (!samples.empty()) {
        errors.rescale();
    }
    minimise(errors, samples.size(), free);
    if (!samples.empty()) {
        errors.rescale();
        minimise(errors, samples.size(), free);
    }
    Fit result;
    result.placement = errors.placement;
    result.samples = samples.size();
    std::set<std::size_t> clusters;
    for (const CalibrationSample& sample : samples) {
        clusters.insert(sample.cluster);
    }
    result.clusters = clusters.size();
    result.covariance = covarianceOf(errors, samples, free);
    return result;
}

}  // namespace Workbench
