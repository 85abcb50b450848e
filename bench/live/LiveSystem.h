// SPDX-License-Identifier: Apache-2.0
// A broker, sensors and a `veskar run` between them.
#pragma once

#include <veskar-host/Installation.h>

#include "live/Viewers.h"
#include "live/Walkers.h"
#include "live/onvif/SensorScene.h"
#include "live/support/Broker.h"
#include "live/transport/EventLoop.h"
#include "live/transport/Faults.h"
#include "live/transport/MqttClient.h"
#include "live/transport/MqttInput.h"
#include "live/transport/MqttOutput.h"
#include "support/TemporaryDirectory.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include <sys/types.h>

namespace VeskarBench {

/// Runs the program with ONVIF scene descriptions in and JSON Lines out, over a real mosquitto on
/// the loopback interface.
class LiveSystem {
public:
    using Clock = Veskar::Live::EventLoop::Clock;

    /// Returns when the program and the broker are there.
    /// @param walkers in front of the sensors
    /// @param viewers of its live view; 0: it has none
    explicit LiveSystem(Walkers walkers, std::size_t viewers = 0);
    ~LiveSystem();
    LiveSystem(const LiveSystem&) = delete;
    LiveSystem& operator=(const LiveSystem&) = delete;

    /// Starts the program again, and returns at once.
    void restart();
    /// Publishes what a sensor sees now.
    /// @param source the sensor
    /// @return when that was handed to the broker
    Clock::time_point publish(Veskar::Source source);
    /// @param source a sensor
    /// @param latest time to wait until
    /// @return when the next fused frame of it came, or latest
    Clock::time_point awaitFused(Veskar::Source source, Clock::time_point latest);
    /// Lets time pass.
    void waitUntil(Clock::time_point time);
    /// @param key a number of the status document, which is awaited
    /// @return its value
    double status(const std::string& key);

private:
    void start();
    void stop();

    const Walkers walkers_;
    const VeskarTest::TemporaryDirectory directory_;
    VeskarTest::Broker broker_;
    pid_t program_ = -1;
    Veskar::Live::EventLoop loop_;
    Veskar::Live::Faults faults_;
    Veskar::Live::MqttClient client_;
    Veskar::Live::MqttOutput camera_;
    Veskar::Live::MqttOutput radar_;
    std::uint64_t fusedVideo_ = 0;
    std::uint64_t fusedRadar_ = 0;
    std::optional<std::string> status_;
    Veskar::Live::MqttInput fused_;
    Veskar::Live::MqttInput statuses_;
    Veskar::Live::SensorScene cameraScene_;
    Veskar::Live::SensorScene radarScene_;
    const Clock::time_point start_ = Clock::now();
    std::optional<Viewers> viewers_;
};

}  // namespace VeskarBench
