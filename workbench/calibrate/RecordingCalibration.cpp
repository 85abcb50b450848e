// SPDX-License-Identifier: Apache-2.0
#include "calibrate/RecordingCalibration.h"

#include "calibrate/CalibrationInput.h"
#include "recording/RecordingWriter.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace Workbench {
namespace {

bool contains(const std::vector<std::string>& list, const std::string& name) {
    return std::find(list.begin(), list.end(), name) != list.end();
}

void refuseUnknown(const std::vector<std::string>& names) {
    const std::vector<std::string> known = calibratedNames();
    for (const std::string& name : names) {
        if (!contains(known, name)) {
            std::string list;
            for (const std::string& one : known) {
                list += (list.empty() ? "" : ", ") + one;
            }
            throw InputError(name, "is none of the values that can be estimated: " + list);
        }
    }
}

FreeParameters askedBy(const CalibrationTask& task) {
    refuseUnknown(task.estimated);
    refuseUnknown(task.held);
    FreeParameters asked{};
    for (const MountingParameter parameter : allParameters()) {
        const ParameterTraits& traits = traitsOf(parameter);
        const bool isAsked = traits.isAskedFor || contains(task.estimated, traits.name);
        asked[static_cast<std::size_t>(parameter)] = isAsked && !contains(task.held, traits.name);
    }
    if (asked[static_cast<std::size_t>(MountingParameter::CameraYaw)] &&
        asked[static_cast<std::size_t>(MountingParameter::RadarYaw)]) {
        throw InputError("radar.yaw",
                         "only the angle between both sensors can be told; hold camera.yaw");
    }
    return asked;
}

std::string installationText(const Installation& installation) {
    RecordingHeader header;
    static_cast<Installation&>(header) = installation;
    header.site.reset();
    return toJsonLine(header);
}

std::string shownName(const std::string& path) {
    return path == "-" ? "<stdin>" : path;
}

}  // namespace

std::vector<std::string> calibratedNames() {
    std::vector<std::string> names;
    for (const MountingParameter parameter : allParameters()) {
        if (!isOfModel(parameter)) {
            names.emplace_back(traitsOf(parameter).name);
        }
    }
    return names;
}

RecordingCalibration calibrateRecordings(const CalibrationTask& task,
                                         const std::function<void(double)>& progress) {
    const FreeParameters asked = askedBy(task);
    std::optional<RecordingHeader> header;
    std::vector<CalibrationScene> scenes;
    for (const std::string& path : task.recordings) {
        CalibrationInput input = readForCalibration(path, progress);
        if (!input.fault.empty()) {
            throw ViolatedConvention(
                shownName(path), InputError(input.fault + "; correct that first (veskar check)"));
        }
        if (!header) {
            header = input.header;
        } else if (installationText(*header) != installationText(input.header)) {
            throw InputError(shownName(path), InputError("states another installation than " +
                                                         shownName(task.recordings.front())));
        }
        scenes.push_back(std::move(input.scene));
    }
    if (!header) {
        throw InputError("no recording to calibrate with");
    }
    RecordingCalibration calibration;
    calibration.result = calibrate(*header, scenes, asked);
    calibration.middle = scenes.front().middle();
    calibration.stated = std::move(*header);
    return calibration;
}

}  // namespace Workbench
