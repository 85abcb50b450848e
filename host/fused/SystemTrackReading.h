// SPDX-License-Identifier: Apache-2.0
// Conversion of system tracks to fused tracks.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/FusedTrack.h>
#include <veskar-host/HostAdapter.h>
#include <veskar/SystemTrack.h>

namespace Veskar::Host::Internal {

/// Converts a system track and computes its position and velocity on the ground.
///
/// The fusion does not predict the range between reports. Here it is moved by the range rate times
/// the age of the radar's estimate, or of the camera's without radar.
///
/// @param track a system track
/// @param adapter the adapter that converted its sensor tracks
/// @return the fused track
VESKAR_HOST_EXPORT FusedTrack readTrack(const SystemTrack& track, const HostAdapter& adapter);

}  // namespace Veskar::Host::Internal
