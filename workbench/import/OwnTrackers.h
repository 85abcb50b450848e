// SPDX-License-Identifier: Apache-2.0
// The trackers for sensors that report detections without ids.
#pragma once

#include "recording/Recording.h"
#include "simulate/tracker/SensorTrackers.h"

namespace Workbench {

/// @param radar its noise counts
/// @return the tracker of simulated radars
RadarTracker ownTrackerFor(const RadarSetup& radar);
/// @return the tracker of simulated cameras
VideoTracker ownVideoTracker();

/// States in the header that a sensor was tracked by one of them.
/// @param header of the recording
/// @param sensor "radar" or "camera"
void noteOwnTracker(RecordingHeader& header, const char* sensor);

}  // namespace Workbench
