// SPDX-License-Identifier: Apache-2.0
// The radar of an installation.
#pragma once

#include <veskar-host/Mounting.h>

namespace Veskar::Host {

/// The radar of an installation: pose and the noise of its tracks.
struct RadarSetup {
    Mounting mounting;            ///< pose
    double rangeStd = 0.3;        ///< standard deviation of the range, m
    double azimuthStd = 1.0;      ///< standard deviation of the azimuth, degrees
    double velocityStd = 0.5;     ///< standard deviation of each velocity component, m/s
    double fieldOfView = 120.0;   ///< full horizontal angle, degrees
    double maximumRange = 150.0;  ///< m
};

}  // namespace Veskar::Host
