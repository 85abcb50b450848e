// SPDX-License-Identifier: Apache-2.0
// From the device's frame to geographic positions and back.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/Site.h>
#include <veskar/GeoLocation.h>

#include <Eigen/Core>

namespace Veskar::Host {

/// @param ground device frame, m
/// @return its azimuth in the convention of SphericalCoordinate and of the geolocation service:
///         degrees counter-clockwise from the device's right-hand side; forward is 90
VESKAR_HOST_EXPORT double deviceAzimuth(const Eigen::Vector2d& ground);

/// The geographic position of a ground point, on the tangent plane at the site (WGS84).
///
/// Without a site FusionPipeline asks the device's geolocation service, Dbus::GeoLocation. A replay
/// must not ask the machine that it happens to run on, so the recording states the site.
///
/// @param site geographic position and heading of the device
/// @param ground device frame, m
/// @return its position, marked as valid
VESKAR_HOST_EXPORT ::Dbus::GeoLocation::Position geographicPosition(const Site& site,
                                                                    const Eigen::Vector2d& ground);

/// The inverse of geographicPosition.
///
/// @param site geographic position and heading of the device
/// @param position a position near it (WGS84)
/// @return the ground point, device frame, m
VESKAR_HOST_EXPORT Eigen::Vector2d groundPoint(const Site& site,
                                               const ::Dbus::GeoLocation::Position& position);

}  // namespace Veskar::Host
