// SPDX-License-Identifier: Apache-2.0
// Fused tracks for people at a terminal.
#pragma once

#include <veskar-host/FusedFrame.h>

#include "live/onvif/UtcTime.h"

#include <string>

namespace Veskar::Live {

/// @param frame the tracks
/// @param utc time of the frame
/// @return a line per track, the last one without line end: time of day (UTC), id, class and its
///         probability, position in the device frame, speed, direction clockwise from forward, the
///         sensors' tracks. "-" stands for what is not known.
std::string textOf(const Host::FusedFrame& frame, UtcTime utc);

}  // namespace Veskar::Live
