// SPDX-License-Identifier: Apache-2.0
#include <veskar/NearestWord.h>
#include <veskar/Track.h>
#include <veskar/Vocabulary.h>

#include "Bindings.h"

namespace Bindings {

void bindVocabulary(py::module_& module) {
    namespace Words = Veskar::Vocabulary;

    py::enum_<Veskar::Source>(module, "Source", "Where a track or a frame comes from.")
        .value("VIDEO", Veskar::VideoObject, "video object detections")
        .value("VURA", Veskar::VideoVura, "the second, motion-based video tracker")
        .value("RADAR", Veskar::Radar, "radar")
        .value("SYSTEM", Veskar::System, "a fused system track");
    py::enum_<Veskar::CoordinateSystem>(module, "CoordinateSystem",
                                        "The frame of a track's state; never converted.")
        .value("UNSPECIFIED", Veskar::Unspecified, "the producer does not say")
        .value("GROUND_PLANE", Veskar::GroundPlane, "metres on the ground around the device")
        .value("IMAGE_PLANE_RANGE", Veskar::ImagePlaneRange,
               "(u, u rate, v, v rate, range, range rate); the frame of system tracks");

    // veskar/vocabulary.py shows these.
    module.attr("KNOWN_CLASSES") = py::frozenset(py::cast(Words::knownClasses));
    module.attr("SUPPORTED_CLASSES") = py::frozenset(py::cast(Words::supportedClasses));
    module.attr("KNOWN_COLORS") = py::frozenset(py::cast(Words::knownColors));
    module.attr("CLASS_GROUPS") = py::cast(Words::classGroups);
    module.attr("UNKNOWN") = Words::unknown;
    module.def("is_known_class", Words::isKnownClass, py::arg("word"),
               "Whether a class label is one of KNOWN_CLASSES.");
    module.def("is_known_color", Words::isKnownColor, py::arg("word"),
               "Whether a colour label is one of KNOWN_COLORS.");
    module.def("nearest_word", Veskar::nearestWord, py::arg("word"), py::arg("words"),
               "The one of the words that a misspelt one comes from; empty when none is near.");
}

}  // namespace Bindings
