// SPDX-License-Identifier: Apache-2.0
#include <veskar/GeoLocation.h>

#include "dbus/LocalMessage.h"
#include "dbus/PropertyClients.h"

#include <atomic>
#include <cerrno>
#include <limits>
#include <memory>
#include <string>
#include <thread>
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

std::string line(const std::string& text, int code) {
    return lineWithCode("GeoLocation: " + text, code);
}

std::vector<Body> settings(double latitude, double longitude, double heading, bool valid) {
    return {number("latitude", latitude), number("longitude", longitude),
            number("heading", heading), truth("valid_pos", valid)};
}

/// The position of the device.
Position here(GeoLocation& client) {
    return client.getPosition(0.0, 0.0);
}

MATCHER_P3(IsAt, latitude, longitude, valid, "") {
    return arg.latitude == latitude && arg.longitude == longitude && arg.valid == valid;
}

using GeoLocationClient = PropertyClientTest<GeoLocationService>;
using GeoLocationOnABrokenBus = BrokenBusTest<GeoLocation>;

}  // namespace

TEST_F(GeoLocationClient, ReadsAllSettingsWhenItIsMade) {
    const auto service = makeService(settings(55.5, 13.25, 90.0, true));
    const auto client = makeClient();
    EXPECT_THAT(here(*client), IsAt(55.5, 13.25, true));
    // The heading is east: straight ahead (azimuth 90) only the longitude increases.
    const Position ahead = client->getPosition(100.0, 90.0);
    EXPECT_GT(ahead.longitude, 13.25);
    EXPECT_NEAR(ahead.latitude, 55.5, 1e-12);
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(GeoLocationClient, KeepsWhatAChangeDoesNotName) {
    const auto service = makeService(settings(55.0, 13.0, 0.0, true));
    const auto client = makeClient();
    emitChange(*service, {number("longitude", 14.0)});
    EXPECT_TRUE(loop.iterateUntil([&] { return here(*client).longitude == 14.0; }));
    EXPECT_THAT(here(*client), IsAt(55.0, 14.0, true));
}

TEST_F(GeoLocationClient, ScalesMetresByTheLatitudeThatItReads) {
    const auto service = makeService(settings(45.0, 0.0, 0.0, true));
    const auto client = makeClient();
    EXPECT_NEAR(client->getPosition(100.0, 0.0).longitude, 100.0 / 78649.394, 1e-9);
    emitChange(*service, {number("latitude", 0.0)});
    EXPECT_TRUE(loop.iterateUntil([&] { return here(*client).latitude == 0.0; }));
    EXPECT_NEAR(client->getPosition(100.0, 0.0).longitude, 100.0 / 111226.109, 1e-9);
}

TEST_F(GeoLocationClient, IsReadOnOneThreadWhileTheMainLoopRunsOnAnother) {
    const auto service = makeService(settings(10.0, 10.0, 0.0, true));
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
        emitChange(*service, {number("latitude", i), number("longitude", i)});
    }
    EXPECT_TRUE(loop.waitUntil([&] { return here(*client).latitude == 60.0; }));
    stop = true;
    reader.join();
    EXPECT_EQ(torn, 0) << "a change must appear as a whole";
}

TEST_F(GeoLocationClient, LivesOnWithZerosWithoutTheService) {
    const auto client = makeClient();
    EXPECT_THAT(log.errors(), IsEmpty()) << "a missing service is no error";
    const Position position = client->getPosition(100.0, 30.0);
    EXPECT_THAT(position, IsAt(0.0, 0.0, false));
    EXPECT_EQ(position.altitude, 0.0);
}

TEST_F(GeoLocationClient, MayBeAskedAgainWhenTheServiceComesLate) {
    const auto client = makeClient();
    EXPECT_TRUE(client->initSettings()) << "a missing service is no error";
    const auto service = makeService(settings(55.0, 13.0, 0.0, true));
    EXPECT_TRUE(client->initSettings());
    EXPECT_THAT(here(*client), IsAt(55.0, 13.0, true));
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

TEST_F(GeoLocationClient, TakesAPositionThatIsNotFiniteForNotValid) {
    const auto service = makeService(settings(55.0, 13.0, 0.0, true));
    const auto client = makeClient();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    const auto becomes = [&](bool valid, const std::vector<Body>& content) {
        emitChange(*service, content);
        return loop.iterateUntil([&] { return here(*client).valid == valid; });
    };
    ASSERT_TRUE(here(*client).valid);
    for (const double wrong : {nan, inf, -inf}) {
        EXPECT_TRUE(becomes(false, {number("latitude", wrong), truth("valid_pos", true)}));
        EXPECT_TRUE(becomes(true, {number("latitude", 89.999)}));
        EXPECT_TRUE(becomes(false, {number("longitude", wrong)}));
        EXPECT_TRUE(becomes(true, {number("longitude", 1e300)})) << "finite, however wrong";
    }
    EXPECT_FALSE(client->getPosition(nan, 90.0).valid);
    EXPECT_FALSE(client->getPosition(100.0, inf).valid);
    EXPECT_TRUE(client->getPosition(100.0, 90.0).valid);
    EXPECT_TRUE(becomes(false, {number("heading", nan)})) << "nobody knows where ahead is";
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
    const LocalMessage noneLeft(
        [](sd_bus_message* m) { must(sd_bus_message_append(m, "aa{sv}", 0), "append"); });
    must(sd_bus_message_enter_container(noneLeft.get(), 'a', "a{sv}"), "enter");
    EXPECT_EQ(client->parse(noneLeft.get()), -ENXIO);
    const std::string expected = line("Failed to enter array", -ENXIO);
    EXPECT_THAT(log.errors(), ElementsAre(expected, expected, expected));
}

TEST_F(GeoLocationOnABrokenBus, ReadsWhatIsInOrder) {
    read(Bytes().string("longitude").signature("d").real(12.5));
    EXPECT_EQ(here(*client).longitude, 12.5);
    EXPECT_THAT(log.errors(),
                ElementsAre(line("Failed to setup listen to changed settings", -ECONNRESET)));
}

TEST_F(GeoLocationOnABrokenBus, LogsADictionaryThatEndsWithinAnEntry) {
    read(Bytes().string("longitude").signature("d").real(12.5), 24);
    EXPECT_THAT(log.errors(), ElementsAre(line("Failed to read key", -EBUSY),
                                          line("Failed to initialize settings", -EBUSY)));
}

TEST_F(GeoLocationOnABrokenBus, LogsAKeyThatIsNoText) {
    read(Bytes().string("\xff\xfe").signature("d").real(1.0));
    EXPECT_THAT(log.errors(), ElementsAre(line("Failed to read key", -EBADMSG),
                                          line("Failed to initialize settings", -EBADMSG)));
}

TEST_F(GeoLocationOnABrokenBus, LogsAValueThatIsCutOffAndKeepsWhatCameBefore) {
    read(Bytes()
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
    read(Bytes().string("odd").signature("(").word(1));
    ASSERT_EQ(log.errors().size(), 2U);
    EXPECT_THAT(log.errors().front(),
                testing::StartsWith("GeoLocation: Failed to skip variant. Error code: -"));
}
