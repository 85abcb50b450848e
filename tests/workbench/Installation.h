// SPDX-License-Identifier: Apache-2.0
// An installation that tests can place things in front of.
#pragma once

#include <veskar/Config.h>

#include "recording/Recording.h"

namespace VeskarTest {

/// @return a camera 5 m high that looks 20 degrees down, 90 degrees wide, and a radar beside it
inline Workbench::RecordingHeader installation() {
    Workbench::RecordingHeader header;
    header.camera.mounting.position = {0.0, 0.0, 5.0};
    header.camera.mounting.pitch = 20.0;
    // An equidistant lens: both polynomials are exact inverses.
    header.camera.imageToRadians = {0.0, 0.7853981633974483, 0.0, 0.0};
    header.camera.radiansToImage = {0.0, 1.2732395447351628, 0.0, 0.0};
    header.camera.fieldOfView = {0.7853981633974483, 0.44};
    header.radar.mounting.position = {0.1, -0.3, 4.6};
    return header;
}

/// @return the shipped configuration
inline Veskar::Config configuration() {
    return Veskar::Config::defaults();
}

}  // namespace VeskarTest
