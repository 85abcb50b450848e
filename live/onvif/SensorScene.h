// SPDX-License-Identifier: Apache-2.0
// From the frames of a sensor to scene descriptions.
#pragma once

#include <veskar-host/Installation.h>
#include <veskar-host/Projection.h>
#include <veskar-host/SensorFrame.h>

#include "live/onvif/Disappearances.h"
#include "live/onvif/SceneDescription.h"

#include <string>

namespace Veskar::Live {

/// Describes the frames of a camera or a radar, one after the other, as the device itself would:
/// the inverse of SceneMapper, by which recordings and simulations stand in for devices. What ONVIF
/// has no term for is not described: reports that the sensor has not confirmed, ready estimates,
/// and radial speeds. A coasting report is an object without a place.
///
/// One thread at a time may use it.
class SensorScene {
public:
    /// @param installation the poses of both sensors and the lens are used
    /// @param module name of the module, for the attribute Source
    SensorScene(const Host::Installation& installation, std::string module);

    /// @param frame of a sensor
    /// @param time of it
    /// @return the frame; objects that were in the one before and are gone are deleted
    SceneFrame describe(const Host::SensorFrame& frame, UtcTime time);

private:
    SceneObject objectFor(const Host::VideoReport& report) const;
    SceneObject objectFor(const Host::RadarReport& report) const;
    void describeMotion(const Host::VideoReport& report, SceneObject& object) const;

    std::string module_;
    Host::Projection camera_;
    Host::Mounting cameraMounting_;
    Host::Mounting radarMounting_;
    Disappearances disappearances_;
};

}  // namespace Veskar::Live
