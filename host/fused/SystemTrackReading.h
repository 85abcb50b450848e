// SPDX-License-Identifier: Apache-2.0
// What a host reads from a system track.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/FusedTrack.h>
#include <veskar-host/HostAdapter.h>
#include <veskar/SystemTrack.h>

namespace Veskar::Host::Internal {

/// Reads a system track and finds out where it is on the ground and how it moves there.
///
/// The fusion does not move the range between reports; it is moved here by the range rate over the
/// age of the radar's report (of the camera's, without radar).
///
/// @param track a system track
/// @param adapter the adapter that made its sensor tracks
/// @return what a user wants to know
VESKAR_HOST_EXPORT FusedTrack readTrack(const SystemTrack& track, const HostAdapter& adapter);

}  // namespace Veskar::Host::Internal
