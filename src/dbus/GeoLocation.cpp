// SPDX-License-Identifier: Apache-2.0
#include <veskar/GeoLocation.h>

#include "dbus/CallbackGuard.h"
#include "dbus/PropertyClient.h"
#include "dbus/SdBus.h"

#include <cerrno>
#include <cmath>
#include <optional>
#include <string>

#include <syslog.h>

namespace {

constexpr Impl::PropertyClient::Service service{"com.nolt.GeoLocation1", "/com/nolt/GeoLocation1"};

constexpr double radiansPerDegree = 0.017453292519943295;

struct DegreesPerMeter {
    double longitude;
    double latitude;
};

/// The length of a degree at a latitude: the usual harmonic series in multiples of the latitude,
/// with an expression on the WGS84 ellipsoid in place of its constant leading terms.
DegreesPerMeter degreesPerMeter(double latitude) {
    constexpr double semiMajorAxis = 6378137.0;  // m
    constexpr double eccentricitySquared = 0.006694379990197619;
    constexpr double axisRatioToTheFourth = 0.9866560547430581;  // (1 - e^2)^2

    const double phi = latitude * radiansPerDegree;
    const double s = std::sin(phi);
    const double c = std::cos(phi);
    const double meters = semiMajorAxis * std::sqrt(c * c + s * s * axisRatioToTheFourth) /
                          std::sqrt(1.0 - s * s * eccentricitySquared) * radiansPerDegree;
    const double metersNorth =
        meters - (1.175 * std::cos(4.0 * phi) + 559.822 * std::cos(2.0 * phi) -
                  0.0023 * std::cos(6.0 * phi));
    const double metersEast = c * meters - 93.5 * std::cos(3.0 * phi) + 0.118 * std::cos(5.0 * phi);
    return {1.0 / metersEast, 1.0 / metersNorth};
}

/// Reads a variant if it holds a basic type.
/// @return positive when read, 0 when it holds something else, negative errno on failure
int readVariantOf(sd_bus_message* message, char type, void* value) {
    const char contents[] = {type, '\0'};
    if (Veskar::SdBus::enter(message, SD_BUS_TYPE_VARIANT, contents) < 0) {
        return 0;
    }
    const int r = sd_bus_message_read_basic(message, type, value);
    return r < 0 ? r : sd_bus_message_exit_container(message);
}

/// What a dictionary of settings names.
struct Settings {
    std::optional<double> latitude;
    std::optional<double> longitude;
    std::optional<double> heading;
    std::optional<bool> validPosition;
};

/// Reads the variant behind a key.
/// @return negative errno on failure
int readEntry(sd_bus_message* message, const std::string& key, Settings& named) {
    double number = 0.0;
    int truth = 0;
    int r = readVariantOf(message, SD_BUS_TYPE_DOUBLE, &number);
    if (r > 0) {
        if (key == "latitude") {
            named.latitude = number;
        } else if (key == "longitude") {
            named.longitude = number;
        } else if (key == "heading") {
            named.heading = number;
        }
        return r;
    }
    if (r == 0) {
        r = readVariantOf(message, SD_BUS_TYPE_BOOLEAN, &truth);
        if (r > 0 && key == "valid_pos") {
            named.validPosition = truth != 0;
        }
    }
    if (r < 0) {
        syslog(LOG_ERR, "GeoLocation: Failed to read value. Error code: %d\n", r);
    }
    if (r != 0) {
        return r;
    }
    r = sd_bus_message_skip(message, "v");
    if (r < 0) {
        syslog(LOG_ERR, "GeoLocation: Failed to skip variant. Error code: %d\n", r);
    }
    return r;
}

bool isFinite(const Dbus::GeoLocation::Position& position) {
    return std::isfinite(position.longitude) && std::isfinite(position.latitude) &&
           std::isfinite(position.altitude);
}

}  // namespace

