// SPDX-License-Identifier: Apache-2.0
// JSON schemas of the messages of Foxglove that are exported.
#pragma once

#include "recording/Header.h"

#include <string>

#include <nlohmann/json.hpp>

namespace Workbench {

/// @param name "SceneUpdate", "LocationFixes", "FrameTransforms", "GeoJSON" or "ImageAnnotations"
/// @return the JSON schema of the message, with the members that are written
Json foxgloveSchema(const std::string& name);

}  // namespace Workbench
