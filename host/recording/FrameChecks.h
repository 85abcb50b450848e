// SPDX-License-Identifier: Apache-2.0
// Whether a sensor frame agrees with itself.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/SensorFrame.h>

namespace Veskar::Host::Internal {

/// @param frame a frame
/// @throw InputError when it was received before it was measured
VESKAR_HOST_EXPORT void refuseEarlyArrival(const SensorFrame& frame);

/// @param frame a frame
/// @throw InputError when the top of a box is below its bottom
VESKAR_HOST_EXPORT void refuseBoxesUpsideDown(const SensorFrame& frame);

}  // namespace Veskar::Host::Internal
