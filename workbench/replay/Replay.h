// SPDX-License-Identifier: Apache-2.0
// How a recording is sent through the fusion.
#pragma once

#include <veskar-host/FusionPipeline.h>

#include "HostLibrary.h"

namespace Workbench {

/// Time begins near 0 in recordings. On a device the clock has long been running.
constexpr double replayUptime = 100.0;

/// @return what the pipeline of a replay does otherwise than that of a device
inline FusionPipeline::Options replayOptions() {
    FusionPipeline::Options options;
    options.uptime = replayUptime;
    options.asksForPosition = false;
    return options;
}

}  // namespace Workbench
