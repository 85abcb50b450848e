// SPDX-License-Identifier: Apache-2.0
// Any file as an MCAP log with messages of ROS 2: it becomes a recording whose frames ascend and
// whose numbers are finite, or is refused with a reason.
#include <veskar-host/InputError.h>

#include "import/Mcap.h"
#include "support/InputFile.h"
#include "support/Require.h"

#include <cmath>
#include <map>
#include <variant>

using namespace VeskarFuzz;

namespace {

constexpr const char* installation =
    R"({"camera":{"bdc":false,"rotation":{"pitch":20.0,"yaw":0.0,"roll":0.0},)"
    R"("resolution":[1920,1080],"sensorOffset":[0.0,0.0],)"
    R"("imageToRadiansPolynomial":[0.0,0.785,0.0,0.0],)"
    R"("radiansToImagePolynomial":[0.0,1.273,0.0,0.0],"fov":[0.785,0.44],)"
    R"("position":[0.0,0.0,5.0]},"radar":{"position":[0.0,0.0,4.6],)"
    R"("rotation":{"pitch":0.0,"yaw":0.0,"roll":0.0},"rangeStd":0.3,"azimuthStd":1.0,)"
    R"("velocityStd":0.5}})";

void requireFinite(const Workbench::Report& report) {
    if (const auto* radar = std::get_if<Workbench::RadarReport>(&report)) {
        require(std::isfinite(radar->range) && std::isfinite(radar->azimuth), "a place");
        require(std::isfinite(radar->speed.value_or(0.0)), "a speed");
        require(std::isfinite(radar->radialSpeed.value_or(0.0)), "a radial speed");
    } else {
        const Workbench::ImageBox& box = std::get<Workbench::VideoReport>(report).box;
        require(std::isfinite(box.left + box.bottom + box.right + box.top), "a box");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const InputFile place(installation);
    const InputFile log(asText(data, size));
    try {
        const Workbench::ImportedRecording recording =
            Workbench::importMcap({log.path(), place.path(), {}, {}});
        std::map<Veskar::Source, double> last;
        for (const Workbench::SensorFrame& frame : recording.frames) {
            const auto [before, isFirst] = last.try_emplace(frame.source, frame.time);
            require(isFirst || frame.time > before->second, "the frames of a sensor ascend");
            require(frame.received >= frame.time, "nothing is received before it is measured");
            before->second = frame.time;
            for (const Workbench::Report& report : frame.tracks) {
                requireFinite(report);
            }
        }
    } catch (const Veskar::Host::InputError& error) {
        require(*error.what() != '\0', "a refusal has a reason");
    }
    return 0;
}
