// SPDX-License-Identifier: Apache-2.0
// Applies an estimate to headers and frames.
#pragma once

#include "calibrate/Placement.h"

#include <functional>
#include <string>

namespace Workbench {

/// @param header of a recording
/// @param correction errors of its installation
/// @return the header with the corrected installation
RecordingHeader corrected(RecordingHeader header, const Placement& correction);

/// Writes a copy of a recording with the corrected installation, radar time stamps without lag, and
/// scaled azimuths. Times of arrival are raised where a stamp would come after its arrival.
///
/// @param recording path
/// @param correction errors of the recording
/// @param middle time in the recording to which the lag refers, s
/// @param write receives the lines
/// @throw InputError as RecordingReader
void applyCorrection(const std::string& recording, const Placement& correction, double middle,
                     const std::function<void(const std::string&)>& write);

}  // namespace Workbench
