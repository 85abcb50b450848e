// SPDX-License-Identifier: Apache-2.0
// The calibration of an installation; veskar/workbench.py gives it its Python form.
#include "Progress.h"
#include "calibrate/CalibrationText.h"
#include "calibrate/Correction.h"
#include "calibrate/RecordingCalibration.h"
#include "io/OutputFile.h"
#include "recording/RecordingWriter.h"

#include <string>
#include <utility>
#include <vector>

namespace Bindings {
namespace {

py::dict calibrate(std::vector<std::string> recordings, std::vector<std::string> estimated,
                   std::vector<std::string> held, const std::string& header,
                   const std::string& copy, const py::object& listener) {
    Workbench::CalibrationTask task;
    task.recordings = std::move(recordings);
    task.estimated = std::move(estimated);
    task.held = std::move(held);
    Progress progress(listener);
    Workbench::RecordingCalibration calibration;
    {
        const py::gil_scoped_release unlocked;
        calibration = calibrateRecordings(task, [&](double fraction) { progress(fraction); });
        const Workbench::Placement& correction = calibration.result.correction;
        if (!copy.empty()) {
            Workbench::OutputFile output(copy);
            Workbench::applyCorrection(task.recordings.front(), correction, calibration.middle,
                                       [&](const std::string& line) { output.write(line); });
            output.commit();
        }
        if (!header.empty()) {
            Workbench::OutputFile output(header);
            output.write(toJsonLine(Workbench::corrected(calibration.stated, correction)));
            output.commit();
        }
    }
    py::dict answer;
    answer["json"] = toJsonText(calibration.stated, calibration.result);
    answer["text"] = toText(calibration.stated, calibration.result);
    answer["header"] =
        toJsonLine(Workbench::corrected(calibration.stated, calibration.result.correction));
    answer["is_told"] = calibration.result.isTold();
    return answer;
}

}  // namespace

void bindCalibration(py::module_& module) {
    module.def("_calibrate", calibrate);
}

}  // namespace Bindings
