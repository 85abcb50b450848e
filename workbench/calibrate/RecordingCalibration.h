// SPDX-License-Identifier: Apache-2.0
// From recordings to the answer: what the program and the Python package do.
#pragma once

#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "calibrate/Calibration.h"

#include <functional>
#include <string>
#include <vector>

namespace Workbench {

/// What to estimate from what.
struct CalibrationTask {
    std::vector<std::string> recordings;  ///< paths of recordings of one installation, or "-"
    std::vector<std::string> estimated;   ///< names of further values to estimate
    std::vector<std::string> held;        ///< names of values to take as stated
};

/// The answer, with what it refers to.
struct RecordingCalibration {
    RecordingHeader stated;  ///< of the first recording
    CalibrationResult result;
    double middle = 0.0;  ///< time of the first recording to which a lag refers, s
};

/// A recording violates a convention of the format, which must be corrected first.
class ViolatedConvention : public InputError {
public:
    using InputError::InputError;
};

/// @return the names of the values that can be estimated
std::vector<std::string> calibratedNames();

/// @param task recordings and values
/// @param progress called with the share that has been read of each recording, 0 to 1; negative
///                 when unknown
/// @return the answer
/// @throw InputError when a name is unknown, a recording cannot be read, recordings state different
///        installations, or values are asked for that cannot be told from each other
/// @throw ViolatedConvention see there
RecordingCalibration calibrateRecordings(const CalibrationTask& task,
                                         const std::function<void(double)>& progress);

}  // namespace Workbench
