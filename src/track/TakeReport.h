// SPDX-License-Identifier: Apache-2.0
// A report enters a system track whose new estimate is known already.
#pragma once

#include <veskar/SystemTrack.h>

#include "track/EstimateChange.h"

#include <memory>

namespace Veskar {

/// SystemTrack::updateState for callers that have computed several estimates at once.
///
/// @param system the system track
/// @param track the report
/// @param fused the estimate after the change that adds the report and removes the one that is held
///              under its source and id
void takeReport(SystemTrack& system, std::shared_ptr<Track> track, const FusedEstimate& fused);

}  // namespace Veskar
