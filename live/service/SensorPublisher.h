// SPDX-License-Identifier: Apache-2.0
// Stands in for the sensors of a run.json.
#pragma once

#include <veskar-host/SensorFrame.h>

#include "live/onvif/SensorScene.h"
#include "live/service/Places.h"
#include "live/service/RunConfiguration.h"
#include "live/transport/EventLoop.h"
#include "live/transport/Faults.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace Veskar::Live {

/// @param filter of a subscription
/// @return a topic that it matches, as "gate/onvif-mj/VideoAnalytics/main/objects" for
///         "gate/onvif-mj/VideoAnalytics/#"
std::string topicFor(const std::string& filter);

/// Publishes the frames of a recording or a simulation in real time, as the sensors would that
/// `veskar run` expects with the same configuration: to the brokers and topics of its inputs, in
/// their formats, stamped in UTC. What ONVIF has no term for is lost, see SensorScene.
class SensorPublisher {
public:
    /// @param run the configuration of `veskar run`; must outlive this
    /// @param installation the sensors of the frames
    /// @param faults receives the faults of the brokers; must outlive this
    /// @param keepOn called often while this waits; what it throws ends the waiting
    /// @throw InputError when an input is not a topic of a broker
    SensorPublisher(const RunConfiguration& run, const Host::Installation& installation,
                    Faults& faults, std::function<void()> keepOn);

    /// Waits until the frame is due, and publishes it. The first one is due when the brokers are
    /// there; later ones follow as they were received.
    /// @param frame the next one; of a sensor that the configuration does not have: ignored
    void publish(const Host::SensorFrame& frame);
    /// Waits until the brokers have all that was published, two seconds at most.
    void finish();

private:
    struct Sensor {
        SensorFormat format;
        SensorScene scene;
        std::unique_ptr<Output> output;
    };
    using Clock = EventLoop::Clock;

    void waitUntil(Clock::time_point time);
    void awaitBrokers();

    Faults& faults_;
    std::function<void()> keepOn_;
    EventLoop loop_;
    Brokers brokers_;
    std::map<Source, Sensor> sensors_;
    std::optional<Clock::time_point> start_;  ///< time 0 of the frames
    UtcTime utcAtStart_{};
};

}  // namespace Veskar::Live
