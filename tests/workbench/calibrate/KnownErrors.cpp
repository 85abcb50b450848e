// SPDX-License-Identifier: Apache-2.0
#include "KnownErrors.h"

#include "SourceDirectory.h"
#include "simulate/Simulation.h"

#include <cmath>
#include <variant>

namespace VeskarTest {

using namespace Workbench;

CalibrationScene KnownErrors::scene() const {
    CalibrationScene scene;
    for (const SensorFrame& frame : frames) {
        scene.sightings.add(frame);
    }
    scene.moments = momentsOf(scene.sightings);
    return scene;
}

KnownErrors simulated(const std::string& scenario, double seconds, const ScenarioChange& change) {
    Scenario description =
        readScenario(std::string(VESKAR_SOURCE_DIR) + "/config/scenarios/" + scenario + ".json");
    description.duration = seconds;
    change(description);
    Simulation simulation(description, 41);
    KnownErrors result{simulation.header(), {}};
    simulation.run(
        [&](const RecordingLine& line) {
            if (const auto* frame = std::get_if<SensorFrame>(&line)) {
                result.frames.push_back(*frame);
            }
        },
        [](double) {});
    return result;
}

double errorOf(const CalibrationResult& result, MountingParameter parameter, double truth) {
    return std::abs(result.of(parameter).value - truth);
}

Workbench::Installation perimeterInstallation() {
    const KnownErrors perimeter = simulated("perimeter", 1.0, [](Scenario&) {});
    return static_cast<const Workbench::Installation&>(perimeter.header);
}

FreeParameters usualParameters() {
    FreeParameters usual{};
    for (const MountingParameter parameter : allParameters()) {
        usual[static_cast<std::size_t>(parameter)] = traitsOf(parameter).isAskedFor;
    }
    return usual;
}

}  // namespace VeskarTest
