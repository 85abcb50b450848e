// SPDX-License-Identifier: Apache-2.0
// Follows the properties of one service on the system bus.
#pragma once

#include <veskar/SDEventGSource.h>

#include "dbus/SdBus.h"
#include "dbus/ServiceCaller.h"

#include <functional>
#include <memory>
#include <optional>

namespace Impl {

/// The connection of a client that reads a service's properties once and follows their changes.
///
/// The service's name is also that of its interface. Changes arrive on the thread that iterates
/// the GLib main context that was the thread default in follow(). From then on the connection
/// belongs to that thread.
class PropertyClient {
public:
    /// Where the properties are.
    struct Service {
        const char* name;
        const char* path;
    };
    /// Takes a PropertiesChanged signal; negative errno on failure.
    using Changed = std::function<int(sd_bus_message*)>;

    explicit PropertyClient(const Service& service);
    ~PropertyClient();
    PropertyClient(const PropertyClient&) = delete;
    PropertyClient& operator=(const PropertyClient&) = delete;

    /// Opens bus and loop and runs the owner's steps. A failure of either is logged, and bus and
    /// loop are released.
    /// @param steps calls requireSettings and follow
    void setUp(const std::function<void()>& steps);
    /// Step: gives up when the settings could not be read.
    /// @param code what reading them returned, negative errno on failure
    static void requireSettings(int code);
    /// Step: subscribes to changes and dispatches them from the main context.
    /// @param onChanged called with every signal
    void follow(Changed onChanged);

    /// Asks for all properties.
    /// @param error receives what went wrong
    /// @param reply receives the a{sv}
    /// @return negative errno on failure; nothing when the service is not asked, see ServiceCaller
    std::optional<int> getAll(Veskar::SdBus::Error& error, Veskar::SdBus::Message& reply);
    /// Reads the interface that a PropertiesChanged signal speaks of.
    /// @return positive when it is the service's, 0 when another, negative errno on failure
    int readInterface(sd_bus_message* message) const;

private:
    static int onSignal(sd_bus_message* message, void* client, sd_bus_error* error) noexcept;

    Service service_;
    Veskar::SdBus::ServiceCaller caller_;
    bool isSetUp_ = false;
    Changed changed_;
    // In this order and last: the bridge ends first, so that no signal finds anything gone, and
    // lets go of the loop before bus and loop end.
    Veskar::SdBus::Event event_;
    Veskar::SdBus::Bus bus_;
    std::unique_ptr<SDEventGSource> eventSource_;
};

}  // namespace Impl
