// SPDX-License-Identifier: Apache-2.0
// Fields are named like the keys of "veskarHost" in a configuration file.
#include <veskar-host/HostParameters.h>
#include <veskar-host/InputError.h>
#include <veskar/Config.h>

#include "Record.h"
#include "io/TextFile.h"

namespace Bindings {

void bindHostParameters(py::module_& module) {
    using Veskar::Host::HostParameters;
    Record<HostParameters> record(module, "HostParameters",
                                  "Parameters of the adapter and of the sensor supervision.\n\n"
                                  "Fields have the names of the keys in \"veskarHost\", see "
                                  "docs/host-adapter.md.");
    record
        .field("radarGain", &HostParameters::radarGain,
               "of a confirmed radar track with a current detection")
        .field("videoGain", &HostParameters::videoGain,
               "of a confirmed video track with a current detection")
        .field("tentativeGain", &HostParameters::tentativeGain,
               "of a track that its sensor has not confirmed yet")
        .field("coastingGain", &HostParameters::coastingGain, "of a coasting track")
        .field("predictedGain", &HostParameters::predictedGain,
               "of a report that the host predicted")
        .field("radarFloorStd", &HostParameters::radarFloorStd,
               "noise added to a projected radar track, in the order of the state")
        .field("pseudoRangeStdPerRange", &HostParameters::pseudoRangeStdPerRange,
               "see docs/host-adapter.md")
        .field("rangeStdPerRate", &HostParameters::rangeStdPerRate, "see docs/host-adapter.md")
        .field("groundSlopeStd", &HostParameters::groundSlopeStd, "see docs/host-adapter.md")
        .field("cutBoxStd", &HostParameters::cutBoxStd, "see docs/host-adapter.md")
        .field("unknownImageVelocityStd", &HostParameters::unknownImageVelocityStd,
               "of a video track without velocity, 1/s")
        .field("unknownTangentialSpeedStd", &HostParameters::unknownTangentialSpeedStd,
               "of a radar track with a radial speed only, m/s")
        .field("predictedAccelerationStd", &HostParameters::predictedAccelerationStd,
               "process noise of the host's predictions, m/s^2")
        .field("humanSpeedLimit", &HostParameters::humanSpeedLimit,
               "unclassified radar tracks below are human, m/s")
        .field("classFromSpeedProbability", &HostParameters::classFromSpeedProbability,
               "probability of a class derived from the speed")
        .field("videoSilence", &HostParameters::videoSilence, "see docs/host-adapter.md")
        .field("slowInterval", &HostParameters::slowInterval, "see docs/host-adapter.md")
        .field("predictionInterval", &HostParameters::predictionInterval,
               "see docs/host-adapter.md")
        .field("nominalInterval", &HostParameters::nominalInterval, "see docs/host-adapter.md")
        .field("belief", &HostParameters::belief, "see docs/host-adapter.md")
        .field("longestBelief", &HostParameters::longestBelief, "see docs/host-adapter.md")
        .field("longestGap", &HostParameters::longestGap, "see docs/host-adapter.md");
    record.type()
        .def_static(
            "defaults", [] { return HostParameters::fromConfig(Veskar::Config::defaultsText()); },
            "Those of the shipped configuration.")
        .def_static(
            "load",
            [](const py::object& path) {
                const std::string file = pathOf(path);
                const std::string text = Workbench::readText(file);
                try {
                    return HostParameters::fromConfig(text);
                } catch (const Veskar::Host::InputError& error) {
                    throw Veskar::Host::InputError(file, error);
                }
            },
            py::arg("path"), "Those of a configuration file.");
}

}  // namespace Bindings
