// SPDX-License-Identifier: Apache-2.0
// From reports to places: projection, measurement models, the Earth.
#include <veskar-host/GeographicPosition.h>
#include <veskar-host/GroundEstimate.h>
#include <veskar-host/Projection.h>
#include <veskar-host/RadarModel.h>
#include <veskar-host/UsualSize.h>
#include <veskar-host/VideoModel.h>

#include "Record.h"

#include <optional>
#include <string>

namespace Bindings {
namespace {

namespace Host = Veskar::Host;

void bindProjection(py::module_& module) {
    py::class_<Host::Projection>(
        module, "Projection",
        "From points of the device's frame (x forward, y left, z up, m) into the image and back.")
        .def(py::init<const Veskar::Camera&>(), py::arg("camera"))
        .def("position", &Host::Projection::position, py::arg("point"),
             "Image position (u, v) of a point; not limited to the image.")
        .def("sees", &Host::Projection::sees, py::arg("point"),
             "Whether a point lies in front of the camera and inside the image.")
        .def("ray", &Host::Projection::ray, py::arg("u"), py::arg("v"),
             "Unit viewing ray in the device's frame.")
        .def(
            "ground_point",
            [](const Host::Projection& self, double u, double v, double range) {
                const auto point = self.groundPoint(u, v, range);
                return point ? std::optional<Eigen::Vector2d>(point->position) : std::nullopt;
            },
            py::arg("u"), py::arg("v"), py::arg("range"),
            "The ground point (x, y) at a distance (m) from the camera in an image column; None "
            "when there is none. v is the start of the search.");
}

void bindModels(py::module_& module) {
    Record<Host::GroundEstimate>(module, "GroundEstimate", "An estimate on the ground.")
        .field("state", &Host::GroundEstimate::state, "x, y [m], vx, vy [m/s], device's frame")
        .field("covariance", &Host::GroundEstimate::covariance, "4 x 4, of state")
        .type()
        .def("predicted", &Host::GroundEstimate::predicted, py::arg("dt"),
             py::arg("acceleration_std"),
             "The estimate dt seconds later; acceleration_std is process noise, m/s^2.");
    Record<Host::FusionEstimate>(module, "FusionEstimate", "An estimate in the fusion's frame.")
        .field("state", &Host::FusionEstimate::state, "u, u', v, v', range, range'")
        .field("covariance", &Host::FusionEstimate::covariance, "6 x 6, of state");
    module.def("to_fusion", &Host::toFusion, py::arg("projection"), py::arg("ground"),
               "A GroundEstimate as a FusionEstimate, with a covariance of rank 4.");
    py::class_<Host::RadarModel>(module, "RadarModel", "The measurement model of the radar.")
        .def(py::init<const Host::RadarSetup&, const Host::HostParameters&>(), py::arg("setup"),
             py::arg("parameters") = Host::HostParameters())
        .def("estimate", &Host::RadarModel::estimate, py::arg("report"),
             "The GroundEstimate of a RadarReport.")
        .def(
            "ground_point",
            [](const Host::RadarModel& self, double range, double azimuth) {
                return self.groundPoint(range, azimuth).position;
            },
            py::arg("range"), py::arg("azimuth"),
            "The point on the ground at a slant range (m) and an azimuth (degrees clockwise from "
            "the radar's forward direction).");
    py::class_<Host::VideoModel>(module, "VideoModel", "The measurement model of the camera.")
        .def(py::init<const Veskar::Camera&, const Veskar::Config::VideoInput&,
                      const Host::HostParameters&>(),
             py::arg("camera"), py::arg("noise"), py::arg("parameters") = Host::HostParameters())
        .def("estimate", &Host::VideoModel::estimate, py::arg("box"),
             py::arg("velocity") = py::none(),
             "The FusionEstimate of an ImageBox; velocity is that of the middle of its lower edge, "
             "1/s, if known.");
    module.def(
        "usual_size", [](const std::string& className) { return Host::usualSize(className); },
        py::arg("class_name"),
        "Length, width and height of a typical object of a class, m; of a person for unknown "
        "classes.");
}

void bindEarth(py::module_& module) {
    module.def("device_azimuth", &Host::deviceAzimuth, py::arg("ground"),
               "Azimuth of a ground point as in SphericalCoordinate, degrees.");
    module.def("geographic_position", &Host::geographicPosition, py::arg("site"), py::arg("ground"),
               "The GeographicPosition of a ground point, on the tangent plane at the site.");
    module.def("ground_point", &Host::groundPoint, py::arg("site"), py::arg("position"),
               "The ground point (x, y) of a GeographicPosition near the site, m.");
}

}  // namespace

void bindGeometry(py::module_& module) {
    bindProjection(module);
    bindModels(module);
    bindEarth(module);
}

}  // namespace Bindings
