// SPDX-License-Identifier: Apache-2.0
// A lasting connection to an MQTT broker.
#pragma once

#include "live/transport/Backoff.h"
#include "live/transport/Counters.h"
#include "live/transport/Faults.h"
#include "live/transport/Message.h"
#include "live/transport/MqttOptions.h"
#include "live/transport/MqttSession.h"
#include "live/transport/NameLookup.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Veskar::Live {

/// Connects to a broker, again and again if need be, and serves the MqttInputs and MqttOutputs of
/// the program, which must not outlive it. Nothing waits for the broker.
///
/// What is published is kept until the broker has it: with QoS 0 until it is written, otherwise
/// until it is acknowledged. After a connection was lost, QoS 1 and 2 may therefore both deliver
/// twice what was under way.
class MqttClient {
public:
    /// A subscription.
    class Subscriber {
    public:
        virtual ~Subscriber() = default;
        /// @param arrival a message for the subscription
        virtual void receive(const MqttArrival& arrival) = 0;

        std::string filter;
        int qos = 0;

    private:
        friend class MqttClient;
        std::uint32_t identifier_ = 0;
        int request_ = 0;  ///< number of the one that is not answered; 0: none
    };
    /// A source of publications.
    class Publisher {
    public:
        virtual ~Publisher() = default;
        /// @return the next publication, which it forgets; nothing when there is none
        virtual std::optional<MqttPublication> take() = 0;
        /// @param publication did not get to the broker; the next to be taken again
        virtual void putBack(MqttPublication publication) = 0;
        /// The broker has a publication, or has refused it.
        virtual void settle(bool isTaken) = 0;
    };

    /// Begins to connect when the loop runs.
    /// @param loop runs the client
    /// @param options how the broker is reached
    /// @param faults receives what goes wrong
    /// @throw InputError when a file of the options cannot be used or is open to every user
    MqttClient(EventLoop& loop, MqttOptions options, Faults& faults);
    /// Tells that it goes, as far as that can be done at once.
    ~MqttClient();
    MqttClient(const MqttClient&) = delete;
    MqttClient& operator=(const MqttClient&) = delete;

    /// @return what was counted
    const BrokerCounters& counters() const { return counters_; }
    /// @return "broker HOST:PORT", for faults
    const std::string& name() const { return name_; }

    // For inputs and outputs.
    void add(Subscriber& subscriber);
    void remove(Subscriber& subscriber);
    void add(Publisher& publisher) { publishers_.push_back(&publisher); }
    void remove(Publisher& publisher);
    /// Hands publications over as long as the broker takes them.
    void pump();
    /// @return publications of a publisher that are under way
    std::size_t underWay(const Publisher& publisher) const;
    Faults& faults() { return faults_; }

private:
    /// A publication that the broker has not acknowledged.
    struct UnderWay {
        int number;
        Publisher* publisher;  ///< null: gone
        MqttPublication publication;
    };

    void lookUp();
    void connect();
    void accepted();
    void ended(const MqttSession::End& end);
    void subscribe(Subscriber& subscriber);
    void received(const MqttArrival& arrival);
    bool isFor(const Subscriber& subscriber, const MqttArrival& arrival) const;
    void published(const MqttSession::Progress& progress);
    void subscribed(int number, const std::string& refusal);
    void publishAvailability(const std::string& payload);
    void takeBack();
    bool hand(Publisher& publisher);
    void settle(Publisher* publisher, const MqttPublication& publication,
                const MqttSession::Progress& progress);

    EventLoop& loop_;
    MqttOptions options_;
    Faults& faults_;
    std::string name_;
    Backoff backoff_;
    bool isVersion5_;
    BrokerCounters counters_;
    EventLoop::Clock::time_point since_;  ///< connected
    std::vector<Subscriber*> subscribers_;
    std::uint32_t identifiers_ = 0;  ///< given to subscribers
    std::vector<Publisher*> publishers_;
    std::size_t turn_ = 0;  ///< of the publishers
    std::deque<UnderWay> underWay_;
    bool isPumping_ = false;
    EventLoop::Timer retry_;
    std::optional<NameLookup> lookup_;
    std::unique_ptr<MqttSession> session_;
};

}  // namespace Veskar::Live
