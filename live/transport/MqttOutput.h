// SPDX-License-Identifier: Apache-2.0
// Messages to topics of an MQTT broker.
#pragma once

#include "live/transport/BoundedQueue.h"
#include "live/transport/MqttClient.h"
#include "live/transport/Output.h"

namespace Veskar::Live {

/// Publishes messages. While the broker is away, or slower than the messages come, the oldest are
/// dropped.
class MqttOutput : public Output, private MqttClient::Publisher {
public:
    /// How messages are published.
    struct Options {
        std::string topic;
        int qos = 0;
        bool isRetained = false;  ///< the broker keeps the last one for later subscribers
    };

    /// @param client of the broker
    /// @param options how messages are published
    /// @param limits of what waits
    /// @throw InputError when the topic is none
    MqttOutput(MqttClient& client, Options options, QueueLimits limits);
    ~MqttOutput() override;
    MqttOutput(const MqttOutput&) = delete;
    MqttOutput& operator=(const MqttOutput&) = delete;

    void send(std::string_view message) override;
    /// Publishes to another topic than that of the options.
    /// @param topic without wildcards
    /// @param message as for send
    void sendTo(const std::string& topic, std::string_view message);
    OutputCounters counters() const override;

private:
    std::optional<MqttPublication> take() override;
    void putBack(MqttPublication publication) override;
    void settle(bool isTaken) override;

    MqttClient& client_;
    Options options_;
    BoundedQueue<MqttPublication> queue_;
    OutputCounters counters_;
};

}  // namespace Veskar::Live
