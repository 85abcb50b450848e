// SPDX-License-Identifier: Apache-2.0
#include "live/transport/MqttClient.h"

#include <veskar-host/InputError.h>

#include <algorithm>
#include <random>
#include <utility>

#include <mosquitto.h>

namespace Veskar::Live {
namespace {

/// Publications that the broker has not acknowledged, at most. The library would keep further ones
/// for later, without a limit.
constexpr std::size_t mostUnderWay = 20;

/// A connection that has lasted so long was a success.
constexpr std::chrono::seconds lasting(10);

std::string randomId() {
    constexpr std::string_view digits = "0123456789abcdef";
    std::random_device random;
    std::string id = "veskar-";
    for (int i = 0; i < 12; ++i) {
        id += digits[random() % digits.size()];
    }
    return id;
}

MqttOptions completed(MqttOptions options) {
    if (options.host.empty()) {
        throw Host::InputError("a broker needs a host");
    }
    if (options.port == 0) {
        options.port = options.tls ? 8883 : 1883;
    }
    if (options.clientId.empty()) {
        options.clientId = randomId();
    }
    return options;
}

}  // namespace

MqttClient::MqttClient(EventLoop& loop, MqttOptions options, Faults& faults)
    : loop_(loop),
      options_(completed(std::move(options))),
      faults_(faults),
      name_("broker " + options_.host + ":" + std::to_string(options_.port)),
      backoff_(options_.firstRetry, options_.longestRetry),
      isVersion5_(options_.protocol != MqttProtocol::V311),
      retry_(loop.timer([this] { lookUp(); })) {
    MqttSession::check(options_);
    retry_.expireAfter({});
}

MqttClient::~MqttClient() {
    if (session_ && counters_.isConnected) {
        if (options_.availability) {
            publishAvailability(options_.availability->offline);
        }
        session_->disconnect();
    }
}

void MqttClient::lookUp() {
    lookup_.emplace(loop_, options_.host, [this](const std::string& fault) {
        if (fault.empty()) {
            connect();
        } else {
            ended({MqttSession::End::Failed, fault});
        }
    });
}

void MqttClient::connect() {
    MqttSession::Events events;
    events.accepted = [this] { accepted(); };
    events.ended = [this](const MqttSession::End& end) { ended(end); };
    events.message = [this](const MqttArrival& arrival) { received(arrival); };
    events.published = [this](const MqttSession::Progress& progress) { published(progress); };
    events.subscribed = [this](int number, const std::string& refusal) {
        subscribed(number, refusal);
    };
    events.writable = [this] { pump(); };
    try {
        session_ = std::make_unique<MqttSession>(loop_, options_, isVersion5_, std::move(events));
    } catch (const Host::InputError& error) {
        // A file that was there when the program began.
        ended({MqttSession::End::Failed, error.what()});
    }
}

void MqttClient::accepted() {
    ++counters_.connections;
    counters_.isConnected = true;
    counters_.protocol = isVersion5_ ? "5" : "3.1.1";
    since_ = EventLoop::Clock::now();
    for (Subscriber* subscriber : subscribers_) {
        subscribe(*subscriber);
    }
    if (options_.availability) {
        publishAvailability(options_.availability->online);
    }
}

void MqttClient::publishAvailability(const std::string& payload) {
    const MqttPublication publication{options_.availability->topic, payload, 1, true};
    const MqttSession::Progress progress = session_->publish(publication);
    if (progress.kind == MqttSession::Progress::Refused) {
        settle(nullptr, publication, progress);
    } else if (progress.kind == MqttSession::Progress::Pending) {
        underWay_.push_back({progress.number, nullptr, publication});
    }
}

void MqttClient::ended(const MqttSession::End& end) {
    using End = MqttSession::End;
    // Its socket must not stay open until the next attempt.
    session_.reset();
    counters_.isConnected = false;
    counters_.protocol.clear();
    const bool mayChangeProtocol = options_.protocol == MqttProtocol::Newest;
    if (end.kind == End::OtherProtocol && mayChangeProtocol && isVersion5_) {
        isVersion5_ = false;
        retry_.expireAfter({});
        return;
    }
    counters_.lastFault = end.reason;
    switch (end.kind) {
        case End::OtherProtocol:
        case End::Refused:
            ++counters_.refused;
            faults_.report(name_ + ": refused the connection", end.reason);
            break;
        case End::HungUp:
        case End::Failed:
            ++counters_.failed;
            faults_.report(name_ + ": cannot connect", end.reason);
            break;
        case End::Lost:
            ++counters_.lost;
            faults_.report(name_ + ": lost the connection", end.reason);
            break;
    }
    if (mayChangeProtocol) {
        isVersion5_ = end.kind == End::HungUp ? !isVersion5_ : isVersion5_ || end.kind == End::Lost;
    }
    if (end.kind == End::Lost && EventLoop::Clock::now() - since_ >= lasting) {
        backoff_.reset();
    }
    takeBack();
    retry_.expireAfter(backoff_.next());
}

/// Lets the publishers have what was under way, in the same order.
void MqttClient::takeBack() {
    for (; !underWay_.empty(); underWay_.pop_back()) {
        if (UnderWay& last = underWay_.back(); last.publisher != nullptr) {
            last.publisher->putBack(std::move(last.publication));
        }
    }
}

void MqttClient::subscribe(Subscriber& subscriber) {
    subscriber.request_ =
        session_->subscribe(subscriber.filter, subscriber.qos, subscriber.identifier_);
}

/// A broker that tells for which subscriptions a message comes may send it once for each. One that
/// does not, sends it once.
bool MqttClient::isFor(const Subscriber& subscriber, const MqttArrival& arrival) const {
    if (arrival.identifiers.empty()) {
        bool isMatch = false;
        mosquitto_topic_matches_sub(subscriber.filter.c_str(), arrival.topic.c_str(), &isMatch);
        return isMatch;
    }
    // Of equal filters, the broker knows the last subscription only.
    return std::any_of(subscribers_.begin(), subscribers_.end(), [&](const Subscriber* known) {
        return known->filter == subscriber.filter &&
               std::find(arrival.identifiers.begin(), arrival.identifiers.end(),
                         known->identifier_) != arrival.identifiers.end();
    });
}

void MqttClient::received(const MqttArrival& arrival) {
    for (Subscriber* subscriber : subscribers_) {
        if (isFor(*subscriber, arrival)) {
            subscriber->receive(arrival);
        }
    }
}

void MqttClient::subscribed(int number, const std::string& refusal) {
    for (Subscriber* subscriber : subscribers_) {
        if (subscriber->request_ == number) {
            subscriber->request_ = 0;
            if (!refusal.empty()) {
                faults_.report(name_ + ": refused to subscribe to " + subscriber->filter, refusal);
            }
        }
    }
}

void MqttClient::published(const MqttSession::Progress& progress) {
    const auto found = std::find_if(
        underWay_.begin(), underWay_.end(),
        [&](const UnderWay& publication) { return publication.number == progress.number; });
    if (found != underWay_.end()) {
        const UnderWay settled = std::move(*found);
        underWay_.erase(found);
        settle(settled.publisher, settled.publication, progress);
    }
}

void MqttClient::settle(Publisher* publisher, const MqttPublication& publication,
                        const MqttSession::Progress& progress) {
    const bool isTaken = progress.kind == MqttSession::Progress::Done;
    if (!isTaken) {
        faults_.report(name_ + ": refused a message to " + publication.topic, progress.reason);
    }
    if (publisher != nullptr) {
        publisher->settle(isTaken);
    }
}

void MqttClient::pump() {
    if (std::exchange(isPumping_, true)) {
        return;
    }
    // Publishers take turns, so that one with much to say does not silence the others.
    for (std::size_t idle = 0; idle < publishers_.size() && session_ && session_->canPublish() &&
                               underWay_.size() < mostUnderWay;) {
        turn_ = (turn_ + 1) % publishers_.size();
        idle = hand(*publishers_[turn_]) ? 0 : idle + 1;
    }
    isPumping_ = false;
}

/// @return whether the publisher had something to say
bool MqttClient::hand(Publisher& publisher) {
    using Progress = MqttSession::Progress;
    std::optional<MqttPublication> publication = publisher.take();
    if (!publication) {
        return false;
    }
    const Progress progress = session_->publish(*publication);
    switch (progress.kind) {
        case Progress::Disconnected:
            publisher.putBack(std::move(*publication));
            break;
        case Progress::Pending:
            underWay_.push_back({progress.number, &publisher, std::move(*publication)});
            break;
        case Progress::Done:
        case Progress::Refused:
            settle(&publisher, *publication, progress);
            break;
    }
    return true;
}

void MqttClient::add(Subscriber& subscriber) {
    subscribers_.push_back(&subscriber);
    subscriber.identifier_ = ++identifiers_;
    if (counters_.isConnected) {
        subscribe(subscriber);
    }
}

void MqttClient::remove(Subscriber& subscriber) {
    subscribers_.erase(std::remove(subscribers_.begin(), subscribers_.end(), &subscriber),
                       subscribers_.end());
    const bool isShared =
        std::any_of(subscribers_.begin(), subscribers_.end(),
                    [&](const Subscriber* other) { return other->filter == subscriber.filter; });
    if (counters_.isConnected && !isShared) {
        session_->unsubscribe(subscriber.filter);
    }
}

void MqttClient::remove(Publisher& publisher) {
    publishers_.erase(std::remove(publishers_.begin(), publishers_.end(), &publisher),
                      publishers_.end());
    for (UnderWay& publication : underWay_) {
        if (publication.publisher == &publisher) {
            publication.publisher = nullptr;
        }
    }
}

std::size_t MqttClient::underWay(const Publisher& publisher) const {
    return static_cast<std::size_t>(std::count_if(
        underWay_.begin(), underWay_.end(),
        [&](const UnderWay& publication) { return publication.publisher == &publisher; }));
}

}  // namespace Veskar::Live
