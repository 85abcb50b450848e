// SPDX-License-Identifier: Apache-2.0
// What a sensor track's report does to the system track that it supports.
#pragma once

#include <veskar/SystemTrack.h>

#include <memory>

namespace Veskar {

/// Takes over the class and the colours of a report.
void takeLabels(SystemTrack& systemTrack, const Track& report);

/// Fuses a report into the estimate, weighs it in the track probability and takes its labels.
void fuseReport(SystemTrack& systemTrack, const std::shared_ptr<Track>& report);

}  // namespace Veskar
