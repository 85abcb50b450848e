// SPDX-License-Identifier: Apache-2.0
// Conversion of sensor frames to fused tracks, so that sensors and fusion can be shown in one view.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/FusedFrame.h>
#include <veskar-host/HostAdapter.h>
#include <veskar-host/SensorFrame.h>

namespace Veskar::Host::Internal {

/// Converts each track of a sensor as if it were a system track that only this sensor feeds.
///
/// The box and the confirmation are those that the sensor reports; the box of a report without one
/// is not finite. `sensors` holds the sensor's track itself.
///
/// @param frame of a sensor
/// @param adapter converts its reports
/// @return the tracks in the order of the reports
VESKAR_HOST_EXPORT FusedFrame readTracks(const SensorFrame& frame, const HostAdapter& adapter);

}  // namespace Veskar::Host::Internal
