// SPDX-License-Identifier: Apache-2.0
// The measurement model of the video sensor.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/GroundEstimate.h>
#include <veskar-host/HostParameters.h>
#include <veskar-host/ImageBox.h>
#include <veskar/Camera.h>
#include <veskar/Config.h>

#include <optional>

namespace Veskar::Host {

/// Converts a box to an estimate in the fusion frame: the object stands at the middle of the box's
/// lower edge, and the camera's pseudo range is the distance of that ground point.
///
/// Every value of "veskarInputs" is used as its name says: "uvPositionStd", "uvVelocityStd" and
/// "uvCorrelation" are the noise of the image position and its rate; "minimumAngle" limits the
/// pseudo range; its standard deviation is what "uvPositionStd" moves it by, kept between
/// "minimumPseudoRangeStd" and "maximumPseudoRangeStd"; "pseudoRangeDotStd" is that of its rate.
/// HostParameters add to that what sloping ground ("groundSlopeStd") and a box that the image
/// border cuts ("cutBoxStd") make uncertain.
///
/// Never changes once it is made: several threads may use one.
class VESKAR_HOST_EXPORT VideoModel {
public:
    /// @param camera copied
    /// @param noise the configuration's video section
    /// @param parameters constants of the adapter
    VideoModel(const Camera& camera, const Config::VideoInput& noise,
               const HostParameters& parameters);

    /// @param box of a video track
    /// @param measured velocity of the middle of its lower edge, 1/s, if known
    /// @return its state and covariance in the fusion frame
    FusionEstimate estimate(const ImageBox& box,
                            const std::optional<Eigen::Vector2d>& measured) const;

private:
    /// @param pseudo pseudo range in row v
    /// @return its standard deviation, m, without the adapter's additions
    double pseudoRangeStd(const Camera::RangeToTarget& pseudo, double v) const;
    double slopeRangeStd(double range) const;
    void widenWhereCut(const ImageBox& box, StateMatrix& covariance) const;
    double pseudoRangeRate(double u, double v, const Eigen::Vector2d& velocity) const;

    Camera camera_;
    Config::VideoInput noise_;
    HostParameters parameters_;
};

}  // namespace Veskar::Host
