// SPDX-License-Identifier: Apache-2.0
#include "live/transport/MqttOutput.h"

#include <veskar-host/InputError.h>

#include <utility>

#include <mosquitto.h>

namespace Veskar::Live {

MqttOutput::MqttOutput(MqttClient& client, Options options, QueueLimits limits)
    : client_(client), options_(std::move(options)), queue_(limits) {
    if (options_.topic.empty() ||
        mosquitto_pub_topic_check(options_.topic.c_str()) != MOSQ_ERR_SUCCESS) {
        throw Host::InputError("\"" + options_.topic + "\" is no topic");
    }
    client_.add(*this);
}

MqttOutput::~MqttOutput() {
    client_.remove(*this);
}

void MqttOutput::send(std::string_view message) {
    sendTo(options_.topic, message);
}

void MqttOutput::sendTo(const std::string& topic, std::string_view message) {
    ++counters_.accepted;
    queue_.push({topic, std::string(message), options_.qos, options_.isRetained}, message.size());
    client_.pump();
}

std::optional<MqttPublication> MqttOutput::take() {
    if (queue_.isEmpty()) {
        return std::nullopt;
    }
    return queue_.pop();
}

void MqttOutput::putBack(MqttPublication publication) {
    const std::size_t bytes = publication.payload.size();
    queue_.putBack(std::move(publication), bytes);
}

void MqttOutput::settle(bool isTaken) {
    ++(isTaken ? counters_.written : counters_.failed);
}

OutputCounters MqttOutput::counters() const {
    OutputCounters counters = counters_;
    counters.dropped = queue_.dropped();
    counters.waiting = queue_.size() + client_.underWay(*this);
    counters.waitingBytes = queue_.bytes();
    counters.readers = client_.counters().isConnected ? 1 : 0;
    return counters;
}

}  // namespace Veskar::Live
