// SPDX-License-Identifier: Apache-2.0
// The two clients that track a service's properties, and a test fixture with a bus.
#pragma once

#include <veskar/GeoLocation.h>
#include <veskar/RadarStatus.h>

#include "dbus/FreshBudget.h"
#include "dbus/RawBus.h"
#include "support/FakeService.h"
#include "support/MainLoop.h"
#include "support/PrivateBus.h"
#include "support/SyslogCapture.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace VeskarTest {

/// What the tests need to know about Impl::GeoLocation.
struct GeoLocationService {
    using Client = Impl::GeoLocation;
    static constexpr const char* name = "com.nolt.GeoLocation1";
    static constexpr const char* path = "/com/nolt/GeoLocation1";

    static constexpr const char* callFailed = "GeoLocation: get configuration error: ";
    static constexpr const char* arrayFailed = "GeoLocation: Failed to enter array";
    static constexpr const char* interfaceFailed = "GeoLocation: Failed to read interface";

    /// A property, and its value in the client; -1 by default.
    static Body property(int value) { return number("longitude", 0.01 * (value + 1)); }
    static int value(Client& client);
    /// An entry that is ignored: a property with another type.
    static Body unknown() { return text("longitude", "east"); }
    static bool query(Client& client) { return client.initSettings(); }
};

/// What the tests need to know about Impl::RadarStatus.
struct RadarService {
    using Client = Impl::RadarStatus;
    static constexpr const char* name = "com.nolt.Radar1";
    static constexpr const char* path = "/com/nolt/Radar1";

    static constexpr const char* callFailed = "RadarStatus: get property error: ";
    static constexpr const char* arrayFailed = "RadarStatus: Failed to enter array";
    static constexpr const char* interfaceFailed = "RadarStatus: Failed to get property interface";

    static Body property(int value) { return text("RadarProfile", std::to_string(value)); }
    static int value(Client& client);
    /// An entry that is ignored: an unknown property of any type.
    static Body unknown() { return number("Temperature", 40.0); }
    static bool query(Client& client) { return client.initStatus(); }
};

/// @return a line of the log that ends with a code
std::string lineWithCode(const std::string& text, int code);
/// @return the line logged when the construction of either client fails
std::string setUpLine(const std::string& text, int code);

/// A bus for one of the services, and a main loop for its client.
template <class Service>
class PropertyClientTest : public testing::Test {
protected:
    using Client = typename Service::Client;

    const FakeService::Member getAll{Service::path, "org.freedesktop.DBus.Properties", "GetAll"};
    const FakeService::Member propertiesChanged{Service::path, "org.freedesktop.DBus.Properties",
                                                "PropertiesChanged"};

    /// A client that receives changes in `loop`.
    std::unique_ptr<Client> makeClient() {
        std::unique_ptr<Client> client;
        loop.asThreadDefault([&] { client = std::make_unique<Client>(); });
        return client;
    }

    std::unique_ptr<FakeService> makeService(const std::vector<Body>& properties) {
        auto service = std::make_unique<FakeService>(Service::name);
        service->answer(getAll, dictionary(properties));
        return service;
    }

    void emitChange(FakeService& service, const std::vector<Body>& properties) {
        service.emit(propertiesChanged, changed(Service::name, properties));
    }

    FreshBudget budget;
    SyslogCapture log;
    PrivateBus bus;
    MainLoop loop;
};

/// A client that has read its properties from bytes that a message bus would reject.
template <class Client>
class BrokenBusTest : public testing::Test {
protected:
    /// Answers GetAll with an a{sv} whose content is given as bytes, from the first key on.
    void read(const Bytes& content, std::uint32_t statedLength = 0) {
        Bytes body;
        const auto length = static_cast<std::uint32_t>(content.get().size());
        body.word(statedLength == 0 ? length : statedLength).align(8).append(content.get());
        const RawBus bus({{"a{sv}", body.get()}});
        client = std::make_unique<Client>();
    }

    SyslogCapture log;
    std::unique_ptr<Client> client;
};

}  // namespace VeskarTest
