// SPDX-License-Identifier: Apache-2.0
// From the objects of scene descriptions to the reports of sensors.
#pragma once

#include <veskar-host/Installation.h>
#include <veskar-host/Projection.h>
#include <veskar-host/RadarReport.h>
#include <veskar-host/VideoReport.h>

#include "live/onvif/LeftOut.h"
#include "live/onvif/SceneDescription.h"

#include <optional>

namespace Veskar::Live {

/// Makes reports of objects. docs/live.md has the table of what becomes what; what a report has no
/// place for is counted. Ids, ages and coasting times are not set.
class SensorReports {
public:
    /// @param installation the camera's pose and lens, the radar's pose and the site are used
    explicit SensorReports(const Host::Installation& installation);

    /// @param object an object that a camera reports
    /// @param frame coordinate system of its frame
    /// @param leftOut counts what a video report has no place for
    /// @return a report; nothing when the object has no place in the image
    std::optional<Host::VideoReport> video(const SceneObject& object, const Transformation& frame,
                                           LeftOut& leftOut) const;
    /// @param object an object that a radar reports; its axes are the radar's own
    /// @param leftOut counts what a radar report has no place for
    /// @return a report, without any speed when the object has none; nothing when the object has no
    ///         place in space
    std::optional<Host::RadarReport> radar(const SceneObject& object, LeftOut& leftOut) const;

    /// @param object an object
    /// @param leftOut counts words and colour spaces without a counterpart
    /// @return its class and colours
    static Host::Labels labels(const SceneObject& object, LeftOut& leftOut);

private:
    struct RadarPlace {
        double range;    ///< slant distance from the radar, m
        double azimuth;  ///< degrees clockwise from the radar's forward direction
    };

    std::optional<Host::ImageBox> boxOf(const SceneObject& object, const Transformation& frame,
                                        LeftOut& leftOut) const;
    std::optional<Eigen::Vector2d> imageVelocity(const SceneObject& object,
                                                 const Host::ImageBox& box, LeftOut& leftOut) const;
    std::optional<RadarPlace> placeOf(const SceneObject& object, LeftOut& leftOut) const;

    Host::Projection camera_;
    Host::Mounting cameraMounting_;
    Host::Mounting radarMounting_;
    std::optional<Host::Site> site_;
};

}  // namespace Veskar::Live
