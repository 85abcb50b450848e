// SPDX-License-Identifier: Apache-2.0
// The answer of a calibration as text and as JSON.
#pragma once

#include "calibrate/Calibration.h"

#include <string>

#include <nlohmann/json_fwd.hpp>

namespace Workbench {

/// @param stated the installation as stated
/// @param result the answer
/// @return lines for people
std::string toText(const Installation& stated, const CalibrationResult& result);

/// @param stated the installation as stated
/// @param result the answer
/// @return a JSON document for scripts
nlohmann::ordered_json toJson(const Installation& stated, const CalibrationResult& result);

/// @param stated the installation as stated
/// @param result the answer
/// @return the same as text, with line end
std::string toJsonText(const Installation& stated, const CalibrationResult& result);

}  // namespace Workbench
