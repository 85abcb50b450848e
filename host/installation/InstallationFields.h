// SPDX-License-Identifier: Apache-2.0
// Reads an installation from JSON: its members, their types and their limits.
#pragma once

#include <veskar-host/Installation.h>

#include "host/json/Fields.h"

#include <array>

namespace Veskar::Host::Internal {

/// @param fields members of a sensor
/// @param mounting receives its pose
/// @throw InputError the fault
template <typename Value>
void readPose(const BasicFields<Value>& fields, Mounting& mounting) {
    fields.numbers("position", 3, mounting.position.data());
    const BasicFields<Value> rotation = fields.object("rotation");
    rotation.allowOnly({"pitch", "yaw", "roll"});
    mounting.pitch = rotation.number("pitch");
    mounting.yaw = rotation.number("yaw");
    mounting.roll = rotation.number("roll");
    if (!(mounting.position[2] > 0.0)) {
        fields.refuse("position", "the height above ground, the third number, must be positive");
    }
}

/// @param fields members of a camera as Veskar::Camera::parse takes them; integers are accepted as
///               reals
/// @return the camera
/// @throw InputError the fault
template <typename Value>
CameraSetup readCamera(const BasicFields<Value>& fields) {
    fields.allowOnly({"bdc", "rotation", "resolution", "sensorOffset", "imageToRadiansPolynomial",
                      "radiansToImagePolynomial", "fov", "position"});
    CameraSetup camera;
    fields.at("bdc");
    camera.bdc = fields.boolean("bdc", false);
    readPose(fields, camera.mounting);
    std::array<double, 2> resolution{};
    fields.numbers("resolution", 2, resolution.data());
    if (!(resolution[0] >= 1.0 && resolution[1] >= 1.0 && resolution[0] <= 65536.0 &&
          resolution[1] <= 65536.0)) {
        fields.refuse("resolution", "width and height must be between 1 and 65536 pixels");
    }
    camera.resolution = {static_cast<int>(resolution[0]), static_cast<int>(resolution[1])};
    fields.numbers("sensorOffset", 2, camera.sensorOffset.data());
    fields.numbers("imageToRadiansPolynomial", 4, camera.imageToRadians.data());
    fields.numbers("radiansToImagePolynomial", 4, camera.radiansToImage.data());
    fields.numbers("fov", 2, camera.fieldOfView.data());
    if (!(camera.fieldOfView[0] > 0.0)) {
        fields.refuse("fov", "the horizontal half-angle, the first number, must be positive");
    }
    return camera;
}

/// @param fields members of a radar
/// @return the radar
/// @throw InputError the fault
template <typename Value>
RadarSetup readRadar(const BasicFields<Value>& fields) {
    constexpr double tiny = 1e-6;
    fields.allowOnly({"position", "rotation", "rangeStd", "azimuthStd", "velocityStd",
                      "fieldOfView", "maximumRange"});
    RadarSetup radar;
    readPose(fields, radar.mounting);
    radar.rangeStd = fields.numberWithin("rangeStd", tiny, unlimited);
    radar.azimuthStd = fields.numberWithin("azimuthStd", tiny, 90.0);
    radar.velocityStd = fields.numberWithin("velocityStd", tiny, unlimited);
    radar.fieldOfView = fields.numberWithin("fieldOfView", tiny, 360.0, radar.fieldOfView);
    radar.maximumRange = fields.numberWithin("maximumRange", tiny, unlimited, radar.maximumRange);
    return radar;
}

/// @param fields members of a site
/// @return the site
/// @throw InputError the fault
template <typename Value>
Site readSite(const BasicFields<Value>& fields) {
    fields.allowOnly({"latitude", "longitude", "heading"});
    Site site;
    site.latitude = fields.numberWithin("latitude", -90.0, 90.0);
    site.longitude = fields.numberWithin("longitude", -180.0, 180.0);
    site.heading = fields.numberWithin("heading", -360.0, 360.0);
    return site;
}

/// @param fields the header of a recording, or an object with the same members "camera", "radar"
///               and "site"
/// @return the installation
/// @throw InputError the fault
template <typename Value>
Installation readInstallation(const BasicFields<Value>& fields) {
    Installation installation;
    installation.camera = readCamera(fields.object("camera"));
    installation.radar = readRadar(fields.object("radar"));
    if (fields.has("site")) {
        installation.site = readSite(fields.object("site"));
    }
    return installation;
}

}  // namespace Veskar::Host::Internal
