// SPDX-License-Identifier: Apache-2.0
// One sensor: from its messages to frames with times of the host.
#pragma once

#include "live/clock/SensorClock.h"
#include "live/service/FrameDecoder.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace Veskar::Live {

/// Decodes the messages of a sensor and gives its frames times of the steady clock.
class SensorFeed {
public:
    using Sink = std::function<void(Host::SensorFrame)>;
    using Utc = std::chrono::system_clock::time_point;

    /// @param settings of the sensor
    /// @param installation where it is
    /// @param faults receives what is refused; must outlive the feed
    /// @param sink receives the frames, with their time
    SensorFeed(const SensorSettings& settings, const Host::Installation& installation,
               Faults& faults, Sink sink);

    /// @param message of the sensor
    /// @param utc when it arrived, by the system clock
    void receive(const Message& message, Utc utc);
    /// @param channel of its messages that has ended, as a connection
    void forget(const std::string& channel) { decoder_->forget(channel); }

    /// @return the sensor's name
    const std::string& name() const { return name_; }
    /// @return what its messages stated and the fusion has no place for; null: nothing ever
    const LeftOut* leftOut() const { return decoder_->leftOut(); }
    /// @return what its clock knows
    const SensorClock::Status& clock() const { return clock_.status(); }
    /// @return messages that could not be read
    std::uint64_t refused() const { return refused_; }
    /// @return frames in the messages
    std::uint64_t frames() const { return frames_; }

private:
    std::string name_;
    Faults& faults_;
    Sink sink_;
    std::unique_ptr<FrameDecoder> decoder_;
    SensorClock clock_;
    std::uint64_t refused_ = 0;
    std::uint64_t frames_ = 0;
};

}  // namespace Veskar::Live
