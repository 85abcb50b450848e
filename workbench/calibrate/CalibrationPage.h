// SPDX-License-Identifier: Apache-2.0
// The answer of a calibration for its page.
#pragma once

#include "calibrate/Calibration.h"
#include "report/Report.h"

namespace Workbench {

/// @param header of the recordings
/// @param result the answer
/// @return what the page shows: the answer as toJson has it, and the errors of at most 4000 pairs
Json calibrationPageData(const RecordingHeader& header, const CalibrationResult& result);

}  // namespace Workbench
