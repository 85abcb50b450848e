// SPDX-License-Identifier: Apache-2.0
#include "live/service/SensorPublisher.h"

#include <veskar-host/InputError.h>

#include "live/onvif/SceneCodec.h"

#include <algorithm>
#include <utility>
#include <variant>

namespace Veskar::Live {
namespace {

/// How long the loop may run before the caller is asked again.
constexpr EventLoop::Duration patience = std::chrono::milliseconds(100);

EventLoop::Duration asDuration(double seconds) {
    return std::chrono::duration_cast<EventLoop::Duration>(std::chrono::duration<double>(seconds));
}

/// A device of its own for the broker.
MqttOptions asDevice(MqttOptions options) {
    options.clientId.clear();
    options.availability.reset();
    return options;
}

}  // namespace

std::string topicFor(const std::string& filter) {
    std::string topic;
    for (const char character : filter) {
        if (character == '+') {
            topic += "main";
        } else if (character == '#') {
            topic += "main/objects";
        } else {
            topic += character;
        }
    }
    return topic;
}

SensorPublisher::SensorPublisher(const RunConfiguration& run,
                                 const Host::Installation& installation, Faults& faults,
                                 std::function<void()> keepOn)
    : faults_(faults), keepOn_(std::move(keepOn)) {
    for (const SensorSettings& sensor : run.sensors) {
        const auto* place = std::get_if<BrokerTopic>(&sensor.input);
        if (place == nullptr) {
            throw Host::InputError("the input of sensor " + sensor.name +
                                   " is no topic of a broker, to which frames can be published");
        }
        auto& broker = brokers_[place->broker];
        if (!broker) {
            const auto settings =
                std::find_if(run.brokers.begin(), run.brokers.end(),
                             [&](const auto& one) { return one.name == place->broker; });
            broker = std::make_unique<MqttClient>(loop_, asDevice(settings->options), faults_);
        }
        const BrokerTopic topic{place->broker, topicFor(place->topic), place->qos, false};
        sensors_.insert_or_assign(sensor.source,
                                  Sensor{sensor.format, SensorScene(installation, sensor.name),
                                         makeOutput(sensor.name, topic, loop_, brokers_, faults_)});
    }
}

void SensorPublisher::publish(const Host::SensorFrame& frame) {
    if (!start_) {
        awaitBrokers();
        start_ = Clock::now() - asDuration(frame.received);
        utcAtStart_ = std::chrono::system_clock::now().time_since_epoch() -
                      std::chrono::duration_cast<UtcTime>(asDuration(frame.received));
    }
    waitUntil(*start_ + asDuration(frame.received));
    const auto sensor = sensors_.find(frame.source);
    if (sensor == sensors_.end()) {
        return;
    }
    const UtcTime time = utcAtStart_ + std::chrono::duration_cast<UtcTime>(asDuration(frame.time));
    auto& [format, scene, output] = sensor->second;
    switch (format) {
        case SensorFormat::JsonLines: {
            Host::SensorFrame stamped = frame;
            stamped.time = std::chrono::duration<double>(time).count();
            stamped.received = stamped.time;
            std::string line = toJsonLine(stamped);
            line.pop_back();
            output->send(line);
            break;
        }
        case SensorFormat::OnvifJson:
            output->send(toJson(Scene{scene.describe(frame, time)}));
            break;
        case SensorFormat::OnvifXml:
            output->send(toXml(Scene{scene.describe(frame, time)}));
            break;
    }
}

void SensorPublisher::finish() {
    const auto isDrained = [](const auto& sensor) { return sensor.second.output->isDrained(); };
    const Clock::time_point latest = Clock::now() + std::chrono::seconds(2);
    while (!std::all_of(sensors_.begin(), sensors_.end(), isDrained) && Clock::now() < latest) {
        keepOn_();
        loop_.turn(std::chrono::milliseconds(10));
    }
}

void SensorPublisher::waitUntil(Clock::time_point time) {
    for (auto now = Clock::now(); now < time; now = Clock::now()) {
        keepOn_();
        loop_.turn(std::min(time - now, patience));
    }
}

void SensorPublisher::awaitBrokers() {
    const auto isConnected = [](const auto& broker) {
        return broker.second->counters().isConnected;
    };
    while (!std::all_of(brokers_.begin(), brokers_.end(), isConnected)) {
        keepOn_();
        loop_.turn(patience);
    }
}

}  // namespace Veskar::Live
