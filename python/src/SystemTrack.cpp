// SPDX-License-Identifier: Apache-2.0
#include <veskar/SystemTrack.h>

#include "Tracks.h"

#include <memory>

namespace Bindings {

void bindSystemTrack(py::module_& module) {
    using Veskar::SystemTrack;
    using Veskar::Track;
    py::class_<SystemTrack, Track, std::shared_ptr<SystemTrack>>(
        module, "SystemTrack", "The fused track of one object and the sensor tracks behind it.")
        .def(py::init<std::shared_ptr<Track>, int>(), py::arg("track").none(false), py::arg("id"),
             "Starts a system track from one sensor track; its probability begins at 0.5.")
        .def_property_readonly("track_probability", &SystemTrack::getTrackProbability,
                               "that the object exists")
        .def_readonly("is_confirmed", &SystemTrack::isConfirmed, "by track management")
        .def_readonly("system_start_time", &SystemTrack::systemStartTime,
                      "when the object started or entered the image, s")
        .def_readonly("track_probability_history", &SystemTrack::trackProbabilityHistory,
                      "last five posteriors, newest first")
        .def_property_readonly(
            "sensor_tracks", [](const SystemTrack& self) { return self.sensorTracks; },
            "the supporting tracks: {source: {id: Track}}, a new dictionary")
        .def("has_tracks", &SystemTrack::hasTracks, py::arg("source"),
             "Whether a track of the source supports it.")
        .def("has_coasting_tracks", &SystemTrack::hasCoastingTracks, py::arg("source"),
             "Whether one of them coasts.")
        .def("update_state", &SystemTrack::updateState, py::arg("track").none(false),
             "Fuses a report; the system track must be predicted to its time.")
        .def("update_track_probability", &SystemTrack::updateTrackProbability, py::arg("gain"),
             "Bayes step of the probability with a likelihood ratio.")
        .def("apply_defusion", &SystemTrack::applyDefusion, py::arg("track").none(false),
             "Takes the contribution of a sensor track out of the estimate, but not the last one.")
        .def("remove_track", &SystemTrack::pruneSensorTracksByIdx, py::arg("source"), py::arg("id"),
             "Takes a sensor track out, with its contribution.")
        .def("has_coasting_tracks_too_long", &SystemTrack::hasCoastingTracksTooLong,
             py::arg("source"), py::arg("limit"),
             "Whether one of the source's tracks coasts for longer than limit, s.")
        .def("update_class", &SystemTrack::updateClass, py::arg("track").none(false),
             "Takes the class of a video track unless it is \"unknown\".")
        .def("update_color", &SystemTrack::updateColor, py::arg("track").none(false),
             "The same of its colour.")
        .def("update_upper_clothing_color", &SystemTrack::updateUpperClothingColor,
             py::arg("track").none(false), "The same of its upper clothing.")
        .def("update_lower_clothing_color", &SystemTrack::updateLowerClothingColor,
             py::arg("track").none(false), "The same of its lower clothing.")
        .def("update_is_confident", &SystemTrack::updateIsConfident,
             "Sets is_confident: with radar, or like the first video track.")
        .def("update_origin_and_start_time", &SystemTrack::updateOriginAndStartTime,
             "Moves a start position outside the image along with the object, and restarts its "
             "age.")
        .def("prune", &SystemTrack::prune,
             "Takes out the sensor tracks that have coasted for 0.5 s or longer.");
}

}  // namespace Bindings
