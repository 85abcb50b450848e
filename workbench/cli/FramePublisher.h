// SPDX-License-Identifier: Apache-2.0
// Frames for a live host.
#pragma once

#include <veskar-host/Installation.h>
#include <veskar-host/SensorFrame.h>

#include "HostLibrary.h"

#include <memory>
#include <string>

namespace Workbench {

/// Passes frames on in real time. Live::SensorPublisher does it, where the program has it.
class FramePublisher {
public:
    virtual ~FramePublisher() = default;
    /// @param frame passed on when it is due
    virtual void publish(const SensorFrame& frame) = 0;
    /// Waits until all has been passed on, for a moment at most.
    virtual void finish() = 0;
};

/// @param run path of the run.json whose sensors the frames stand in for
/// @param installation the sensors of the frames
/// @return what publishes the frames
/// @throw InputError when that is not possible
std::unique_ptr<FramePublisher> publisherFor(const std::string& run,
                                             const Veskar::Host::Installation& installation);

}  // namespace Workbench
