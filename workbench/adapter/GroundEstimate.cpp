// SPDX-License-Identifier: Apache-2.0
#include "adapter/GroundEstimate.h"

namespace Workbench {

GroundEstimate GroundEstimate::predicted(double dt, double accelerationStd) const {
    Eigen::Matrix4d F = Eigen::Matrix4d::Identity();
    F(0, 2) = F(1, 3) = dt;
    // Piecewise constant white acceleration (Bar-Shalom, Li, Kirubarajan: Estimation with
    // Applications to Tracking and Navigation, 2001, 6.3.2).
    Eigen::Matrix<double, 4, 2> gain;
    gain << 0.5 * dt * dt, 0.0, 0.0, 0.5 * dt * dt, dt, 0.0, 0.0, dt;
    return {F * state, F * covariance * F.transpose() +
                           accelerationStd * accelerationStd * gain * gain.transpose()};
}

Veskar::StateVector toFusionState(const Projection& projection, const Eigen::Vector4d& ground) {
    const Eigen::Vector3d point(ground[0], ground[1], 0.0);
    const Eigen::Vector3d velocity(ground[2], ground[3], 0.0);
    const Eigen::Vector3d offset = point - projection.origin();
    const double range = offset.norm();
    const ImagePoint image = projection.project(point);
    const Eigen::Vector2d rate = image.jacobian * velocity;
    Veskar::StateVector state;
    state << image.uv[0], rate[0], image.uv[1], rate[1], range, offset.dot(velocity) / range;
    return state;
}

Eigen::Matrix<double, 6, 4> fusionJacobian(const Projection& projection,
                                           const Eigen::Vector4d& ground) {
    const Eigen::Vector3d point(ground[0], ground[1], 0.0);
    const Eigen::Vector3d velocity(ground[2], ground[3], 0.0);
    const Eigen::Vector3d offset = point - projection.origin();
    const double range = offset.norm();
    const Eigen::Vector3d sight = offset / range;
    const ImagePoint image = projection.project(point);

    Eigen::Matrix<double, 6, 4> J = Eigen::Matrix<double, 6, 4>::Zero();
    J.block<1, 2>(0, 0) = image.jacobian.row(0).head<2>();
    J.block<1, 2>(1, 2) = J.block<1, 2>(0, 0);
    J.block<1, 2>(1, 0) = (image.uHessian * velocity).head<2>().transpose();
    J.block<1, 2>(2, 0) = image.jacobian.row(1).head<2>();
    J.block<1, 2>(3, 2) = J.block<1, 2>(2, 0);
    J.block<1, 2>(3, 0) = (image.vHessian * velocity).head<2>().transpose();
    J.block<1, 2>(4, 0) = sight.head<2>().transpose();
    J.block<1, 2>(5, 2) = J.block<1, 2>(4, 0);
    J.block<1, 2>(5, 0) = ((velocity - sight * sight.dot(velocity)) / range).head<2>().transpose();
    return J;
}

FusionEstimate toFusion(const Projection& projection, const GroundEstimate& ground) {
    const Eigen::Matrix<double, 6, 4> J = fusionJacobian(projection, ground.state);
    return {toFusionState(projection, ground.state), J * ground.covariance * J.transpose()};
}

}  // namespace Workbench
