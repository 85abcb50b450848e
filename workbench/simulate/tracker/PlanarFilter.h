// SPDX-License-Identifier: Apache-2.0
// The Kalman filter of one object in a plane.
#pragma once

#include <Eigen/Core>

namespace Workbench {

/// A constant-velocity Kalman filter over (x, y, vx, vy) with position measurements (Bar-Shalom,
/// Li, Kirubarajan: Estimation with Applications to Tracking and Navigation, 2001).
class PlanarFilter {
public:
    /// @param position first measured position
    /// @param covariance of @p position
    /// @param velocity initial velocity estimate
    /// @param velocityCovariance of @p velocity
    PlanarFilter(const Eigen::Vector2d& position, const Eigen::Matrix2d& covariance,
                 const Eigen::Vector2d& velocity, const Eigen::Matrix2d& velocityCovariance);

    /// @param dt seconds
    /// @param accelerationStd standard deviation of the white acceleration per axis
    void predict(double dt, double accelerationStd);
    /// @param position a measured position
    /// @param noise its covariance
    void update(const Eigen::Vector2d& position, const Eigen::Matrix2d& noise);
    /// @param position a measured position
    /// @param noise its covariance
    /// @return squared Mahalanobis distance of the innovation
    double squaredDistance(const Eigen::Vector2d& position, const Eigen::Matrix2d& noise) const;
    /// A quick answer for most of the pairs in a crowd: no eigenvalue of a covariance exceeds its
    /// trace.
    ///
    /// @param position a measured position
    /// @param noise its covariance
    /// @param squaredGate limit of squaredDistance
    /// @return true only when the squared distance is above the limit
    bool isFarOutside(const Eigen::Vector2d& position, const Eigen::Matrix2d& noise,
                      double squaredGate) const {
        constexpr double rounding = 1.001;
        const double x = position[0] - state_[0];
        const double y = position[1] - state_[1];
        const double trace = P(0, 0) + P(1, 1) + noise(0, 0) + noise(1, 1);
        return x * x + y * y > rounding * squaredGate * trace;
    }

    /// @return estimated position
    Eigen::Vector2d position() const { return state_.head<2>(); }
    /// @return estimated velocity
    Eigen::Vector2d velocity() const { return state_.tail<2>(); }

private:
    Eigen::Vector4d state_;
    Eigen::Matrix4d P;
};

}  // namespace Workbench
