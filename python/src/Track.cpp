// SPDX-License-Identifier: Apache-2.0
#include <veskar/Estimation.h>
#include <veskar/Track.h>

#include "Record.h"
#include "Tracks.h"

#include <memory>
#include <string>

namespace Bindings {
namespace {

using Veskar::Track;

std::shared_ptr<Track> makeTrack(const Veskar::StateVector& state,
                                 const Veskar::StateMatrix& covariance, double time, int id,
                                 Veskar::Source source, double probability,
                                 const std::string& className, double classProbability,
                                 const Eigen::Vector4d& boundingBox, double coastingTime,
                                 Veskar::CoordinateSystem coordinateSystem) {
    static const std::string unknown = "unknown";
    auto track =
        std::make_shared<Track>(state, covariance, time, id, source, coordinateSystem, className,
                                classProbability, unknown, 0.0, unknown, 0.0, unknown, 0.0);
    track->probability = probability;
    track->boundingBox = boundingBox;
    track->coastingTime = coastingTime;
    return track;
}

std::string describe(const Track& track) {
    return py::str("<{} {} of {} at {} s>")
        .format(
            dynamic_cast<const Veskar::SystemTrack*>(&track) != nullptr ? "SystemTrack" : "Track",
            track.id, py::cast(track.source).attr("name"), track.time)
        .cast<std::string>();
}

/// Matrices are views of the track, which they keep alive.
template <typename Value>
void addView(py::class_<Track, std::shared_ptr<Track>>& type, const char* name,
             Value Track::*member, const char* text) {
    type.def_property(
        name, [member](Track& self) -> Value& { return self.*member; },
        [member](Track& self, const Value& value) { self.*member = value; },
        py::return_value_policy::reference_internal, text);
}

void addMembers(py::class_<Track, std::shared_ptr<Track>>& type) {
    addView(type, "state", &Track::state,
            "the estimate [p1, p1', p2, p2', p3, p3']; in the frame of the fusion u, u' [1/s], v, "
            "v' [1/s], range [m], range' [m/s]. A view: the fusion moves it, copy() keeps it");
    addView(type, "covariance", &Track::covariance, "6 x 6, of state; a view, too");
    addView(type, "bounding_box", &Track::boundingBox,
            "[left, width, lower edge, height] on the normalised image plane; a view, too");
    addView(type, "start_position", &Track::startPosition,
            "image position (state[0], state[2]) at the start; a view, too");
    type.def_readwrite("time", &Track::time, "of the estimate, s")
        .def_readwrite("start_time", &Track::startTime, "of the first report, s")
        .def_readwrite("id", &Track::id, "the producer's track id")
        .def_readwrite("source", &Track::source, "where the track comes from")
        .def_readwrite("coordinate_system", &Track::coordinateSystem, "frame of state")
        .def_readwrite("class_name", &Track::className, "object class")
        .def_readwrite("class_probability", &Track::classProbability, "of class_name")
        .def_readwrite("color_name", &Track::colorName, "colour")
        .def_readwrite("color_probability", &Track::colorProbability, "of color_name")
        .def_readwrite("upper_clothing_color_name", &Track::upperClothingColorName, "colour")
        .def_readwrite("upper_clothing_color_probability", &Track::upperClothingColorProbability,
                       "of upper_clothing_color_name")
        .def_readwrite("lower_clothing_color_name", &Track::lowerClothingColorName, "colour")
        .def_readwrite("lower_clothing_color_probability", &Track::lowerClothingColorProbability,
                       "of lower_clothing_color_name")
        .def_readwrite("coasting_time", &Track::coastingTime,
                       "since the sensor last updated the track, s")
        .def_readwrite("probability", &Track::probability,
                       "gain of this report for the probability of its system track, above 0")
        .def_readwrite("speed", &Track::speed, "ground speed, m/s, or None")
        .def_readwrite("direction", &Track::direction, "of motion, or None")
        .def_readwrite("location", &Track::location,
                       "SphericalCoordinate as seen from the device, or None; a copy")
        .def_readwrite("geo_location", &Track::geoLocation, "GeographicPosition, or None; a copy")
        .def_readwrite("is_confident", &Track::isConfident,
                       "whether the producer has confirmed the track");
}

/// The virtual getters: a system track answers from the sensor tracks behind it.
void addGetters(py::class_<Track, std::shared_ptr<Track>>& type) {
    type.def("age", &Track::getAge, "Seconds since the start of a video track, otherwise -1.")
        .def("label", &Track::getClassName,
             "The class, which a system track takes from the tracks behind it, like what follows.")
        .def("get_class_probability", &Track::getClassProbability, "Of label().")
        .def("get_color_name", &Track::getColorName, "Colour.")
        .def("get_color_probability", &Track::getColorProbability, "Of the colour.")
        .def("get_upper_clothing_color_name", &Track::getUpperClothingColorName, "Colour.")
        .def("get_upper_clothing_color_probability", &Track::getUpperClothingColorProbability,
             "Of that colour.")
        .def("get_lower_clothing_color_name", &Track::getLowerClothingColorName, "Colour.")
        .def("get_lower_clothing_color_probability", &Track::getLowerClothingColorProbability,
             "Of that colour.")
        .def("get_speed", &Track::getSpeed, "Ground speed, m/s, or None.")
        .def("get_direction", &Track::getDirection, "Direction of motion, or None.")
        .def("get_location", &Track::getLocation, "As seen from the device, or None.")
        .def("get_geo_location", &Track::getGeoLocation, "Geographic position, or None.");
}

void bindPositions(py::module_& module) {
    Record<SphericalCoordinate>(module, "SphericalCoordinate", "A position seen from the device.")
        .field("range", &SphericalCoordinate::range, "along the ground, m")
        .field("azimuth", &SphericalCoordinate::azimuth,
               "degrees counter-clockwise from the device's right-hand side; forward is 90")
        .field("elevation", &SphericalCoordinate::elevation, "degrees; only stored");
    using Position = ::Dbus::GeoLocation::Position;
    Record<Position>(module, "GeographicPosition", "A geographic position (WGS84).")
        .field("latitude", &Position::latitude, "degrees, north positive")
        .field("longitude", &Position::longitude, "degrees, east positive")
        .field("altitude", &Position::altitude, "not set")
        .field("valid", &Position::valid, "whether it is known");
}

void bindEstimation(py::module_& module) {
    module.def("constant_velocity", &Veskar::constantVelocity, py::arg("dt"),
               "Transition matrix of the motion model over dt seconds, 6 x 6.");
    module.def("statistical_distance", &Veskar::statisticalDistance, py::arg("state1"),
               py::arg("covariance1"), py::arg("state2"), py::arg("covariance2"),
               "Mahalanobis distance of two estimates; infinite or NaN when singular.");
    module.def("log_pdf", &Veskar::logPDF, py::arg("state1"), py::arg("covariance1"),
               py::arg("state2"), py::arg("covariance2"),
               "How likely two estimates describe one object: -0.5 ln((2 pi)^6 det S) minus the "
               "distance.");
}

}  // namespace

void bindTrack(py::module_& module) {
    bindPositions(module);
    // No array: NumPy is imported when the first one is made.
    const py::tuple noBox = py::make_tuple(0.0, 0.0, 0.0, 0.0);
    py::class_<Track, std::shared_ptr<Track>> type(
        module, "Track", "A Gaussian estimate with identity, times, labels and image box.");
    type.def(py::init(&makeTrack), py::arg("state"), py::arg("covariance"), py::arg("time"),
             py::arg("id"), py::arg("source"), py::kw_only(), py::arg("probability"),
             py::arg("class_name") = "unknown", py::arg("class_probability") = 0.0,
             py::arg("bounding_box") = noBox, py::arg("coasting_time") = 0.0,
             py::arg("coordinate_system") = Veskar::ImagePlaneRange,
             "A sensor's report.\n\n"
             "Parameters\n----------\n"
             "state : 6 floats\n    see the attribute state\n"
             "covariance : 6 x 6 floats\n    of state\n"
             "time : float\n    of the estimate, s\n"
             "id : int\n    unique within a source\n"
             "source : Source\n    the sensor\n"
             "probability : float\n    gain of the report (a likelihood ratio), above 0\n"
             "class_name : str\n    see veskar.vocabulary\n"
             "class_probability : float\n    of class_name\n"
             "bounding_box : 4 floats\n    [left, width, lower edge, height], image plane\n"
             "coasting_time : float\n    since the sensor last saw the object, s\n"
             "coordinate_system : CoordinateSystem\n    frame of state");
    addMembers(type);
    type.def("predict", &Track::predict, py::arg("time"),
             "Moves the estimate to a time (s) with constant velocity.")
        .def("travelled_distance", &Track::getTravelledDistanceInImagePlane,
             "Distance from the start position on the image plane.")
        .def("statistical_distance", &Track::statisticalDistance, py::arg("other").none(false),
             "Mahalanobis distance of the states; infinite or NaN when singular.")
        .def("position_statistical_distance", &Track::positionStatisticalDistance,
             py::arg("other").none(false), "The same of the three positions alone.")
        .def("log_pdf", &Track::logPdf, py::arg("other").none(false),
             "How likely both tracks describe one object; larger is likelier.")
        .def("velocity_similarity", &Track::velocitySimilarity, py::arg("other").none(false),
             py::arg("minimum_speed_sum"),
             "(whether it counts, cosine of the angle between the image velocities).")
        .def("__repr__", &describe);

    addGetters(type);
    bindEstimation(module);
}

}  // namespace Bindings
