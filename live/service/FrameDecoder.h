// SPDX-License-Identifier: Apache-2.0
// From the messages of a sensor to its frames.
#pragma once

#include "live/onvif/SceneMapper.h"
#include "live/service/RunConfiguration.h"
#include "live/transport/Message.h"

#include <memory>
#include <string>
#include <vector>

namespace Veskar::Live {

/// Reads the messages of one sensor.
class FrameDecoder {
public:
    /// @param sensor the sensor
    /// @param installation where it is
    /// @return what reads its messages
    static std::unique_ptr<FrameDecoder> make(const SensorSettings& sensor,
                                              const Host::Installation& installation);

    virtual ~FrameDecoder() = default;
    /// @param message a message
    /// @return its frames, stamped by the sensor
    /// @throw InputError what is wrong with it
    virtual std::vector<StampedFrame> decode(const Message& message) = 0;
    /// @param channel of messages that has ended
    virtual void forget([[maybe_unused]] const std::string& channel) {}
    /// @return what the messages stated and the fusion has no place for; null: nothing ever
    virtual const LeftOut* leftOut() { return nullptr; }
};

}  // namespace Veskar::Live
