// SPDX-License-Identifier: Apache-2.0
// Somebody else at a broker: a sensor, or whoever wants the tracks.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

struct mosquitto;
struct mosquitto_message;

namespace VeskarTest {

/// A message that a peer got.
struct Published {
    std::string topic;
    std::string text;
    int qos;
    bool isRetained;  ///< the broker had it before the peer came
};

/// A client of a broker, made of libmosquitto only. It works within its calls.
class MqttPeer {
public:
    /// How the broker is reached.
    struct Options {
        std::string user;
        std::string password;
        std::string authority;  ///< PEM file; empty: without TLS
        std::string clientId;   ///< empty: a random one
    };

    /// Returns when the broker has accepted it.
    /// @param port of 127.0.0.1
    explicit MqttPeer(std::uint16_t port);
    MqttPeer(std::uint16_t port, const Options& options);
    ~MqttPeer();
    MqttPeer(const MqttPeer&) = delete;
    MqttPeer& operator=(const MqttPeer&) = delete;

    /// Returns when the broker has granted it.
    void subscribe(const std::string& filter, int qos = 2);
    /// Returns when the broker has the message.
    void publish(const std::string& topic, const std::string& text, bool isRetained = false);
    /// Hands a message to the system, as far as that takes it.
    void beginToPublish(const std::string& topic, const std::string& text);
    /// Connects again, and subscribes again, after the broker was away.
    void reconnect();
    /// Takes what comes within a while, or less.
    void turn(std::chrono::milliseconds patience);

    /// @return what came
    const std::vector<Published>& received() const { return received_; }
    /// @return the texts that came on a topic
    std::vector<std::string> on(const std::string& topic) const;

private:
    struct Destroy {
        void operator()(mosquitto* client) const noexcept;
    };
    struct Subscription {
        std::string filter;
        int qos;
    };

    void await(const std::function<bool()>& condition);
    void request(const Subscription& subscription);

    bool isAccepted_ = false;
    int settled_ = 0;  ///< number of the request that the broker has answered last
    std::vector<Subscription> subscriptions_;
    std::vector<Published> received_;
    std::unique_ptr<mosquitto, Destroy> client_;
};

}  // namespace VeskarTest
