// SPDX-License-Identifier: Apache-2.0
// The truth in the form of tracks, so that it is exported like them.
#pragma once

#include <veskar-host/FusedFrame.h>
#include <veskar-host/HostAdapter.h>

#include "recording/Recording.h"

namespace Workbench {

/// @param truth the objects at one time
/// @param adapter of the recording, for image and geographic positions
/// @return each object as a confirmed track at its reference point, received at its own time and of
///         no sensor; what a truth does not state (covariance, age) is not finite, and neither are
///         box and image position where the camera does not see it, or its size is not known
FusedFrame readTruth(const TruthFrame& truth, const HostAdapter& adapter);

}  // namespace Workbench
