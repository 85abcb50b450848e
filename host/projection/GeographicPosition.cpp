// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/GeographicPosition.h>
#include <veskar-host/Projection.h>

#include <algorithm>
#include <cmath>

namespace Veskar::Host {

double deviceAzimuth(const Eigen::Vector2d& ground) {
    // The device's y axis points to the left.
    return degrees(std::atan2(ground[0], -ground[1]));
}

::Dbus::GeoLocation::Position geographicPosition(const Site& site, const Eigen::Vector2d& ground) {
    constexpr double semiMajorAxis = 6378137.0;
    constexpr double squaredEccentricity = 6.69437999014e-3;
    const double latitude = radians(site.latitude);
    const double heading = radians(site.heading);
    const double north = ground[0] * std::cos(heading) + ground[1] * std::sin(heading);
    const double east = ground[0] * std::sin(heading) - ground[1] * std::cos(heading);

    // Radii of curvature in the prime vertical and in the meridian.
    const double w = 1.0 - squaredEccentricity * std::sin(latitude) * std::sin(latitude);
    const double primeVertical = semiMajorAxis / std::sqrt(w);
    const double meridian = primeVertical * (1.0 - squaredEccentricity) / w;

    ::Dbus::GeoLocation::Position position;
    position.latitude = site.latitude + degrees(north / meridian);
    position.longitude =
        site.longitude + degrees(east / (primeVertical * std::max(std::cos(latitude), 1e-9)));
    position.valid = true;
    return position;
}

}  // namespace Veskar::Host
