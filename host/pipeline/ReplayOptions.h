// SPDX-License-Identifier: Apache-2.0
// The pipeline's options wherever the results of a recording must come out alike.
#pragma once

#include <veskar-host/FusionPipeline.h>

namespace Veskar::Host::Internal {

/// Offset of the fusion's clock: times of recordings begin near 0, those of a running device do
/// not. Adding it rounds times, so that whoever wants the results of a replay has to add it, too.
constexpr double replayUptime = 100.0;

/// @return the options of replays, and of live hosts whose recordings replay to the same results
inline FusionPipeline::Options replayOptions() {
    FusionPipeline::Options options;
    options.uptime = replayUptime;
    options.asksForPosition = false;
    return options;
}

}  // namespace Veskar::Host::Internal
