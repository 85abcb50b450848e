// SPDX-License-Identifier: Apache-2.0
// The one operation of a track that reaches a system service.
#include <veskar/Track.h>

namespace Veskar {

void Track::setLocation(const SphericalCoordinate& c) {
    location = c;
    const ::Dbus::GeoLocation::Position position =
        ::Dbus::GeoLocation::getPosition(c.range, c.azimuth);
    // A position once known is better than none while the device has lost its fix.
    if (position.valid) {
        geoLocation = position;
    }
}

}  // namespace Veskar
