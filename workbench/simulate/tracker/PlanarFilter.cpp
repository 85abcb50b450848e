// SPDX-License-Identifier: Apache-2.0
#include "simulate/tracker/PlanarFilter.h"

#include <Eigen/LU>

namespace Workbench {

PlanarFilter::PlanarFilter(const Eigen::Vector2d& position, const Eigen::Matrix2d& covariance,
                           const Eigen::Vector2d& velocity,
                           const Eigen::Matrix2d& velocityCovariance) {
    state_ << position, velocity;
    P.setZero();
    P.topLeftCorner<2, 2>() = covariance;
    P.bottomRightCorner<2, 2>() = velocityCovariance;
}

void PlanarFilter::predict(double dt, double accelerationStd) {
    Eigen::Matrix4d F = Eigen::Matrix4d::Identity();
    F(0, 2) = F(1, 3) = dt;
    const double q = accelerationStd * accelerationStd;
    state_ = F * state_;
    P = F * P * F.transpose();
    // Piecewise constant white acceleration, independent in both axes.
    for (Eigen::Index axis = 0; axis < 2; ++axis) {
        P(axis, axis) += 0.25 * dt * dt * dt * dt * q;
        P(axis, axis + 2) += 0.5 * dt * dt * dt * q;
        P(axis + 2, axis) += 0.5 * dt * dt * dt * q;
        P(axis + 2, axis + 2) += dt * dt * q;
    }
}

void PlanarFilter::update(const Eigen::Vector2d& position, const Eigen::Matrix2d& noise) {
    const Eigen::Matrix2d S = P.topLeftCorner<2, 2>() + noise;
    const Eigen::Matrix<double, 4, 2> K = P.leftCols<2>() * S.inverse();
    state_ += K * (position - state_.head<2>());
    P -= K * S * K.transpose();
    P = (0.5 * (P + P.transpose())).eval();
}

double PlanarFilter::squaredDistance(const Eigen::Vector2d& position,
                                     const Eigen::Matrix2d& noise) const {
    const Eigen::Vector2d innovation = position - state_.head<2>();
    const Eigen::Matrix2d S = P.topLeftCorner<2, 2>() + noise;
    return innovation.dot(S.inverse() * innovation);
}

}  // namespace Workbench
