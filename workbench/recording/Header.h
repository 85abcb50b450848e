// SPDX-License-Identifier: Apache-2.0
// The header of a recording and its parts as JSON documents.
#pragma once

#include "recording/Recording.h"

#include <nlohmann/json_fwd.hpp>

namespace Workbench {

/// JSON whose members keep the order in which they were written.
using Json = nlohmann::ordered_json;

/// @param camera a camera
/// @return the object that Veskar::Camera::parse takes
Json toJson(const CameraSetup& camera);
/// @param header a header
/// @return the first line
Json toJson(const RecordingHeader& header);

}  // namespace Workbench
