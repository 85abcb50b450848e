// SPDX-License-Identifier: Apache-2.0
// The two clients that follow a service's properties, and a bus to follow them on.
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

    /// One of the properties, and what the client has of it; -1 by default.
    static Body property(int value) { return number("longitude", 0.01 * (value + 1)); }
    static int value(Client& client);
    /// An entry that is passed over: a property of another type.
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
    /// An entry that is passed over: a property that nobody knows, of which type ever.
    static Body unknown() { return number("Temperature", 40.0); }
    static bool query(Client& client) { return client.initStatus(); }
};

/// @return a line of the log that ends with a code
std::string lineWithCode(const std::string& text, int code);
/// @return the line that ends a construction that fails, of either client
std::string setUpLine(const std::string& text, int code);

/// A bus where one of the services may live, and a main loop for its client.
template <class Service>
class PropertyClientTest : public testing::Test {
protected:
    using Client = typename Service::Client;

    const FakeService::Member getAll{Service::path, "org.freedesktop.DBus.Properties", "GetAll"};
    const FakeService::Member propertiesChanged{Service::path, "org.freedesktop.DBus.Properties",
                                                "PropertiesChanged"};

    /// A client whose changes arrive in `loop`.
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

/// A client that has read its properties from bytes that no message bus would carry.
template <class Client>
class BrokenBusTest : public testing::Test {
protected:
    /// Answers GetAll with an a{sv} whose content, from the first key on, is given as bytes.
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
