// SPDX-License-Identifier: Apache-2.0
// Reads an installation from JSON: its members, their types and their limits.
#pragma once

#include <veskar-host/Installation.h>

#include "host/installation/InstallationKeys.h"
#include "host/json/Fields.h"
#include "host/json/LineText.h"

#include <array>

namespace Veskar::Host::Internal {

/// @param fields members of a sensor
/// @param keys its keys
/// @param mounting receives its pose
/// @throw InputError the fault
template <typename Value>
void readPose(const BasicFields<Value>& fields, const Keys& keys, Mounting& mounting) {
    fields.numbers(keys["position"], mounting.position.data());
    const BasicFields<Value> rotation = fields.object("rotation");
    const Keys angles(rotationKeys);
    rotation.allowOnly(angles);
    mounting.pitch = rotation.number(angles["pitch"], mounting.pitch);
    mounting.yaw = rotation.number(angles["yaw"], mounting.yaw);
    mounting.roll = rotation.number(angles["roll"], mounting.roll);
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
    const Keys keys(cameraKeys);
    fields.allowOnly(keys);
    CameraSetup camera;
    camera.bdc = fields.boolean(keys["bdc"], false);
    readPose(fields, keys, camera.mounting);
    std::array<double, 2> resolution{};
    fields.numbers(keys["resolution"], resolution.data());
    const Range pixels = keys["resolution"].allowed;
    if (!(pixels.contains(resolution[0]) && pixels.contains(resolution[1]))) {
        fields.refuse("resolution", "width and height must be between " +
                                        shortestText(pixels.least) + " and " +
                                        shortestText(pixels.most) + " pixels");
    }
    camera.resolution = {static_cast<int>(resolution[0]), static_cast<int>(resolution[1])};
    fields.numbers(keys["sensorOffset"], camera.sensorOffset.data());
    fields.numbers(keys["imageToRadiansPolynomial"], camera.imageToRadians.data());
    fields.numbers(keys["radiansToImagePolynomial"], camera.radiansToImage.data());
    fields.numbers(keys["fov"], camera.fieldOfView.data());
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
    const Keys keys(radarKeys);
    fields.allowOnly(keys);
    RadarSetup radar;
    readPose(fields, keys, radar.mounting);
    radar.rangeStd = fields.number(keys["rangeStd"], radar.rangeStd);
    radar.azimuthStd = fields.number(keys["azimuthStd"], radar.azimuthStd);
    radar.velocityStd = fields.number(keys["velocityStd"], radar.velocityStd);
    radar.fieldOfView = fields.number(keys["fieldOfView"], radar.fieldOfView);
    radar.maximumRange = fields.number(keys["maximumRange"], radar.maximumRange);
    return radar;
}

/// @param fields members of a site
/// @return the site
/// @throw InputError the fault
template <typename Value>
Site readSite(const BasicFields<Value>& fields) {
    const Keys keys(siteKeys);
    fields.allowOnly(keys);
    Site site;
    site.latitude = fields.number(keys["latitude"], site.latitude);
    site.longitude = fields.number(keys["longitude"], site.longitude);
    site.heading = fields.number(keys["heading"], site.heading);
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
