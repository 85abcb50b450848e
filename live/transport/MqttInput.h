// SPDX-License-Identifier: Apache-2.0
// Messages of the topics of an MQTT broker.
#pragma once

#include "live/transport/MqttClient.h"

namespace Veskar::Live {

/// The messages of a subscription; their channel is the topic. What the broker has kept from before
/// is dropped: a report of a sensor is old by then. When the filters of two inputs match a topic,
/// both receive its messages.
class MqttInput : private MqttClient::Subscriber {
public:
    /// @param client of the broker
    /// @param topics filter: a topic, with wildcards "+" and "#"
    /// @param quality QoS, 0 to 2
    /// @param receiver receives the messages
    /// @param longest bytes of a message
    /// @throw InputError when the filter is none
    MqttInput(MqttClient& client, const std::string& topics, int quality, Receiver receiver,
              std::size_t longest = longestMessage);
    ~MqttInput() override;
    MqttInput(const MqttInput&) = delete;
    MqttInput& operator=(const MqttInput&) = delete;

    /// @return what was counted; of publishers nothing
    const InputCounters& counters() const { return counters_; }

private:
    void receive(const MqttArrival& arrival) override;

    MqttClient& client_;
    Receiver receiver_;
    std::size_t longest_;
    InputCounters counters_;
};

}  // namespace Veskar::Live
