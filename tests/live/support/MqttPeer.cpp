// SPDX-License-Identifier: Apache-2.0
#include "live/support/MqttPeer.h"

#include <stdexcept>
#include <thread>

#include <mosquitto.h>

namespace VeskarTest {
namespace {

void apply(int result) {
    if (result != MOSQ_ERR_SUCCESS) {
        throw std::runtime_error(std::string("MQTT: ") + mosquitto_strerror(result));
    }
}

}  // namespace

void MqttPeer::Destroy::operator()(mosquitto* client) const noexcept {
    mosquitto_destroy(client);
    mosquitto_lib_cleanup();
}

MqttPeer::MqttPeer(std::uint16_t port) : MqttPeer(port, Options()) {}

MqttPeer::MqttPeer(std::uint16_t port, const Options& options) {
    apply(mosquitto_lib_init());
    client_.reset(
        mosquitto_new(options.clientId.empty() ? nullptr : options.clientId.c_str(), true, this));
    mosquitto* client = client_.get();
    mosquitto_connect_callback_set(client, [](mosquitto*, void* self, int result) {
        static_cast<MqttPeer*>(self)->isAccepted_ = result == 0;
    });
    mosquitto_disconnect_callback_set(client, [](mosquitto*, void* self, int) {
        static_cast<MqttPeer*>(self)->isAccepted_ = false;
    });
    mosquitto_subscribe_callback_set(client,
                                     [](mosquitto*, void* self, int number, int, const int*) {
                                         static_cast<MqttPeer*>(self)->settled_ = number;
                                     });
    mosquitto_publish_callback_set(client, [](mosquitto*, void* self, int number) {
        static_cast<MqttPeer*>(self)->settled_ = number;
    });
    mosquitto_message_callback_set(
        client, [](mosquitto*, void* self, const mosquitto_message* message) {
            static_cast<MqttPeer*>(self)->received_.push_back(
                {message->topic,
                 std::string(static_cast<const char*>(message->payload),
                             static_cast<std::size_t>(message->payloadlen)),
                 message->qos, message->retain});
        });
    if (!options.user.empty()) {
        apply(mosquitto_username_pw_set(client, options.user.c_str(), options.password.c_str()));
    }
    if (!options.authority.empty()) {
        apply(mosquitto_tls_set(client, options.authority.c_str(), nullptr, nullptr, nullptr,
                                nullptr));
    }
    constexpr int keepAlive = 60;
    apply(mosquitto_connect(client, "127.0.0.1", port, keepAlive));
    await([this] { return isAccepted_; });
}

MqttPeer::~MqttPeer() {
    mosquitto_disconnect(client_.get());
}

void MqttPeer::subscribe(const std::string& filter, int qos) {
    subscriptions_.push_back({filter, qos});
    request(subscriptions_.back());
}

void MqttPeer::request(const Subscription& subscription) {
    int number = 0;
    apply(
        mosquitto_subscribe(client_.get(), &number, subscription.filter.c_str(), subscription.qos));
    await([&] { return settled_ == number; });
}

void MqttPeer::publish(const std::string& topic, const std::string& text, bool isRetained) {
    int number = 0;
    apply(mosquitto_publish(client_.get(), &number, topic.c_str(), static_cast<int>(text.size()),
                            text.data(), 1, isRetained));
    await([&] { return settled_ == number; });
}

void MqttPeer::beginToPublish(const std::string& topic, const std::string& text) {
    apply(mosquitto_publish(client_.get(), nullptr, topic.c_str(), static_cast<int>(text.size()),
                            text.data(), 0, false));
}

void MqttPeer::reconnect() {
    isAccepted_ = false;
    apply(mosquitto_reconnect(client_.get()));
    await([this] { return isAccepted_; });
    for (const Subscription& subscription : subscriptions_) {
        request(subscription);
    }
}

void MqttPeer::turn(std::chrono::milliseconds patience) {
    if (mosquitto_loop(client_.get(), static_cast<int>(patience.count()), 1) != MOSQ_ERR_SUCCESS) {
        std::this_thread::sleep_for(patience);  // the broker is away
    }
}

std::vector<std::string> MqttPeer::on(const std::string& topic) const {
    std::vector<std::string> texts;
    for (const Published& message : received_) {
        if (message.topic == topic) {
            texts.push_back(message.text);
        }
    }
    return texts;
}

void MqttPeer::await(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!condition()) {
        const int result = mosquitto_loop(client_.get(), 20, 1);
        if (result == MOSQ_ERR_CONN_REFUSED) {
            apply(result);
        }
        if (std::chrono::steady_clock::now() > end) {
            throw std::runtime_error("the broker does not answer");
        }
    }
}

}  // namespace VeskarTest
