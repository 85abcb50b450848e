// SPDX-License-Identifier: Apache-2.0
// The pipeline's options in replays.
#pragma once

#include <veskar-host/FusionPipeline.h>

#include "HostLibrary.h"

namespace Workbench {

/// Offset of the fusion's clock: times of recordings begin near 0, those of a running device do
/// not.
constexpr double replayUptime = 100.0;

/// @return the options in which a replay differs from a device
inline FusionPipeline::Options replayOptions() {
    FusionPipeline::Options options;
    options.uptime = replayUptime;
    options.asksForPosition = false;
    return options;
}

}  // namespace Workbench
