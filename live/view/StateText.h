// SPDX-License-Identifier: Apache-2.0
// What viewers get.
#pragma once

#include "live/view/ViewMailbox.h"

#include <cstdint>
#include <string>

namespace Veskar::Live {

/// @param state what is shown
/// @return {"fused": F, "video": F, "radar": F} on one line, without line end. F is a frame as in
///         files of fused tracks (docs/recording-format.md); those of the sensors hold their tracks
///         as if each alone were a system track, and are null before the first one.
std::string textOf(const ViewState& state);

/// @param number of the picture, which grows
/// @param picture what the camera shows
/// @return {"number": N, "time": T}, with the time as frames have it; or, without a picture,
///         {"number": N, "fault": "why"}
std::string textOf(std::uint64_t number, const CameraPicture& picture);

/// @param name of the event
/// @param data its text, on one line
/// @return the event as a browser's EventSource reads it
std::string eventOf(const char* name, const std::string& data);

}  // namespace Veskar::Live
