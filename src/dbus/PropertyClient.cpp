// SPDX-License-Identifier: Apache-2.0
#include "dbus/PropertyClient.h"

#include "dbus/CallbackGuard.h"

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

#include <syslog.h>

namespace Impl {
namespace {

constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";

/// A step of the set-up that failed: what() is the bare text, the code stands beside it as sd-bus
/// returned it.
class SetUpError : public std::system_error {
public:
    SetUpError(int code, const char* message)
        : std::system_error(code, std::generic_category(), message), text_(message) {}
    const char* what() const noexcept override { return text_; }

private:
    const char* text_;
};

void require(int code, const char* text) {
    if (code < 0) {
        throw SetUpError(code, text);
    }
}

int newEvent(Veskar::SdBus::Event& event) {
    sd_event* created = nullptr;
    const int r = sd_event_new(&created);
    event.reset(created);
    return r;
}

}  // namespace

PropertyClient::PropertyClient(const Service& service) : service_(service) {}

PropertyClient::~PropertyClient() = default;

void PropertyClient::setUp(const std::function<void()>& steps) {
    try {
        require(Veskar::SdBus::openSystem(bus_), "Failed to open sd bus");
        require(newEvent(event_), "Failed to create sd event");
        steps();
    } catch (const std::system_error& error) {
        // All clients share this prefix; who watches the log searches for it.
        syslog(LOG_ERR, "GeoLocation: %s. Error code: %d\n", error.what(), error.code().value());
        eventSource_.reset();
        bus_.reset();
        event_.reset();
    }
    isSetUp_ = true;
}

void PropertyClient::requireSettings(int code) {
    require(code, "Failed to initialize settings");
}

void PropertyClient::follow(Changed onChanged) {
    changed_ = std::move(onChanged);
    const std::string rule = std::string("type='signal',sender='") + service_.name + "',path='" +
                             service_.path + "',interface='" + propertiesInterface +
                             "',member='PropertiesChanged'";
    require(sd_bus_add_match(bus_.get(), nullptr, rule.c_str(), onSignal, this),
            "Failed to setup listen to changed settings");
    eventSource_ = std::make_unique<SDEventGSource>(bus_.get(), event_.get());
}

std::optional<int> PropertyClient::getAll(Veskar::SdBus::Error& error,
                                          Veskar::SdBus::Message& reply) {
    // Without a connection the call fails by itself, as an invalid argument.
    const auto call = [&] {
        sd_bus_message* received = nullptr;
        const int r =
            sd_bus_call_method(bus_.get(), service_.name, service_.path, propertiesInterface,
                               "GetAll", error.out(), &received, "s", service_.name);
        reply.reset(received);
        return r;
    };
    return isSetUp_ ? caller_.ask(bus_.get(), call) : caller_.askPatiently(bus_.get(), call);
}

int PropertyClient::readInterface(sd_bus_message* message) const {
    const char* interface = nullptr;
    const int r = sd_bus_message_read_basic(message, SD_BUS_TYPE_STRING, &interface);
    if (r < 0) {
        return r;
    }
    return std::string(interface) == service_.name ? 1 : 0;
}

int PropertyClient::onSignal(sd_bus_message* message, void* client,
                             sd_bus_error* /*error*/) noexcept {
    return Veskar::guarded(-ENOMEM,
                           [&] { return static_cast<PropertyClient*>(client)->changed_(message); });
}

}  // namespace Impl
