// SPDX-License-Identifier: Apache-2.0
// Checks a camera.
#pragma once

#include "check/Rules.h"

#include <string>

namespace Workbench {

/// @param usualPitch pitch of a usual mounting, degrees
/// @return the rules for the members of the rotation of a sensor
Rules rotationRules(const Range& usualPitch);

/// @param camera an object for Veskar::Camera::parse
/// @param path its place in the document, "" for the root
/// @param real Wanted::Real where the library reads the camera and does not accept integers;
///             Wanted::Number in recordings and scenarios
/// @param findings receives all faults and suspicious values
void checkCamera(const LocatedValue& camera, const std::string& path, Wanted real,
                 Findings& findings);

}  // namespace Workbench
