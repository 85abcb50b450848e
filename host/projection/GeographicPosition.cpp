// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/GeographicPosition.h>
#include <veskar-host/Projection.h>

#include <algorithm>
#include <cmath>

namespace Veskar::Host {
namespace {

/// Radii of the tangent plane at a site: of the meridian, and of its parallel, m.
struct Radii {
    double north;
    double east;
};

Radii radiiAt(const Site& site) {
    constexpr double semiMajorAxis = 6378137.0;
    constexpr double squaredEccentricity = 6.69437999014e-3;
    const double latitude = radians(site.latitude);
    // Radii of curvature in the prime vertical and in the meridian.
    const double w = 1.0 - squaredEccentricity * std::sin(latitude) * std::sin(latitude);
    const double primeVertical = semiMajorAxis / std::sqrt(w);
    const double meridian = primeVertical * (1.0 - squaredEccentricity) / w;
    return {meridian, primeVertical * std::max(std::cos(latitude), 1e-9)};
}

}  // namespace

double deviceAzimuth(const Eigen::Vector2d& ground) {
    // The device's y axis points to the left.
    return degrees(std::atan2(ground[0], -ground[1]));
}

::Dbus::GeoLocation::Position geographicPosition(const Site& site, const Eigen::Vector2d& ground) {
    const double heading = radians(site.heading);
    const double north = ground[0] * std::cos(heading) + ground[1] * std::sin(heading);
    const double east = ground[0] * std::sin(heading) - ground[1] * std::cos(heading);
    const Radii radii = radiiAt(site);

    ::Dbus::GeoLocation::Position position;
    position.latitude = site.latitude + degrees(north / radii.north);
    position.longitude = site.longitude + degrees(east / radii.east);
    position.valid = true;
    return position;
}

Eigen::Vector2d groundPoint(const Site& site, const ::Dbus::GeoLocation::Position& position) {
    const Radii radii = radiiAt(site);
    const double north = radians(position.latitude - site.latitude) * radii.north;
    // The shorter way around the Earth.
    const double east =
        radians(std::remainder(position.longitude - site.longitude, 360.0)) * radii.east;
    const double heading = radians(site.heading);
    return {north * std::cos(heading) + east * std::sin(heading),
            north * std::sin(heading) - east * std::cos(heading)};
}

}  // namespace Veskar::Host
