// SPDX-License-Identifier: Apache-2.0
#include "calibrate/CalibrationInput.h"

#include "check/Conventions.h"
#include "recording/ReadAhead.h"
#include "recording/RecordingReader.h"

#include <variant>

namespace Workbench {
namespace {

/// Fewer boxes, such as the false ones of an empty scene, tell no convention.
constexpr std::uint64_t leastBoxes = 100;

/// @return the first violation that makes positions wrong, other than that of the height, which is
///         estimated; or nothing
std::string violationOf(const Conventions& conventions) {
    if (conventions.agreement().asked() < leastBoxes) {
        return "";
    }
    for (const Convention& convention : conventions.found()) {
        if (convention.misplaces && convention.name != "camera-height") {
            return convention.finding.key + " " + convention.finding.message;
        }
    }
    return "";
}

}  // namespace

CalibrationInput readForCalibration(const std::string& path,
                                    const std::function<void(double)>& progress) {
    RecordingReader reader(path, TruthLines::Skip);
    CalibrationInput input;
    input.header = reader.header();
    Conventions conventions(input.header);
    ReadAhead lines(reader);
    while (const auto line = lines.next()) {
        if (const auto* frame = std::get_if<SensorFrame>(&*line)) {
            conventions.add(*frame);
            input.scene.sightings.add(*frame);
        }
        progress(lines.fractionRead());
    }
    input.fault = violationOf(conventions);
    if (input.fault.empty()) {
        input.scene.moments = momentsOf(input.scene.sightings);
    }
    return input;
}

}  // namespace Workbench
