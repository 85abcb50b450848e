// SPDX-License-Identifier: Apache-2.0
// A track on the ground plane: the state in which a radar measures, before its projection into the
// image.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/Projection.h>
#include <veskar/Estimation.h>

#include <Eigen/Core>

namespace Veskar::Host {

/// Position and velocity on the ground with their covariance.
struct VESKAR_HOST_EXPORT GroundEstimate {
    Eigen::Vector4d state;       ///< x, y [m], vx, vy [m/s], device frame
    Eigen::Matrix4d covariance;  ///< of `state`

    /// @param dt seconds; constant velocity
    /// @param accelerationStd standard deviation of the white acceleration (process noise), m/s^2
    /// @return the estimate @p dt later
    GroundEstimate predicted(double dt, double accelerationStd) const;
};

/// An estimate in the fusion frame.
struct FusionEstimate {
    StateVector state;       ///< u, u', v, v', range, range'
    StateMatrix covariance;  ///< of `state`
};

/// @param projection the camera
/// @param ground state on the ground: x, y, vx, vy
/// @return the same in the fusion frame: (u, u', v, v', range from the camera, range')
VESKAR_HOST_EXPORT StateVector toFusionState(const Projection& projection,
                                             const Eigen::Vector4d& ground);

/// @param projection the camera
/// @param ground state on the ground: x, y, vx, vy
/// @return analytic Jacobian of toFusionState with respect to the ground state
VESKAR_HOST_EXPORT Eigen::Matrix<double, 6, 4> fusionJacobian(const Projection& projection,
                                                              const Eigen::Vector4d& ground);

/// @param projection the camera
/// @param ground an estimate on the ground
/// @return the same in the fusion frame, with covariance J P J' of rank 4
VESKAR_HOST_EXPORT FusionEstimate toFusion(const Projection& projection,
                                           const GroundEstimate& ground);

}  // namespace Veskar::Host
