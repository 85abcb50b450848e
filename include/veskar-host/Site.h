// SPDX-License-Identifier: Apache-2.0
// Where on Earth a device stands.
#pragma once

namespace Veskar::Host {

/// Where on Earth the device stands.
struct Site {
    double latitude = 0.0;   ///< degrees, north positive
    double longitude = 0.0;  ///< degrees, east positive
    double heading = 0.0;    ///< degrees clockwise from north, of the device's x axis
};

}  // namespace Veskar::Host