namespace Impl {

GeoLocation::GeoLocation() : client_(std::make_unique<PropertyClient>(service)) {
    client_->setUp([this] {
        PropertyClient::requireSettings(requestSettings());
        if (!serviceAvailable_) {
            return;
        }
        client_->follow([this](sd_bus_message* message) {
            const int r = client_->readInterface(message);
            if (r < 0) {
                syslog(LOG_ERR, "GeoLocation: Failed to read interface. Error code: %d\n", r);
            }
            return r > 0 ? parse(message) : r;
        });
    });
}

GeoLocation::~GeoLocation() = default;

GeoLocation& GeoLocation::instance() {
    static GeoLocation geoLocation;
    return geoLocation;
}

bool GeoLocation::initSettings() {
    return requestSettings() >= 0;
}

int GeoLocation::requestSettings() {
    Veskar::SdBus::Error error;
    Veskar::SdBus::Message reply;
    const std::optional<int> asked = client_->getAll(error, reply);
    if (!asked) {
        return -ETIMEDOUT;
    }
    if (*asked >= 0) {
        return parse(reply.get());
    }
    if (error.hasName(SD_BUS_ERROR_SERVICE_UNKNOWN)) {
        serviceAvailable_ = false;
        return 0;
    }
    syslog(LOG_ERR, "GeoLocation: get configuration error: %s\n", error.message());
    return *asked;
}

int GeoLocation::parse(sd_bus_message* message) {
    Settings named;
    const int result = Veskar::SdBus::readDictionary(
        message,
        [](int code) {
            syslog(LOG_ERR, "GeoLocation: Failed to enter array. Error code: %d\n", code);
        },
        [](int code) {
            syslog(LOG_ERR, "GeoLocation: Failed to read key. Error code: %d\n", code);
        },
        [&](const char* key) { return readEntry(message, key, named); });
    // All at once, so that no reader sees half of a change, and only now, so that none waits while
    // a long message is read.
    const std::lock_guard<std::mutex> lock(mutex_);
    latitude_ = named.latitude.value_or(latitude_);
    if (named.latitude) {
        scaleTo(latitude_);
    }
    longitude_ = named.longitude.value_or(longitude_);
    heading_ = named.heading.value_or(heading_);
    validPosition_ = named.validPosition.value_or(validPosition_);
    return result;
}

void GeoLocation::calculateDegreePerMeter(double latitude) {
    const std::lock_guard<std::mutex> lock(mutex_);
    scaleTo(latitude);
}

void GeoLocation::scaleTo(double latitude) {
    const DegreesPerMeter scale = degreesPerMeter(latitude);
    degreesPerMeterLongitude_ = scale.longitude;
    degreesPerMeterLatitude_ = scale.latitude;
}

void GeoLocation::validatePosition(::Dbus::GeoLocation::Position& position) {
    if (std::abs(position.latitude) > 90.0) {
        // Over the pole: down again on the opposite meridian.
        position.latitude = (position.latitude > 0.0 ? 180.0 : -180.0) - position.latitude;
        position.longitude += position.longitude >= 0.0 ? -180.0 : 180.0;
    }
    if (std::abs(position.longitude) > 360.0) {
        position.longitude = 0.0;
    } else if (position.longitude > 180.0) {
        position.longitude -= 360.0;
    } else if (position.longitude < -180.0) {
        position.longitude += 360.0;
    }
}

::Dbus::GeoLocation::Position GeoLocation::getPosition(double range, double azimuth) {
    ::Dbus::GeoLocation::Position position;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        // The bearing, clockwise from north, is heading + 90 - azimuth; theta is the same direction
        // counter-clockwise from east.
        const double theta =
            std::fmod(450.0 - ((heading_ + 90.0) - azimuth), 360.0) * radiansPerDegree;
        position.longitude = longitude_ + std::cos(theta) * range * degreesPerMeterLongitude_;
        position.latitude = latitude_ + std::sin(theta) * range * degreesPerMeterLatitude_;
        position.altitude = altitude_;
        // Before it is brought into range, which makes an infinite longitude 0.
        position.valid = validPosition_ && isFinite(position);
    }
    validatePosition(position);
    return position;
}

}  // namespace Impl

namespace Dbus::GeoLocation {

Position getPosition(double range, double azimuth) {
    // Without memory or locks the answer is that of a missing service.
    return Veskar::guarded(
        Position{}, [&] { return Impl::GeoLocation::instance().getPosition(range, azimuth); });
}

}  // namespace Dbus::GeoLocation
