// SPDX-License-Identifier: Apache-2.0
#include "host/installation/InstallationText.h"

#include <string_view>

namespace Veskar::Host::Internal {
namespace {

void addRealMember(LineText& text, std::string_view name, double value) {
    text.addName(name);
    text.addReal(value);
}

template <typename Vector>
void addReals(LineText& text, const Vector& vector) {
    text += '[';
    for (Eigen::Index i = 0; i < vector.size(); ++i) {
        text += i == 0 ? "" : ",";
        text.addReal(vector[i]);
    }
    text += ']';
}

template <typename Vector>
void addRealsMember(LineText& text, std::string_view name, const Vector& vector) {
    text.addName(name);
    addReals(text, vector);
}

/// Appends the member "rotation", without a comma before it.
void addRotation(LineText& text, const Mounting& mounting) {
    text += "\"rotation\":{\"pitch\":";
    text.addReal(mounting.pitch);
    addRealMember(text, "yaw", mounting.yaw);
    addRealMember(text, "roll", mounting.roll);
    text += '}';
}

}  // namespace

void append(LineText& text, const CameraSetup& camera) {
    text += camera.bdc ? "{\"bdc\":true," : "{\"bdc\":false,";
    addRotation(text, camera.mounting);
    text += ",\"resolution\":[";
    text.addInteger(camera.resolution[0]);
    text += ',';
    text.addInteger(camera.resolution[1]);
    text += ']';
    addRealsMember(text, "sensorOffset", camera.sensorOffset);
    addRealsMember(text, "imageToRadiansPolynomial", camera.imageToRadians);
    addRealsMember(text, "radiansToImagePolynomial", camera.radiansToImage);
    addRealsMember(text, "fov", camera.fieldOfView);
    addRealsMember(text, "position", camera.mounting.position);
    text += '}';
}

void append(LineText& text, const RadarSetup& radar) {
    text += "{\"position\":";
    addReals(text, radar.mounting.position);
    text += ',';
    addRotation(text, radar.mounting);
    addRealMember(text, "rangeStd", radar.rangeStd);
    addRealMember(text, "azimuthStd", radar.azimuthStd);
    addRealMember(text, "velocityStd", radar.velocityStd);
    addRealMember(text, "fieldOfView", radar.fieldOfView);
    addRealMember(text, "maximumRange", radar.maximumRange);
    text += '}';
}

void append(LineText& text, const Site& site) {
    text += "{\"latitude\":";
    text.addReal(site.latitude);
    addRealMember(text, "longitude", site.longitude);
    addRealMember(text, "heading", site.heading);
    text += '}';
}

}  // namespace Veskar::Host::Internal
