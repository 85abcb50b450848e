// SPDX-License-Identifier: Apache-2.0
#include "import/OwnTrackers.h"

#include <string>

#include <fmt/format.h>

namespace Workbench {

RadarTracker ownTrackerFor(const RadarSetup& radar) {
    return {RadarTracker::usualParameters(), radar.rangeStd, radar.azimuthStd};
}

VideoTracker ownVideoTracker() {
    constexpr double boxStd = 0.01;  // of an edge, image units
    return {VideoTracker::usualParameters(), boxStd};
}

void noteOwnTracker(RecordingHeader& header, const char* sensor) {
    std::string& origin = header.origin;
    origin += fmt::format("{}the tracks of the {} are those of veskar's own tracker",
                          origin.empty() ? "" : "; ", sensor);
}

}  // namespace Workbench
