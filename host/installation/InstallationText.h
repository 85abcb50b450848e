// SPDX-License-Identifier: Apache-2.0
// Writes the parts of an installation as JSON objects on one line, without loss of digits.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/Installation.h>

#include "host/json/LineText.h"

namespace Veskar::Host::Internal {

/// Appends the object that Veskar::Camera::parse takes.
/// @param text receives the object
/// @param camera a camera
VESKAR_HOST_EXPORT void append(LineText& text, const CameraSetup& camera);
/// @param text receives the object
/// @param radar a radar
VESKAR_HOST_EXPORT void append(LineText& text, const RadarSetup& radar);
/// @param text receives the object
/// @param site a site
VESKAR_HOST_EXPORT void append(LineText& text, const Site& site);

}  // namespace Veskar::Host::Internal
