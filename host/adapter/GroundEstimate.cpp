// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/GroundEstimate.h>

namespace Veskar::Host {

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

namespace {

// A moving ground point in camera terms, from which state and Jacobian are computed.
struct Sight {
    Eigen::Vector3d velocity;  // device frame
    double range;              // from the camera
    Eigen::Vector3d ray;       // unit vector from the camera
    ImageMotion image;
};

Sight sightOf(const Projection& projection, const Eigen::Vector4d& ground) {
    const Eigen::Vector3d point(ground[0], ground[1], 0.0);
    const Eigen::Vector3d velocity(ground[2], ground[3], 0.0);
    const Eigen::Vector3d offset = point - projection.origin();
    const double range = offset.norm();
    return {velocity, range, offset / range, projection.project(point, velocity)};
}

StateVector stateOf(const Sight& sight) {
    const ImageMotion& image = sight.image;
    StateVector state;
    state << image.uv[0], image.rate[0], image.uv[1], image.rate[1], sight.range,
        sight.ray.dot(sight.velocity);
    return state;
}

Eigen::Matrix<double, 6, 4> jacobianOf(const Sight& sight) {
    const ImageMotion& image = sight.image;
    const Eigen::Vector3d& v = sight.velocity;
    Eigen::Matrix<double, 6, 4> J = Eigen::Matrix<double, 6, 4>::Zero();
    J.block<1, 2>(0, 0) = image.jacobian.row(0).head<2>();
    J.block<1, 2>(1, 2) = J.block<1, 2>(0, 0);
    J.block<1, 2>(1, 0) = image.rateJacobian.row(0).head<2>();
    J.block<1, 2>(2, 0) = image.jacobian.row(1).head<2>();
    J.block<1, 2>(3, 2) = J.block<1, 2>(2, 0);
    J.block<1, 2>(3, 0) = image.rateJacobian.row(1).head<2>();
    J.block<1, 2>(4, 0) = sight.ray.head<2>().transpose();
    J.block<1, 2>(5, 2) = J.block<1, 2>(4, 0);
    J.block<1, 2>(5, 0) = ((v - sight.ray * sight.ray.dot(v)) / sight.range).head<2>().transpose();
    return J;
}

}  // namespace

StateVector toFusionState(const Projection& projection, const Eigen::Vector4d& ground) {
    return stateOf(sightOf(projection, ground));
}

Eigen::Matrix<double, 6, 4> fusionJacobian(const Projection& projection,
                                           const Eigen::Vector4d& ground) {
    return jacobianOf(sightOf(projection, ground));
}

FusionEstimate toFusion(const Projection& projection, const GroundEstimate& ground) {
    const Sight sight = sightOf(projection, ground.state);
    const Eigen::Matrix<double, 6, 4> J = jacobianOf(sight);
    return {stateOf(sight), J * ground.covariance * J.transpose()};
}

}  // namespace Veskar::Host
