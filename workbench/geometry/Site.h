// SPDX-License-Identifier: Apache-2.0
// From the device's frame to geographic positions.
#pragma once

#include <veskar/GeoLocation.h>

#include "recording/Recording.h"

#include <Eigen/Core>

namespace Workbench {

/// The geographic position of a ground point, on the tangent plane at the site (WGS84).
///
/// A live host lets Veskar::Track::setLocation ask the device's geolocation service; a replay must
/// not ask the machine that it happens to run on, so the recording states the site.
///
/// @param site where the device stands
/// @param ground device frame, m
/// @return the position, valid
Dbus::GeoLocation::Position geographicPosition(const Site& site, const Eigen::Vector2d& ground);

}  // namespace Workbench
