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
    double time = 0.0;               ///< time of the estimates, s
    double received = 0.0;           ///< when the frame was handed to the fusion, host's clock, s
    Source source = VideoObject;     ///< sensor of the frame
    std::vector<FusedTrack> tracks;  ///< oldest first
};

/// The frame as a line of JSON Lines; docs/recording-format.md describes it.
///
/// Numbers are rounded as in recordings: times and image positions to 1e-6, metres to 1e-3. Values
/// that are not finite become null; unknown values are left out.
///
/// @param frame the tracks after a frame
/// @return its line, with line end
VESKAR_HOST_EXPORT std::string toJsonLine(const FusedFrame& frame);

}  // namespace Veskar::Host
