// SPDX-License-Identifier: Apache-2.0
// The system tracks after a frame.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/FusedTrack.h>

#include <string>
#include <vector>

namespace Veskar::Host {

/// The system tracks after a frame.
struct FusedFrame {
    double time = 0.0;               ///< of the estimates, s
    double received = 0.0;           ///< the host's clock, s
    Source source = VideoObject;     ///< whose frame it was
    std::vector<FusedTrack> tracks;  ///< oldest first
};

/// The frame as a line of JSON Lines; docs/recording-format.md describes it.
///
/// Numbers are rounded as in recordings: times and image positions to 1e-6, metres to 1e-3. What is
/// not finite is null, what is not known is left out.
///
/// @param frame the tracks after a frame
/// @return its line, with line end
VESKAR_HOST_EXPORT std::string toJsonLine(const FusedFrame& frame);

}  // namespace Veskar::Host
