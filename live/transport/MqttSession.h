// SPDX-License-Identifier: Apache-2.0
// One connection to an MQTT broker, from the attempt to its end.
#pragma once

#include "live/transport/CallbackThrow.h"
#include "live/transport/EventLoop.h"
#include "live/transport/MqttOptions.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct mosquitto;

namespace Veskar::Live {

/// What is published.
struct MqttPublication {
    std::string topic;
    std::string payload;
    int qos = 0;
    bool isRetained = false;
};

/// What arrives.
struct MqttArrival {
    std::string topic;
    std::string_view payload;
    bool isRetained = false;                 ///< the broker kept it from before the subscription
    std::vector<std::uint32_t> identifiers;  ///< of the subscriptions that it comes for; empty
                                             ///< where the broker does not tell
};

/// libmosquitto on the loop, without its thread, for one clean session. It is made anew for each
/// attempt, so that nothing of one connection lives on in the next: what the broker has not taken
/// is its owner's to send again.
class MqttSession {
public:
    /// How a session ended.
    struct End {
        enum Kind {
            Refused,        ///< by the broker, which says why
            OtherProtocol,  ///< by a broker that does not know the version of the protocol
            HungUp,         ///< by a peer that gave no answer, as some brokers that do not know it
            Failed,         ///< before the broker accepted it
            Lost,           ///< after that
        };
        Kind kind = Failed;
        std::string reason;
    };
    /// What becomes of a publication.
    struct Progress {
        enum Kind {
            Done,          ///< written, or acknowledged where the QoS asks for it
            Pending,       ///< told later
            Refused,       ///< never will be
            Disconnected,  ///< not taken; the session ends
        };
        Kind kind = Pending;
        int number = 0;      ///< by which it is told later
        std::string reason;  ///< of a refusal
    };
    /// What the owner learns, on the loop's thread and never within a call of the session.
    struct Events {
        std::function<void()> accepted;
        /// The last event; it may destroy the session.
        std::function<void(const End&)> ended;
        std::function<void(const MqttArrival&)> message;
        /// Of a pending publication: Done or Refused.
        std::function<void(const Progress&)> published;
        /// A subscription was answered. An empty reason: it was granted.
        std::function<void(int number, const std::string& refusal)> subscribed;
        /// There may be room for publications again.
        std::function<void()> writable;
    };

    /// @throw InputError when a file of the options cannot be used or is open to every user
    static void check(const MqttOptions& options);

    /// Begins to connect.
    /// @param loop runs the session
    /// @param options must outlive it; the host's name must be known
    /// @param isVersion5 protocol 5 instead of 3.1.1
    /// @param events what the owner learns
    /// @throw InputError as check
    MqttSession(EventLoop& loop, const MqttOptions& options, bool isVersion5, Events events);
    ~MqttSession();
    MqttSession(const MqttSession&) = delete;
    MqttSession& operator=(const MqttSession&) = delete;

    /// @return whether the broker has accepted the connection and takes publications at once
    bool canPublish() const;
    /// @param publication given to the system, at once
    Progress publish(const MqttPublication& publication);
    /// @param filter topic, with wildcards
    /// @param qos of the delivery, at most
    /// @param identifier of the subscription, above 0, for those who get its messages
    /// @return the number by which the answer is told
    int subscribe(const std::string& filter, int qos, std::uint32_t identifier);
    void unsubscribe(const std::string& filter);
    /// Leaves orderly, without the last will, as far as that goes without waiting.
    void disconnect();

private:
    struct Library;
    struct Destroy {
        void operator()(mosquitto* client) const noexcept;
    };

    void configure();
    void encrypt(const MqttTls& tls);
    void connect();
    void ready(std::uint32_t events);
    void keepAlive();
    void settle(int result, int fault);
    void end(End::Kind kind, const std::string& reason);
    std::string reasonOf(int result, int fault) const;

    const MqttOptions& options_;
    const bool isVersion5_;
    Events events_;
    std::unique_ptr<mosquitto, Destroy> client_;
    CallbackThrow thrown_;
    std::string log_;  ///< errors that the library explained
    bool isInLibrary_ = false;
    bool isAccepted_ = false;
    bool isAcceptanceTold_ = false;
    bool isHandshaking_ = false;   ///< TLS: writing has to wait for what is read
    bool hasIdentifiers_ = false;  ///< the broker tells which subscriptions a message comes for
    bool hasEnded_ = false;
    End end_;
    std::vector<Progress> progress_;  ///< to tell
    EventLoop::Timer patience_;
    EventLoop::Timer upkeep_;
    EventLoop::Deferral tellEnd_;
    EventLoop::Watch watch_;
};

}  // namespace Veskar::Live
