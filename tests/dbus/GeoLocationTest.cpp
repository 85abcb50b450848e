// SPDX-License-Identifier: Apache-2.0
#include <veskar/GeoLocation.h>

#include "dbus/LocalMessage.h"
#include "dbus/RawBus.h"
#include "support/DescriptorLimit.h"
#include "support/FakeService.h"
#include "support/MainLoop.h"
#include "support/PrivateBus.h"
#include "support/SyslogCapture.h"

#include <atomic>
#include <cerrno>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

using namespace VeskarTest;
using Dbus::GeoLocation::Position;
using Impl::GeoLocation;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const std::string name = "com.nolt.GeoLocation1";
const std::string path = "/com/nolt/GeoLocation1";
const FakeService::Member getAll{path, "org.freedesktop.DBus.Properties", "GetAll"};
const FakeService::Member propertiesChanged{path, "org.freedesktop.DBus.Properties",
                                            "PropertiesChanged"};

std::string line(const std::string& text, int code) {
    return "GeoLocation: " + text + ". Error code: " + std::to_string(code) + "\n";
}

Body settings(double latitude, double longitude, double heading, bool valid) {
    return dictionary({number("latitude", latitude), number("longitude", longitude),
                       number("heading", heading), truth("valid_pos", valid)});
}

/// Where the device is.
Position here(GeoLocation& client) {
    return client.getPosition(0.0, 0.0);
}

MATCHER_P3(IsAt, latitude, longitude, valid, "") {
    return arg.latitude == latitude && arg.longitude == longitude && arg.valid == valid;
}

class GeoLocationClient : public testing::Test {
protected:
    /// A client whose changes arrive in `loop`.
    std::unique_ptr<GeoLocation> makeClient() {
        std::unique_ptr<GeoLocation> client;
        loop.asThreadDefault([&] { client = std::make_unique<GeoLocation>(); });
        return client;
    }

    void emitChange(FakeService& service, const std::vector<Body>& content) {
        service.emit(propertiesChanged, changed(name, content));
    }

    SyslogCapture log;
    PrivateBus bus;
    MainLoop loop;
};

}  // namespace

