// SPDX-License-Identifier: Apache-2.0
// How a broker is reached.
#pragma once

#include "live/transport/EventLoop.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace Veskar::Live {

/// Encryption. The broker's certificate must be signed by a known authority and name the host.
struct MqttTls {
    std::string authorities = "/etc/ssl/certs";  ///< PEM file, or directory as of c_rehash
    std::string certificate;  ///< PEM file by which the client shows who it is; empty: none
    std::string key;          ///< its PEM file, a secret without passphrase
};

/// A retained message that tells others whether this client is there. The broker publishes that it
/// is not, as its last will, when the connection breaks off.
struct MqttAvailability {
    std::string topic;
    std::string online = "online";
    std::string offline = "offline";
};

/// Versions of the protocol.
enum class MqttProtocol {
    Newest,  ///< 5, and 3.1.1 with brokers that do not know it
    V5,
    V311,
};

/// How a broker is reached.
struct MqttOptions {
    std::string host;         ///< name or address
    std::uint16_t port = 0;   ///< 0: 1883, with TLS 8883
    std::string clientId;     ///< empty: a random one
    std::string credentials;  ///< secret with the user in the first line and the password in the
                              ///< second; empty: none
    std::optional<MqttTls> tls;
    std::optional<MqttAvailability> availability;
    MqttProtocol protocol = MqttProtocol::Newest;
    std::chrono::seconds keepAlive{15};  ///< longest silence before the other side counts as gone
    std::chrono::seconds answerWithin{10};                            ///< of an attempt to connect
    EventLoop::Duration firstRetry = std::chrono::milliseconds(250);  ///< wait after a failure
    EventLoop::Duration longestRetry = std::chrono::seconds(30);      ///< after many of them
};

}  // namespace Veskar::Live
