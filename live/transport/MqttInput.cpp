// SPDX-License-Identifier: Apache-2.0
#include "live/transport/MqttInput.h"

#include <veskar-host/InputError.h>

#include <utility>

#include <mosquitto.h>

namespace Veskar::Live {

MqttInput::MqttInput(MqttClient& client, const std::string& topics, int quality, Receiver receiver,
                     std::size_t longest)
    : client_(client), receiver_(std::move(receiver)), longest_(longest) {
    if (topics.empty() || mosquitto_sub_topic_check(topics.c_str()) != MOSQ_ERR_SUCCESS) {
        throw Host::InputError("\"" + topics + "\" is no topic filter");
    }
    filter = topics;
    qos = quality;
    client_.add(*this);
}

MqttInput::~MqttInput() {
    client_.remove(*this);
}

void MqttInput::receive(const MqttArrival& arrival) {
    if (arrival.isRetained) {
        ++counters_.retained;
    } else if (arrival.payload.size() > longest_) {
        ++counters_.tooLong;
        client_.faults().report("input " + filter + ": dropped a message",
                                "longer than " + std::to_string(longest_) + " bytes");
    } else {
        ++counters_.messages;
        counters_.bytes += arrival.payload.size();
        receiver_({arrival.topic, arrival.payload, EventLoop::Clock::now()});
    }
}

}  // namespace Veskar::Live
