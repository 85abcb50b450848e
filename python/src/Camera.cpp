// SPDX-License-Identifier: Apache-2.0
#include <veskar/Camera.h>
#include <veskar/ImagePlane.h>

#include "Bindings.h"

#include <string>

namespace Bindings {

void bindCamera(py::module_& module) {
    using Veskar::Camera;
    py::class_<Camera> camera(
        module, "Camera",
        "A camera with a radial lens, or a pinhole, and its mounting.\n\n"
        "Image positions are on the normalised image plane (-1..1, right and up).");
    py::class_<Camera::RangeToTarget>(camera, "RangeToTarget", "A distance along a viewing ray.")
        .def_readonly("clamped", &Camera::RangeToTarget::clamped,
                      "whether the minimum angle was used instead of the ray's")
        .def_readonly("range", &Camera::RangeToTarget::range, "m");
    camera
        .def(py::init<const Eigen::Vector2i&, const Eigen::Vector2d&, const Eigen::Vector4d&,
                      const Eigen::Vector4d&, const Eigen::Vector2d&, bool>(),
             py::arg("image_size"), py::arg("optical_centre"), py::arg("image_to_radians"),
             py::arg("radians_to_image"), py::arg("half_angles"), py::arg("is_pinhole"),
             "A camera at the origin without rotation.\n\n"
             "Parameters\n----------\n"
             "image_size : (int, int)\n    width and height, pixels\n"
             "optical_centre : (float, float)\n    on the normalised image plane\n"
             "image_to_radians, radians_to_image : 4 floats\n"
             "    lens polynomials c0..c3 between image radius and angle, radians\n"
             "half_angles : (float, float)\n    horizontal and vertical, radians\n"
             "is_pinhole : bool\n    by half_angles instead of the polynomials")
        .def_static(
            "parse", [](const std::string& json) { return Camera::parse(json); }, py::arg("json"),
            "A camera from JSON text; see docs/configuration.md.")
        .def_property(
            "resolution", &Camera::getResolution,
            [](Camera& self, const Eigen::Vector2i& size) {
                self.setResolution(size.x(), size.y());
            },
            "width and height, pixels")
        .def_property(
            "sensor_offset", &Camera::getSensorOffset,
            [](Camera& self, const Eigen::Vector2d& centre) {
                self.setSensorOffset(centre.x(), centre.y());
            },
            "optical centre on the normalised image plane")
        .def_property(
            "position", &Camera::getPosition,
            [](Camera& self, const Eigen::Vector3d& position) {
                self.setPosition(position.x(), position.y(), position.z());
            },
            "mounting position, m; the third is the height")
        .def_property_readonly("rotation", &Camera::getRotation,
                               "matrix from the camera's frame to the common one")
        .def("set_rotation", &Camera::setRotation, py::arg("yaw"), py::arg("pitch"),
             py::arg("roll"), "R = Rz(yaw) Ry(pitch) Rx(roll), degrees.")
        .def_property_readonly("field_of_view", &Camera::getFieldOfView,
                               "horizontal and vertical half-angle, radians")
        .def_property_readonly("aspect_ratio", &Camera::getAspectRatio, "width over height")
        .def_property_readonly("is_pinhole", &Camera::hasBDCEnabled, "without a lens polynomial")
        .def("image_to_radians", &Camera::evaluatePolynomImageToRadians, py::arg("radius"),
             "Angle from the optical centre line at an image radius, radians.")
        .def("radians_to_image", &Camera::evaluatePolynomRadiansToImage, py::arg("angle"),
             "Image radius at an angle from the optical centre line, radians.")
        .def("range_to_target", &Camera::getRangeToTarget, py::arg("x"), py::arg("y"),
             py::arg("minimum_angle"),
             "Distance along the viewing ray to the ground, m.\n\n"
             "Parameters\n----------\nx, y : float\n    image position\n"
             "minimum_angle : float\n    degrees below the horizon; rays above count as this")
        .def("range_to_target_uncertainty", &Camera::getRangeToTargetUncertainty, py::arg("y"),
             py::arg("minimum_angle"), py::arg("y_std"),
             "How much the range changes when the image position moves up by y_std, m.");

    module.def(
        "to_pixels",
        [](const Eigen::Vector4d& box, const Camera& by) {
            Eigen::Vector4d turned = box;
            Veskar::transformCameraToScreen(turned, by);
            return turned;
        },
        py::arg("box"), py::arg("camera"),
        "A box [left, width, lower edge, height] on the image plane in pixels; there the height is "
        "negated, because rows grow downward.");
    module.def(
        "from_pixels",
        [](const Eigen::Vector4d& box, const Camera& by) {
            Eigen::Vector4d turned = box;
            Veskar::transformScreenToCamera(turned, by);
            return turned;
        },
        py::arg("box"), py::arg("camera"), "The inverse of to_pixels.");
    module.def("is_inside_image", &Veskar::isInsideImage, py::arg("u"), py::arg("v"),
               "Whether a point lies inside the image, borders included; False for NaN.");
}

}  // namespace Bindings
