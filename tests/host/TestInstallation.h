// SPDX-License-Identifier: Apache-2.0
// An installation for tests.
#pragma once

#include <veskar-host/Installation.h>
#include <veskar/Config.h>

namespace VeskarTest {

/// @return a camera at 5 m height, pitched down by 20 degrees, 90 degrees wide, and a radar beside
///         it
inline Veskar::Host::Installation testInstallation() {
    Veskar::Host::Installation installation;
    installation.camera.mounting.position = {0.0, 0.0, 5.0};
    installation.camera.mounting.pitch = 20.0;
    // An equidistant lens: both polynomials are exact inverses.
    installation.camera.imageToRadians = {0.0, 0.7853981633974483, 0.0, 0.0};
    installation.camera.radiansToImage = {0.0, 1.2732395447351628, 0.0, 0.0};
    installation.camera.fieldOfView = {0.7853981633974483, 0.44};
    installation.radar.mounting.position = {0.1, -0.3, 4.6};
    return installation;
}

/// @return the shipped configuration
inline Veskar::Config configuration() {
    return Veskar::Config::defaults();
}

}  // namespace VeskarTest
