// SPDX-License-Identifier: Apache-2.0
// What goes into a pipeline, and what comes out.
#include <veskar-host/FusedFrame.h>
#include <veskar-host/SensorFrame.h>

#include "Record.h"

namespace Bindings {
namespace {

namespace Host = Veskar::Host;

template <typename Report>
void addBase(Record<Report>& record) {
    record.field("id", &Report::id, "the sensor's track id, unique within a frame")
        .field("coasting", &Report::coasting, "since the sensor last saw the object, s")
        .field("confirmed", &Report::confirmed, "by the sensor's tracker");
}

void bindLabels(py::module_& module) {
    Record<Host::Label>(module, "Label", "A label and its probability.")
        .field("name", &Host::Label::name, "see veskar.vocabulary")
        .field("probability", &Host::Label::probability, "0 to 1");
    Record<Host::Labels>(module, "Labels", "Class and colours of an object.")
        .field("object_class", &Host::Labels::objectClass, "object class")
        .field("color", &Host::Labels::color, "of a vehicle, for example")
        .field("upper_clothing_color", &Host::Labels::upperClothingColor, "of a person")
        .field("lower_clothing_color", &Host::Labels::lowerClothingColor, "of a person");
    Record<Host::ImageBox>(module, "ImageBox", "A box on the normalised image plane.")
        .field("left", &Host::ImageBox::left, "least u")
        .field("bottom", &Host::ImageBox::bottom, "least v")
        .field("right", &Host::ImageBox::right, "largest u")
        .field("top", &Host::ImageBox::top, "largest v");
}

void bindSensorFrame(py::module_& module) {
    Record<Host::VideoReport> video(module, "VideoReport", "A track of the video analytics.");
    addBase(video);
    video.field("box", &Host::VideoReport::box, "the object stands at the middle of its lower edge")
        .field("velocity", &Host::VideoReport::velocity, "of that point, 1/s, or None")
        .field("age", &Host::VideoReport::age, "since the first report, s")
        .field("labels", &Host::VideoReport::labels, "class and colours");
    Record<Host::RadarReport> radar(module, "RadarReport", "A track of the radar.");
    addBase(radar);
    radar.field("range", &Host::RadarReport::range, "slant distance, m")
        .field("azimuth", &Host::RadarReport::azimuth, "degrees clockwise from forward")
        .field("speed", &Host::RadarReport::speed, "over ground, m/s, or None")
        .field("direction", &Host::RadarReport::direction,
               "of motion, degrees clockwise from forward, or None")
        .field("radial_speed", &Host::RadarReport::radialSpeed, "away positive, m/s, or None")
        .field("object_class", &Host::RadarReport::objectClass, "when the radar classifies");
    Record<Host::ReadyEstimate> ready(module, "ReadyEstimate",
                                      "A track that is in the frame of the fusion already.");
    addBase(ready);
    ready.field("state", &Host::ReadyEstimate::state, "u, u', v, v', range, range'")
        .field("covariance", &Host::ReadyEstimate::covariance, "of state")
        .field("box", &Host::ReadyEstimate::box, "image box, or None")
        .field("labels", &Host::ReadyEstimate::labels, "class and colours");
    Record<Host::SensorFrame> frame(module, "SensorFrame", "One frame of one sensor.");
    frame.field("source", &Host::SensorFrame::source, "VIDEO or RADAR")
        .field("time", &Host::SensorFrame::time, "of the measurement, s")
        .field("received", &Host::SensorFrame::received, "when the host received it, s")
        .field("tracks", &Host::SensorFrame::tracks, "reports, a new list");
    frame.type()
        .def(
            "to_json_line", [](const Host::SensorFrame& self) { return toJsonLine(self); },
            "The line of a recording, with line end.")
        .def_static("parse", &Host::parseSensorFrame, py::arg("line"),
                    "Reads the line of a recording that holds a sensor frame.");
}

void bindFusedFrame(py::module_& module) {
    Record<Host::Support>(module, "Support", "A sensor track behind a system track.")
        .field("source", &Host::Support::source, "VIDEO or RADAR")
        .field("id", &Host::Support::id, "the sensor's track id")
        .field("coasting", &Host::Support::coasting, "s");
    Record<Host::GroundPosition>(module, "GroundPosition", "x forward, y to the left.")
        .field("position", &Host::GroundPosition::position, "m")
        .field("covariance", &Host::GroundPosition::covariance, "of position, m^2")
        .field("velocity", &Host::GroundPosition::velocity, "m/s")
        .field("velocity_covariance", &Host::GroundPosition::velocityCovariance, "(m/s)^2");
    Record<Host::FusedTrack>(module, "FusedTrack", "A system track with its place on the ground.")
        .field("id", &Host::FusedTrack::id, "system track id")
        .field("confirmed", &Host::FusedTrack::confirmed, "by track management")
        .field("probability", &Host::FusedTrack::probability, "that the object exists")
        .field("image", &Host::FusedTrack::image, "u, v")
        .field("image_rate", &Host::FusedTrack::imageRate, "1/s")
        .field("range", &Host::FusedTrack::range, "from the camera, m")
        .field("range_rate", &Host::FusedTrack::rangeRate, "m/s")
        .field("ground", &Host::FusedTrack::ground, "GroundPosition, or None")
        .field("speed", &Host::FusedTrack::speed, "m/s, or None")
        .field("direction", &Host::FusedTrack::direction, "degrees clockwise from forward, or None")
        .field("labels", &Host::FusedTrack::labels, "class and colours")
        .field("box", &Host::FusedTrack::box, "in the image")
        .field("geo", &Host::FusedTrack::geo, "GeographicPosition, or None")
        .field("age", &Host::FusedTrack::age, "s")
        .field("sensors", &Host::FusedTrack::sensors, "what feeds it, a new list")
        .field("tags", &Host::FusedTrack::tags, "detection priority, on request");
    Record<Host::FusedFrame> frame(module, "FusedFrame", "The system tracks after a frame.");
    frame.field("time", &Host::FusedFrame::time, "of the estimates, s")
        .field("received", &Host::FusedFrame::received, "by the host's clock, s")
        .field("source", &Host::FusedFrame::source, "sensor of the frame")
        .field("tracks", &Host::FusedFrame::tracks, "oldest first, a new list");
    frame.type().def(
        "to_json_line", [](const Host::FusedFrame& self) { return toJsonLine(self); },
        "The line of fused tracks, with line end.");
}

}  // namespace

void bindReports(py::module_& module) {
    bindLabels(module);
    bindSensorFrame(module);
    bindFusedFrame(module);
}

}  // namespace Bindings
