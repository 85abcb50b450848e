// SPDX-License-Identifier: Apache-2.0
// Writes a recording line by line.
#pragma once

#include "io/OutputFile.h"
#include "recording/Recording.h"

#include <string>

namespace Workbench {

/// @param header a header
/// @return its line, with line end
std::string lineOf(const RecordingHeader& header);
/// @param frame a frame
/// @return its line, with line end. Numbers are rounded far below any sensor's resolution (times
///         and image positions to 1e-6, metres to 1e-3 or finer), so that the bytes do not depend
///         on the last digit of a mathematics library.
std::string lineOf(const SensorFrame& frame);
/// @param frame the truth at one time
/// @return its line, with line end
std::string lineOf(const TruthFrame& frame);

}  // namespace Workbench
