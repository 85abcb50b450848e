// SPDX-License-Identifier: Apache-2.0
// The sensors' coverage of the ground, for drawing.
#pragma once

#include <veskar-host/Projection.h>

#include "HostLibrary.h"
#include "recording/Header.h"

namespace Workbench {

/// Distances of the range rings, m: a whole number of rings up to the radar's range.
///
/// @param maximumRange of the radar, m
/// @return the distances, ascending
std::vector<double> ringDistances(double maximumRange);

/// The installation as the page draws it:
/// {"aspect": width by height of the image,
///  "camera": {"position": [x, y], "footprint": [[x, y], ...]},
///  "radar": {"position": [x, y], "yaw": degrees to the left, "fieldOfView": degrees, "range": m},
///  "rings": [{"distance": m, "image": [[u, v], ...]}, ...],
///  "earth": {"latitude": degrees, "longitude": degrees, "heading": degrees from north,
///            "latitudePerNorth": degrees per m, "longitudePerEast": degrees per m}}
/// "earth" is null when the site is not known; positions on Earth are linear in the plane of the
/// ground. The footprint is the polygon of the ground that the camera sees, up to the radar's
/// range; the rings' image positions are those of ground points at that distance inside the image.
///
/// @param camera the camera
/// @param installation the descriptions of the camera, the radar and the site
/// @return the object
Json sceneOutline(const Projection& camera, const Installation& installation);

}  // namespace Workbench
