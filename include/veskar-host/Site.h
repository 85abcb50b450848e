// SPDX-License-Identifier: Apache-2.0
// Geographic position and heading of a device.
#pragma once

namespace Veskar::Host {

/// Geographic position (WGS84) and heading of the device.
struct Site {
    double latitude = 0.0;   ///< degrees, north positive
    double longitude = 0.0;  ///< degrees, east positive
    double heading = 0.0;    ///< of the device's x axis, degrees clockwise from north
};

}  // namespace Veskar::Host