TEST_F(GeoLocationClient, ReadsAllSettingsWhenItIsMade) {
    FakeService service(name);
    service.answer(getAll, settings(55.5, 13.25, 90.0, true));
    const auto client = makeClient();
    EXPECT_THAT(here(*client), IsAt(55.5, 13.25, true));
    // The heading is east: straight ahead (azimuth 90) only the longitude grows.
    const Position ahead = client->getPosition(100.0, 90.0);
    EXPECT_GT(ahead.longitude, 13.25);
    EXPECT_NEAR(ahead.latitude, 55.5, 1e-12);
    EXPECT_EQ(service.calls(getAll), 1);
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(GeoLocationClient, AsksForThePropertiesOfTheServicesInterface) {
    FakeService service(name);
    std::string asked;
    service.answer(getAll, settings(1.0, 2.0, 3.0, true));
    service.inspect(getAll, [&](sd_bus_message* call) {
        const char* interface = nullptr;
        must(sd_bus_message_read(call, "s", &interface), "read");
        asked = std::string(sd_bus_message_get_signature(call, 1)) + " " + interface;
    });
    const auto client = makeClient();
    EXPECT_EQ(asked, "s com.nolt.GeoLocation1");
}

TEST_F(GeoLocationClient, FollowsChangesInTheMainContext) {
    FakeService service(name);
    service.answer(getAll, settings(55.0, 13.0, 0.0, false));
    const auto client = makeClient();
    emitChange(service,
               {number("latitude", -33.0), number("longitude", 151.0), truth("valid_pos", true)});
    EXPECT_THAT(here(*client), IsAt(55.0, 13.0, false)) << "nothing happens before the loop runs";
    EXPECT_TRUE(loop.iterateUntil([&] { return here(*client).valid; }));
    EXPECT_THAT(here(*client), IsAt(-33.0, 151.0, true));
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(GeoLocationClient, KeepsWhatAChangeDoesNotName) {
    FakeService service(name);
    service.answer(getAll, settings(55.0, 13.0, 0.0, true));
    const auto client = makeClient();
    emitChange(service, {number("longitude", 14.0)});
    EXPECT_TRUE(loop.iterateUntil([&] { return here(*client).longitude == 14.0; }));
    EXPECT_THAT(here(*client), IsAt(55.0, 14.0, true));
}

TEST_F(GeoLocationClient, ScalesMetresByTheLatitudeThatItReads) {
    FakeService service(name);
    service.answer(getAll, settings(45.0, 0.0, 0.0, true));
    const auto client = makeClient();
    const double atMiddle = client->getPosition(100.0, 0.0).longitude;
    EXPECT_NEAR(atMiddle, 100.0 / 78649.394, 1e-9);
    emitChange(service, {number("latitude", 0.0)});
    EXPECT_TRUE(loop.iterateUntil([&] { return here(*client).latitude == 0.0; }));
    EXPECT_NEAR(client->getPosition(100.0, 0.0).longitude, 100.0 / 111226.109, 1e-9);
}

TEST_F(GeoLocationClient, IsReadOnOneThreadWhileTheMainLoopRunsOnAnother) {
    FakeService service(name);
    service.answer(getAll, settings(10.0, 10.0, 0.0, true));
    const auto client = makeClient();
    loop.start();
    std::atomic<bool> stop{false};
    std::atomic<int> torn{0};
    std::thread reader([&] {
        while (!stop) {
            const Position position = here(*client);
            torn += position.latitude == position.longitude ? 0 : 1;
        }
    });
    for (int i = 11; i <= 60; ++i) {
        emitChange(service, {number("latitude", i), number("longitude", i)});
    }
    EXPECT_TRUE(loop.waitUntil([&] { return here(*client).latitude == 60.0; }));
    stop = true;
    reader.join();
    EXPECT_EQ(torn, 0) << "a change must appear as a whole";
    loop.stop();
}

TEST_F(GeoLocationClient, MayBeMadeOnTheThreadOfTheMainLoop) {
    FakeService service(name);
    service.answer(getAll, settings(55.0, 13.0, 0.0, true));
    loop.start();
    std::unique_ptr<GeoLocation> client;
    loop.call([&] { client = std::make_unique<GeoLocation>(); });
    emitChange(service, {number("latitude", 56.0)});
    EXPECT_TRUE(loop.waitUntil([&] { return here(*client).latitude == 56.0; }));
}

TEST_F(GeoLocationClient, MayBeMadeAndEndWhileTheMainLoopRunsOnAnotherThread) {
    FakeService service(name);
    service.answer(getAll, settings(55.0, 13.0, 0.0, true));
    MainLoop global(MainLoop::Context::GlobalDefault);
    global.start();
    for (int i = 0; i < 20; ++i) {
        GeoLocation client;
        emitChange(service, {number("latitude", i)});
        EXPECT_TRUE(global.waitUntil([&] { return here(client).latitude == i; }));
        emitChange(service, {number("latitude", -1.0)});
    }
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(GeoLocationClient, EndsABurstOfChangesWithTheLastOne) {
    FakeService service(name);
    service.answer(getAll, settings(0.0, 0.0, 0.0, true));
    const auto client = makeClient();
    loop.start();
    for (int i = 1; i <= 10000; ++i) {
        emitChange(service, {number("longitude", i * 0.01)});
    }
    EXPECT_TRUE(loop.waitUntil([&] { return here(*client).longitude == 10000 * 0.01; }));
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(GeoLocationClient, IgnoresChangesOfAnotherInterface) {
    FakeService service(name);
    service.answer(getAll, settings(55.0, 13.0, 0.0, true));
    const auto client = makeClient();
    service.emit(propertiesChanged, changed("com.nolt.GeoLocation2", {number("latitude", 1.0)}));
    emitChange(service, {number("longitude", 14.0)});
    EXPECT_TRUE(loop.iterateUntil([&] { return here(*client).longitude == 14.0; }));
    EXPECT_EQ(here(*client).latitude, 55.0);
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(GeoLocationClient, LogsAChangeWithoutInterface) {
    FakeService service(name);
    service.answer(getAll, settings(55.0, 13.0, 0.0, true));
    const auto client = makeClient();
    service.emit(propertiesChanged,
                 [](sd_bus_message* m) { must(sd_bus_message_append(m, "i", 1), "append"); });
    emitChange(service, {number("longitude", 14.0)});
    EXPECT_TRUE(loop.iterateUntil([&] { return here(*client).longitude == 14.0; }));
    EXPECT_THAT(log.errors(), ElementsAre(line("Failed to read interface", -ENXIO)));
}

TEST_F(GeoLocationClient, DoesNotHearSignalsOfOtherServices) {
    FakeService service(name);
    FakeService stranger("com.nolt.Stranger");
    service.answer(getAll, settings(55.0, 13.0, 0.0, true));
    const auto client = makeClient();
    emitChange(stranger, {number("latitude", 1.0)});
    emitChange(service, {number("longitude", 14.0)});
    EXPECT_TRUE(loop.iterateUntil([&] { return here(*client).longitude == 14.0; }));
    EXPECT_EQ(here(*client).latitude, 55.0);
}

TEST_F(GeoLocationClient, LivesOnWithZerosWithoutTheService) {
    const auto client = makeClient();
    EXPECT_THAT(log.errors(), IsEmpty()) << "a missing service is no error";
    const Position position = client->getPosition(100.0, 30.0);
    EXPECT_THAT(position, IsAt(0.0, 0.0, false));
    EXPECT_EQ(position.altitude, 0.0);
}

TEST_F(GeoLocationClient, DoesNotFollowAServiceThatComesLate) {
    const auto client = makeClient();
    FakeService service(name);
    service.answer(getAll, settings(55.0, 13.0, 0.0, true));
    emitChange(service, {number("latitude", 1.0)});
    EXPECT_TRUE(loop.iterateUntilIdle());
    EXPECT_THAT(here(*client), IsAt(0.0, 0.0, false));
    // The settings may still be asked for.
    EXPECT_TRUE(client->initSettings());
    EXPECT_THAT(here(*client), IsAt(55.0, 13.0, true));
}

TEST_F(GeoLocationClient, FollowsAServiceThatRestarts) {
    auto service = std::make_unique<FakeService>(name);
    service->answer(getAll, settings(55.0, 13.0, 0.0, true));
    const auto client = makeClient();
    service.reset();
    EXPECT_TRUE(loop.iterateUntilIdle());
    EXPECT_THAT(here(*client), IsAt(55.0, 13.0, true)) << "the last values stay";
    service = std::make_unique<FakeService>(name);
    emitChange(*service, {number("latitude", 56.0)});
    EXPECT_TRUE(loop.iterateUntil([&] { return here(*client).latitude == 56.0; }));
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(GeoLocationClient, KeepsItsValuesAndRestsWhenTheBusDies) {
    FakeService service(name);
    service.answer(getAll, settings(55.0, 13.0, 0.0, true));
    const auto client = makeClient();
    EXPECT_TRUE(loop.iterateUntilIdle());
    bus.kill();
    bool noticed = false;
    EXPECT_TRUE(loop.iterateUntil([&] { return std::exchange(noticed, true); }));
    EXPECT_TRUE(loop.iterateUntilIdle()) << "a dead bus must not keep the main loop busy";
    EXPECT_THAT(here(*client), IsAt(55.0, 13.0, true));
    EXPECT_FALSE(client->initSettings());
    EXPECT_THAT(here(*client), IsAt(55.0, 13.0, true));
}

TEST_F(GeoLocationClient, TakesARefusalForAFailure) {
    FakeService service(name);
    service.refuse(getAll, "com.nolt.Error.Failed", "not today");
    const auto client = makeClient();
    EXPECT_THAT(log.errors(), ElementsAre("GeoLocation: get configuration error: not today\n",
                                          line("Failed to initialize settings", -EIO)));
    EXPECT_THAT(here(*client), IsAt(0.0, 0.0, false));
    log.clear();
    EXPECT_FALSE(client->initSettings()) << "the connection is released";
    EXPECT_EQ(log.errors().size(), 1U);
    emitChange(service, {number("latitude", 1.0)});
    EXPECT_TRUE(loop.iterateUntilIdle());
    EXPECT_THAT(here(*client), IsAt(0.0, 0.0, false));
}

TEST_F(GeoLocationClient, DoesNotWaitForASlowService) {
    FakeService service(name);
    service.hold(getAll);
    const auto client = makeClient();
    EXPECT_THAT(log.errors(),
                ElementsAre("GeoLocation: get configuration error: Connection timed out\n",
                            line("Failed to initialize settings", -ETIMEDOUT)));
    service.release(settings(55.0, 13.0, 0.0, true));
    EXPECT_TRUE(loop.iterateUntilIdle());
    EXPECT_THAT(here(*client), IsAt(0.0, 0.0, false));
}

TEST_F(GeoLocationClient, GivesUpOnAReplyThatIsNoDictionary) {
    FakeService service(name);
    service.answer(getAll, string("no"));
    const auto client = makeClient();
    EXPECT_THAT(log.errors(), ElementsAre(line("Failed to enter array", -ENXIO),
                                          line("Failed to initialize settings", -ENXIO)));
}

TEST_F(GeoLocationClient, TakesWhatARepeatedQueryFinds) {
    FakeService service(name);
    service.answer(getAll, settings(55.0, 13.0, 0.0, true));
    const auto client = makeClient();
    service.answer(getAll, dictionary({number("latitude", 57.0)}));
    EXPECT_TRUE(client->initSettings());
    EXPECT_THAT(here(*client), IsAt(57.0, 13.0, true));
    service.answer(getAll, string("no"));
    EXPECT_FALSE(client->initSettings());
}

TEST_F(GeoLocationClient, LogsASubscriptionThatIsRefused) {
    const PrivateBus strict(R"(<limit name="max_match_rules_per_connection">0</limit>)");
    FakeService service(name);
    service.answer(getAll, settings(55.0, 13.0, 0.0, true));
    const auto client = makeClient();
    EXPECT_THAT(log.errors(),
                ElementsAre(line("Failed to setup listen to changed settings", -ENOBUFS)));
    EXPECT_THAT(here(*client), IsAt(55.0, 13.0, true)) << "the values read before stay";
}

TEST_F(GeoLocationClient, LogsABusThatCannotBeOpened) {
    leaveSystemBus();
    const auto client = makeClient();
    EXPECT_THAT(log.errors(), ElementsAre(line("Failed to open sd bus", -ENOENT)));
    EXPECT_THAT(client->getPosition(10.0, 20.0), IsAt(0.0, 0.0, false));
}

TEST_F(GeoLocationClient, LogsALoopThatCannotBeMade) {
    {
        const DescriptorLimit onlyTheBus(1);
        const auto client = makeClient();
        EXPECT_THAT(here(*client), IsAt(0.0, 0.0, false));
    }
    EXPECT_THAT(log.errors(), ElementsAre(line("Failed to create sd event", -EMFILE)));
}

TEST_F(GeoLocationClient, TakesADictionaryEntryByEntry) {
    const auto client = makeClient();
    const auto parse = [&](const std::vector<Body>& content) {
        const LocalMessage message(dictionary(content));
        return client->parse(message.get());
    };
    EXPECT_GE(parse({}), 0);
    EXPECT_GE(parse({number("latitude", 1.0), number("altitude", 7.0), text("colour", "red"),
                     integer("satellites", 5), truth("indoors", true),
                     entries("nested", {number("latitude", 9.0)}), number("longitude", 2.0)}),
              0);
    EXPECT_THAT(here(*client), IsAt(1.0, 2.0, false)) << "unknown entries are passed over";
    EXPECT_EQ(here(*client).altitude, 0.0) << "nothing on the bus sets the altitude";
    EXPECT_GE(parse({text("latitude", "3.0"), integer("longitude", 3), number("valid_pos", 1.0),
                     truth("heading", true), truth("latitude", true), truth("valid_pos", true)}),
              0);
    EXPECT_THAT(here(*client), IsAt(1.0, 2.0, true)) << "wrongly typed entries are passed over";
    EXPECT_GE(parse({truth("valid_pos", false)}), 0);
    EXPECT_THAT(here(*client), IsAt(1.0, 2.0, false));
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(GeoLocationClient, RefusesAMessageThatIsNoDictionary) {
    const auto client = makeClient();
    const LocalMessage words([](sd_bus_message* m) {
        must(sd_bus_message_append(m, "a{ss}", 1, "latitude", "1.0"), "append");
    });
    EXPECT_EQ(client->parse(words.get()), -ENXIO);
    const LocalMessage empty(nothing());
    EXPECT_EQ(client->parse(empty.get()), -ENXIO);
    EXPECT_THAT(log.errors(), ElementsAre(line("Failed to enter array", -ENXIO),
                                          line("Failed to enter array", -ENXIO)));
}

// What a message bus would refuse to carry must not get the client into trouble either.
class GeoLocationOnABrokenBus : public testing::Test {
protected:
    /// Answers GetAll with an a{sv} whose content, from the first key on, is given as bytes.
    void readSettings(const Bytes& content, std::uint32_t statedLength = 0) {
        Bytes body;
        const auto length = static_cast<std::uint32_t>(content.get().size());
        body.word(statedLength == 0 ? length : statedLength).align(8).append(content.get());
        const RawBus bus({{"a{sv}", body.get()}});
        client = std::make_unique<GeoLocation>();
    }

    SyslogCapture log;
    std::unique_ptr<GeoLocation> client;
};

TEST_F(GeoLocationOnABrokenBus, ReadsWhatIsInOrder) {
    const RawBus bus(
        {{"a{sv}", Bytes().word(24).align(8).string("latitude").signature("d").real(12.5).get()}});
    const GeoLocation good;
    EXPECT_THAT(log.errors(),
                ElementsAre(line("Failed to setup listen to changed settings", -ECONNRESET)));
}

TEST_F(GeoLocationOnABrokenBus, LogsAKeyThatIsNoText) {
    readSettings(Bytes().string("\xff\xfe").signature("d").real(1.0));
    EXPECT_THAT(log.errors(), ElementsAre(line("Failed to read key", -EBADMSG),
                                          line("Failed to initialize settings", -EBADMSG)));
}

TEST_F(GeoLocationOnABrokenBus, LogsAValueThatIsCutOffAndKeepsWhatCameBefore) {
    readSettings(Bytes()
                     .string("longitude")
                     .signature("d")
                     .real(12.5)
                     .align(8)
                     .string("latitude")
                     .signature("d"),
                 100);
    EXPECT_THAT(log.errors(), ElementsAre(line("Failed to read value", -EBADMSG),
                                          line("Failed to initialize settings", -EBADMSG)));
    EXPECT_EQ(here(*client).longitude, 12.5);
}

TEST_F(GeoLocationOnABrokenBus, LogsAVariantThatCannotBeSkipped) {
    readSettings(Bytes().string("odd").signature("(").word(1));
    ASSERT_EQ(log.errors().size(), 2U);
    EXPECT_THAT(log.errors().front(),
                testing::StartsWith("GeoLocation: Failed to skip variant. Error code: -"));
}
