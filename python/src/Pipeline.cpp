// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/FusionPipeline.h>
#include <veskar-host/HostAdapter.h>

#include "Record.h"
#include "Session.h"
#include "host/pipeline/ReplayOptions.h"

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace Bindings {
namespace {

namespace Host = Veskar::Host;
using FusedFrames = std::vector<Host::FusedFrame>;

/// Gives back the frames that it fuses.
class Pipeline : public Session<Host::FusionPipeline> {
public:
    Pipeline(const Host::Installation& installation, const Veskar::Config& config,
             const Host::HostParameters& parameters, const Host::FusionPipeline::Options& options)
        : Session(
              "FusionPipeline", installation, config,
              [this](const Host::FusedFrame& frame) { fused_.push_back(frame); }, parameters,
              options) {}

    template <typename Function>
    FusedFrames fused(Function function) {
        fused_.clear();  // what an exception left
        run(function);
        return std::exchange(fused_, {});
    }

private:
    FusedFrames fused_;
};

std::unique_ptr<Pipeline> makePipeline(const Host::Installation& installation,
                                       const std::optional<Veskar::Config>& config,
                                       const std::optional<Host::HostParameters>& parameters,
                                       bool withTags, double uptime, bool asksForPosition) {
    Host::FusionPipeline::Options options;
    options.withTags = withTags;
    options.uptime = uptime;
    options.asksForPosition = asksForPosition;
    return std::make_unique<Pipeline>(
        installation, config ? *config : Veskar::Config::defaults(),
        parameters ? *parameters : Host::HostParameters::fromConfig(Veskar::Config::defaultsText()),
        options);
}

}  // namespace

void bindPipeline(py::module_& module) {
    using Counts = Host::FusionPipeline::Counts;
    Record<Counts>(module, "PipelineCounts", "Statistics of a pipeline.")
        .field("video_frames", &Counts::videoFrames, "pushed")
        .field("radar_frames", &Counts::radarFrames, "pushed")
        .field("ignored_frames", &Counts::ignoredFrames, "of another source, or not finite")
        .field("added_frames", &Counts::addedFrames, "empty or predicted, by the pipeline")
        .field("failed_frames", &Counts::failedFrames, "that could not be associated")
        .field("first_failure", &Counts::firstFailure, "why, and when")
        .field("fusion_seconds", &Counts::fusionSeconds, "inside the fusion");

    py::class_<Host::HostAdapter>(module, "HostAdapter",
                                  "Turns frames of reports into tracks in the frame of the fusion.")
        .def(py::init<const Host::Installation&, const Veskar::Config&,
                      const Host::HostParameters&>(),
             py::arg("installation"), py::arg("config"),
             py::arg("parameters") = Host::HostParameters())
        .def(
            "convert",
            [](const Host::HostAdapter& self, const Host::SensorFrame& frame, double uptime,
               double ahead,
               double slowInterval) { return self.convert(frame, uptime, ahead, slowInterval); },
            py::arg("frame"), py::arg("uptime") = 0.0, py::arg("ahead") = 0.0,
            py::arg("slow_interval") = 0.0,
            "The frame's tracks in the same order.\n\n"
            "Parameters\n----------\n"
            "frame : SensorFrame\n    of one sensor\n"
            "uptime : float\n    offset of the fusion's time base to the frame's, s\n"
            "ahead : float\n    by which they are predicted before they are converted, s\n"
            "slow_interval : float\n    of the frames of a slow sensor, s, or 0\n\n"
            "Returns\n-------\nlist of Track\n    at the frame's time plus uptime plus ahead");

    py::class_<Pipeline> type(
        module, "FusionPipeline",
        "From sensor reports to fused tracks.\n\n"
        "Adds frames for silent and slow sensors. One fusion works in a process "
        "at a time: close() it, or use it in a with statement, before the next.");
    type.def(py::init(&makePipeline), py::arg("installation"), py::arg("config") = py::none(),
             py::arg("parameters") = py::none(), py::kw_only(), py::arg("tags") = false,
             py::arg("uptime") = Host::Internal::replayUptime, py::arg("asks_for_position") = false,
             "Parameters\n----------\n"
             "installation : Installation\n    the sensors and where they are\n"
             "config : Config, optional\n    default: the shipped one\n"
             "parameters : HostParameters, optional\n    default: those of the shipped "
             "configuration\n"
             "tags : bool\n    evaluate the detection priority of every track\n"
             "uptime : float\n    offset of the fusion's time base to that of the frames, s; the "
             "default is\n    that of replays, for frames whose times begin near 0\n"
             "asks_for_position : bool\n    ask the device's geolocation service, without a site")
        .def(
            "push",
            [](Pipeline& self, const Host::SensorFrame& frame) {
                return self.fused([&](Host::FusionPipeline& pipeline) { pipeline.push(frame); });
            },
            py::arg("frame"),
            "Hands a SensorFrame over, in the order of arrival.\n\n"
            "Returns\n-------\nlist of FusedFrame\n    what was fused by it")
        .def(
            "advance",
            [](Pipeline& self, double now) {
                return self.fused([&](Host::FusionPipeline& pipeline) { pipeline.advance(now); });
            },
            py::arg("now"),
            "Adds the frames that are due until then (s) for silent or slow sensors; returns what "
            "was fused, as push().")
        .def_property_readonly(
            "counts", [](Pipeline& self) { return self.get().counts(); }, "PipelineCounts")
        .def_property_readonly(
            "system_tracks", [](Pipeline& self) { return self.get().fusion().systemTracks; },
            "the fusion's SystemTracks, oldest first: a new list; times are ahead by uptime");
    addSession(type, "; its times are ahead of the frames' by uptime");
}

}  // namespace Bindings
