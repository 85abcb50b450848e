// SPDX-License-Identifier: Apache-2.0
// The device's geographic position, and that of what the radar sees.
#pragma once

#include <veskar/Export.h>

#include <memory>
#include <mutex>

struct sd_bus_message;

namespace Dbus::GeoLocation {

/// A geographic position.
struct Position {
    double longitude = 0.0;  ///< degrees, east positive
    double latitude = 0.0;   ///< degrees, north positive
    double altitude = 0.0;   ///< as the client holds it; no service property sets it
    bool valid = false;      ///< whether the device knows where it is, and the position is finite
};

/// The geographic position of a point that the radar sees.
///
/// Reads the process-wide client, which is created by the first call: do that on the thread whose
/// GLib main context shall follow the service's changes. Safe to call from any thread. Never
/// throws; a missing service gives an invalid position.
///
/// @param range ground distance in metres
/// @param azimuth degrees, counter-clockwise from the device's right-hand side: 90 lies straight
///                ahead, in the direction of the heading
/// @return the position; `valid` false when the device has no fix, or states one that is not finite
VESKAR_EXPORT Position getPosition(double range, double azimuth);

}  // namespace Dbus::GeoLocation

namespace Impl {

class PropertyClient;

/// The client of the geolocation service: reads its properties once, follows their changes and
/// turns radar measurements into geographic positions.
///
/// Changes arrive on the thread that iterates the GLib main context that was the thread default at
/// construction; getPosition may be called from any thread and never waits for the bus. Failures
/// are logged at error priority and never reach the caller.
class VESKAR_EXPORT GeoLocation {
public:
    /// Connects to the system bus and reads the settings. Without the service, or when a step
    /// fails, the instance lives on with zeros.
    GeoLocation();
    ~GeoLocation();
    GeoLocation(const GeoLocation&) = delete;
    GeoLocation& operator=(const GeoLocation&) = delete;

    /// @return the process-wide client, created by the first call
    static GeoLocation& instance();

    /// Asks the service for all settings; on the thread of the main context once the client exists.
    /// A service that has not answered is not asked again for 10 s.
    /// @return false when the bus or the reply failed, or the service was not asked; a service that
    ///         is not there is no failure
    bool initSettings();
    /// Reads a dictionary of settings; entries it does not know are skipped.
    /// @param message positioned at an a{sv}
    /// @return negative errno on failure
    int parse(sd_bus_message* message);
    /// Sets how many degrees a metre is at a latitude, from the lengths of a degree on the WGS84
    /// ellipsoid.
    /// @param latitude degrees
    void calculateDegreePerMeter(double latitude);
    /// Brings a position over a pole or the date line back into range.
    /// @param position the position, in place
    void validatePosition(::Dbus::GeoLocation::Position& position);
    /// @param range ground distance in metres
    /// @param azimuth degrees, counter-clockwise from the device's right-hand side: 90 lies
    ///                straight ahead, in the direction of the heading
    /// @return the geographic position; `valid` false without a fix, and when it is not finite
    ::Dbus::GeoLocation::Position getPosition(double range, double azimuth);

private:
    int requestSettings();
    void scaleTo(double latitude);

    bool serviceAvailable_ = true;
    double heading_ = 0.0;
    double latitude_ = 0.0;
    double longitude_ = 0.0;
    double altitude_ = 0.0;
    bool validPosition_ = false;
    double degreesPerMeterLongitude_ = 0.0;
    double degreesPerMeterLatitude_ = 0.0;
    std::mutex mutex_;  // guards the values from heading on
    // Loop, bus and the bridge between loop and GLib. Last, so that it ends first: a change may
    // still be on its way on the main loop's thread.
    std::unique_ptr<PropertyClient> client_;
};

}  // namespace Impl
