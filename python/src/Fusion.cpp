// SPDX-License-Identifier: Apache-2.0
#include <veskar/FusionModule.h>

#include "Session.h"
#include "Tracks.h"

#include <chrono>
#include <memory>
#include <vector>

namespace Bindings {
namespace {

using Veskar::FusionModule;
using Veskar::Source;
using SensorTracks = std::vector<std::shared_ptr<Veskar::Track>>;

FusionModule::SteadyClock clockOf(const py::object& seconds) {
    if (seconds.is_none()) {
        return [] { return std::chrono::steady_clock::now().time_since_epoch(); };
    }
    return [seconds] {
        const py::gil_scoped_acquire lock;
        return std::chrono::duration_cast<std::chrono::nanoseconds>(
            std::chrono::duration<double>(seconds().cast<double>()));
    };
}

class Module : public Session<FusionModule> {
public:
    Module(const Veskar::Config& config, const py::object& clock)
        : Session("FusionModule", config, clockOf(clock)) {}
};

bool canBeMerged(const Veskar::SystemTrack& track) {
    return track.hasTracks(Veskar::VideoObject) || track.hasTracks(Veskar::Radar);
}

void merge(Module& self, Veskar::SystemTrack& target, Veskar::SystemTrack& other) {
    if (&target == &other || !canBeMerged(other)) {
        throw py::value_error("merge: takes two system tracks, the second with a sensor track");
    }
    self.run([&](FusionModule& fusion) { fusion.merge(target, other); });
}

/// The steps of cycle_frame(), for experiments with their order.
void addSteps(py::class_<Module>& type) {
    type.def(
            "predict_tracks",
            [](Module& self, double timestamp) {
                self.run([&](FusionModule& fusion) { fusion.predictTracks(timestamp); });
            },
            py::arg("timestamp"), "Moves all tracks to a time, s.")
        .def(
            "update",
            [](Module& self, Source source, const SensorTracks& tracks) {
                complete(tracks);
                self.run([&](FusionModule& fusion) { fusion.update(source, tracks); });
            },
            py::arg("source"), py::arg("tracks"),
            "Brings a frame into the system tracks, which must be predicted to its time: "
            "continuation,\nassociation, and a probability step for those that neither touched.")
        .def(
            "initialize",
            [](Module& self, const std::shared_ptr<Veskar::Track>& track) {
                self.run([&](FusionModule& fusion) { fusion.initialize(track); });
            },
            py::arg("track").none(false),
            "Starts a system track from a sensor track that no system track holds.")
        .def(
            "management",
            [](Module& self) { self.run([](FusionModule& fusion) { fusion.management(); }); },
            "Confirms system tracks, prunes coasting sensor tracks, deletes what is left empty.")
        .def("merge", &merge, py::arg("target").none(false), py::arg("other").none(false),
             "Folds the first video track of another system track, or its first radar track, into "
             "target.")
        .def(
            "tracked_od_has_motion",
            [](Module& self, int id, double u, double v) {
                return self.get().trackedOdHasMotion(id, u, v);
            },
            py::arg("id"), py::arg("u"), py::arg("v"),
            "Records the image position of a tracked video detection; returns whether it has "
            "moved.");
}

}  // namespace

void bindFusion(py::module_& module) {
    py::class_<Module> type(
        module, "FusionModule",
        "Fuses radar and video tracks into system tracks.\n\n"
        "One fusion works in a process at a time: close() it, or use it in a with "
        "statement, before the next. Ids of system tracks then begin with 1 again.");
    type.def(py::init<const Veskar::Config&, const py::object&>(), py::arg("config"),
             py::arg("clock") = py::none(),
             "Parameters\n----------\n"
             "config : Config\n    copied\n"
             "clock : callable, optional\n"
             "    monotonic clock of the frames' time base, s; default: that of the system")
        .def(
            "cycle",
            [](Module& self, Source source, double timestamp, const SensorTracks& tracks) {
                complete(tracks);
                self.run([&](FusionModule& fusion) { fusion.cycle(source, timestamp, tracks); });
            },
            py::arg("source"), py::arg("timestamp"), py::arg("tracks"),
            "Takes one frame of a sensor.\n\n"
            "A video frame is fused at once; radar frames wait until video time has come within "
            "0.1 s.\n\n"
            "Parameters\n----------\n"
            "source : Source\n    VIDEO or RADAR\n"
            "timestamp : float\n    time of the frame, s\n"
            "tracks : list of Track\n    shared with the module, which predicts them later on")
        .def(
            "cycle_frame",
            [](Module& self, Source source, double timestamp, const SensorTracks& tracks) {
                complete(tracks);
                self.run(
                    [&](FusionModule& fusion) { fusion.cycleFrame(source, timestamp, tracks); });
            },
            py::arg("source"), py::arg("timestamp"), py::arg("tracks"),
            "Fuses one frame at once, without the checks of cycle().")
        .def(
            "is_far_in_time",
            [](Module& self, double timestamp) { return self.get().isFarInTime(timestamp); },
            py::arg("timestamp"), "Whether cycle() would take a stamp for another time base.")
        .def(
            "waits_for_video",
            [](Module& self, double timestamp) { return self.get().waitsForVideo(timestamp); },
            py::arg("timestamp"), "Whether cycle() would let a radar frame wait for video.")
        .def(
            "clear", [](Module& self) { self.get().clear(); }, "Forgets all tracks; ids go on.")
        .def_property_readonly(
            "system_tracks", [](Module& self) { return self.get().systemTracks; },
            "all live system tracks, oldest first: a new list");
    addSteps(type);
    addSession(type, "; an exception in it reaches the caller of cycle when the frame is done");

    py::module_::import("os").attr("register_at_fork")(
        py::arg("after_in_child") = py::cpp_function(&FusionTurn::forgetAfterFork));
}

}  // namespace Bindings
