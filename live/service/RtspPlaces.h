// SPDX-License-Identifier: Apache-2.0
// RTSP servers, where the program can read them.
#pragma once

#include "live/service/Places.h"

#include <memory>
#include <string>

namespace Veskar::Live {

/// @return why the program cannot read RTSP; empty when it can
std::string rtspMissing();

/// @param name of the input
/// @param place the server
/// @param loop runs the input
/// @param faults receives the faults of the input
/// @param receiver receives the messages
/// @return the input
/// @throw InputError when it cannot be opened
std::unique_ptr<Input> makeRtspInput(const std::string& name, const RtspPlace& place,
                                     EventLoop& loop, Faults& faults, Receiver receiver);

}  // namespace Veskar::Live
