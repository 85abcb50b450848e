// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/Installation.h>

#include "Record.h"

namespace Bindings {

void bindInstallation(py::module_& module) {
    namespace Host = Veskar::Host;
    Record<Host::Mounting>(module, "Mounting",
                           "Pose of a sensor: x forward, y to the left, z up, metres.")
        .field("position", &Host::Mounting::position, "m; the third is the height")
        .field("yaw", &Host::Mounting::yaw, "degrees to the left")
        .field("pitch", &Host::Mounting::pitch, "degrees downward")
        .field("roll", &Host::Mounting::roll, "degrees, right side down");
    Record<Host::CameraSetup> camera(module, "CameraSetup", "The camera of an installation.");
    camera.field("mounting", &Host::CameraSetup::mounting, "pose")
        .field("bdc", &Host::CameraSetup::bdc, "pinhole instead of lens")
        .field("resolution", &Host::CameraSetup::resolution, "width and height, pixels")
        .field("sensor_offset", &Host::CameraSetup::sensorOffset, "optical centre in the image")
        .field("image_to_radians", &Host::CameraSetup::imageToRadians, "lens polynomial, c0..c3")
        .field("radians_to_image", &Host::CameraSetup::radiansToImage, "its inverse, c0..c3")
        .field("field_of_view", &Host::CameraSetup::fieldOfView, "half-angles, radians");
    camera.type().def("build", &Host::CameraSetup::build, "The Camera.");
    Record<Host::RadarSetup>(module, "RadarSetup", "The radar: pose, noise and reach.")
        .field("mounting", &Host::RadarSetup::mounting, "pose")
        .field("range_std", &Host::RadarSetup::rangeStd, "m")
        .field("azimuth_std", &Host::RadarSetup::azimuthStd, "degrees")
        .field("velocity_std", &Host::RadarSetup::velocityStd, "m/s")
        .field("field_of_view", &Host::RadarSetup::fieldOfView, "full angle, degrees")
        .field("maximum_range", &Host::RadarSetup::maximumRange, "m");
    Record<Host::Site>(module, "Site", "Geographic position (WGS84) and heading of the device.")
        .field("latitude", &Host::Site::latitude, "degrees, north positive")
        .field("longitude", &Host::Site::longitude, "degrees, east positive")
        .field("heading", &Host::Site::heading, "of the x axis, degrees clockwise from north");
    Record<Host::Installation> installation(module, "Installation",
                                            "The sensors of a device and where they are.");
    installation.field("camera", &Host::Installation::camera, "the video sensor")
        .field("radar", &Host::Installation::radar, "the radar")
        .field("site", &Host::Installation::site, "site of the device, or None");
    installation.type()
        .def_static(
            "load", [](const py::object& path) { return Host::Installation::parse(pathOf(path)); },
            py::arg("path"), "Reads an installation, or that of a recording.")
        .def_static("parse", &Host::Installation::parseString, py::arg("text"),
                    "Reads JSON text of an installation.");
}

}  // namespace Bindings
