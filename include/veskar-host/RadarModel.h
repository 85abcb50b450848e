// SPDX-License-Identifier: Apache-2.0
// Measurement model of the radar.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/GroundEstimate.h>
#include <veskar-host/HostParameters.h>
#include <veskar-host/RadarReport.h>
#include <veskar-host/RadarSetup.h>

#include <Eigen/Core>

namespace Veskar::Host {

/// A radar that measures range and azimuth in its own, possibly tilted, plane of objects that stand
/// on the ground. Never changes once it is made: several threads may use one.
class VESKAR_HOST_EXPORT RadarModel {
public:
    /// A ground point with its derivatives with respect to the measurement.
    struct GroundPoint {
        Eigen::Vector2d position;  ///< device frame, m
        Eigen::Matrix2d jacobian;  ///< d(x, y) / d(range [m], azimuth [radians, clockwise])
    };

    /// @param setup pose and noise
    /// @param parameters constants of the adapter
    RadarModel(const RadarSetup& setup, const HostParameters& parameters);

    /// @param range slant distance from the radar, m; raised to 1.02 times its height above ground
    ///              if less
    /// @param azimuth degrees clockwise from the radar's forward direction
    /// @return the point on the ground
    GroundPoint groundPoint(double range, double azimuth) const;

    /// @param report a radar track
    /// @return its state on the ground, with the covariance that follows from the radar's noise
    GroundEstimate estimate(const RadarReport& report) const;

    /// @param direction degrees clockwise from the radar's forward direction
    /// @return unit vector on the ground, device frame
    Eigen::Vector2d groundDirection(double direction) const;

private:
    RadarSetup setup_;
    double unknownTangentialSpeedStd_;
    Eigen::Matrix3d rotation_;
};

}  // namespace Veskar::Host
