// SPDX-License-Identifier: Apache-2.0
#include <veskar/RadarStatus.h>

#include "dbus/LocalMessage.h"
#include "dbus/RawBus.h"
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
using Impl::RadarStatus;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

const std::string name = "com.nolt.Radar1";
const std::string path = "/com/nolt/Radar1";
const FakeService::Member getAll{path, "org.freedesktop.DBus.Properties", "GetAll"};
const FakeService::Member propertiesChanged{path, "org.freedesktop.DBus.Properties",
                                            "PropertiesChanged"};

std::string line(const std::string& text, int code) {
    return "RadarStatus: " + text + ". Error code: " + std::to_string(code) + "\n";
}

/// The line that ends a construction that fails.
std::string setUpLine(const std::string& text, int code) {
    return "GeoLocation: " + text + ". Error code: " + std::to_string(code) + "\n";
}

Body blocked(bool isBlocked) {
    return entries("FailureStatus", {status("blocked", isBlocked ? 3 : 0, isBlocked)});
}

class RadarStatusClient : public testing::Test {
protected:
    /// A client whose changes arrive in `loop`.
    std::unique_ptr<RadarStatus> makeClient() {
        std::unique_ptr<RadarStatus> client;
        loop.asThreadDefault([&] { client = std::make_unique<RadarStatus>(); });
        return client;
    }

    void emitChange(FakeService& service, const std::vector<Body>& content) {
        service.emit(propertiesChanged, changed(name, content));
    }

    void expectDefaults(const RadarStatus& client) {
        EXPECT_TRUE(client.getIsEnabled());
        EXPECT_THAT(client.getFailure(), IsEmpty());
        EXPECT_EQ(client.getRadarProfile(), "area");
    }

    SyslogCapture log;
    PrivateBus bus;
    MainLoop loop;
};

}  // namespace

TEST_F(RadarStatusClient, ReadsAllPropertiesWhenItIsMade) {
    FakeService service(name);
    service.answer(getAll, dictionary({truth("Enabled", false), text("RadarProfile", "road"),
                                       entries("FailureStatus", {status("blocked", 3, true),
                                                                 status("tilted", -1, false)})}));
    const auto client = makeClient();
    EXPECT_FALSE(client->getIsEnabled());
    EXPECT_EQ(client->getRadarProfile(), "road");
    EXPECT_THAT(client->getFailure(),
                ElementsAre(Pair("blocked", Pair(3, true)), Pair("tilted", Pair(-1, false))));
    EXPECT_EQ(service.calls(getAll), 1);
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(RadarStatusClient, AsksForThePropertiesOfTheServicesInterface) {
    FakeService service(name);
    std::string asked;
    service.answer(getAll, dictionary({}));
    service.inspect(getAll, [&](sd_bus_message* call) {
        const char* interface = nullptr;
        must(sd_bus_message_read(call, "s", &interface), "read");
        asked = std::string(sd_bus_message_get_signature(call, 1)) + " " + interface;
    });
    const auto client = makeClient();
    EXPECT_EQ(asked, "s com.nolt.Radar1");
    expectDefaults(*client);
}

TEST_F(RadarStatusClient, FollowsChangesAndKeepsWhatTheyDoNotName) {
    FakeService service(name);
    service.answer(getAll, dictionary({text("RadarProfile", "road"),
                                       entries("FailureStatus", {status("blocked", 3, true),
                                                                 status("tilted", 1, true)})}));
    const auto client = makeClient();
    emitChange(service, {truth("Enabled", false)});
    EXPECT_TRUE(loop.iterateUntil([&] { return !client->getIsEnabled(); }));
    EXPECT_EQ(client->getRadarProfile(), "road");
    emitChange(service,
               {entries("FailureStatus", {status("blocked", 0, false), status("warm", 7, true)}),
                truth("Enabled", true)});
    EXPECT_TRUE(loop.iterateUntil([&] { return client->getIsEnabled(); }));
    EXPECT_THAT(client->getFailure(),
                ElementsAre(Pair("blocked", Pair(0, false)), Pair("tilted", Pair(1, true)),
                            Pair("warm", Pair(7, true))));
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(RadarStatusClient, IsReadOnOneThreadWhileTheMainLoopRunsOnAnother) {
    FakeService service(name);
    service.answer(getAll, dictionary({text("RadarProfile", "road"), blocked(true)}));
    const auto client = makeClient();
    loop.start();
    std::atomic<bool> stop{false};
    std::atomic<int> torn{0};
    std::thread reader([&] {
        while (!stop) {
            client->getIsEnabled();
            const std::string profile = client->getRadarProfile();
            torn += profile == "area" || profile == "road" || profile == "end" ? 0 : 1;
            for (const auto& [failure, failureStatus] : client->getFailure()) {
                const auto& [value, present] = failureStatus;
                torn += (value == 3) == present ? 0 : 1;
            }
        }
    });
    for (int i = 0; i < 50; ++i) {
        const bool even = i % 2 == 0;
        emitChange(service, {truth("Enabled", even), text("RadarProfile", even ? "area" : "road"),
                             blocked(even)});
    }
    emitChange(service, {text("RadarProfile", "end")});
    EXPECT_TRUE(loop.waitUntil([&] { return client->getRadarProfile() == "end"; }));
    stop = true;
    reader.join();
    EXPECT_EQ(torn, 0);
    loop.stop();
}

TEST_F(RadarStatusClient, EndsABurstOfChangesWithTheLastOne) {
    FakeService service(name);
    service.answer(getAll, dictionary({}));
    const auto client = makeClient();
    loop.start();
    for (int i = 1; i <= 10000; ++i) {
        emitChange(service, {text("RadarProfile", std::to_string(i))});
    }
    EXPECT_TRUE(loop.waitUntil([&] { return client->getRadarProfile() == "10000"; }));
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(RadarStatusClient, IgnoresChangesOfAnotherInterface) {
    FakeService service(name);
    service.answer(getAll, dictionary({}));
    const auto client = makeClient();
    service.emit(propertiesChanged, changed("com.nolt.Radar2", {truth("Enabled", false)}));
    emitChange(service, {text("RadarProfile", "road")});
    EXPECT_TRUE(loop.iterateUntil([&] { return client->getRadarProfile() == "road"; }));
    EXPECT_TRUE(client->getIsEnabled());
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(RadarStatusClient, LogsAChangeWithoutInterface) {
    FakeService service(name);
    service.answer(getAll, dictionary({}));
    const auto client = makeClient();
    service.emit(propertiesChanged,
                 [](sd_bus_message* m) { must(sd_bus_message_append(m, "i", 1), "append"); });
    emitChange(service, {text("RadarProfile", "road")});
    EXPECT_TRUE(loop.iterateUntil([&] { return client->getRadarProfile() == "road"; }));
    EXPECT_THAT(log.errors(), ElementsAre(line("Failed to get property interface", -ENXIO)));
}

TEST_F(RadarStatusClient, LivesOnWithItsDefaultsWithoutTheService) {
    const auto client = makeClient();
    expectDefaults(*client);
    ASSERT_EQ(log.errors().size(), 2U);
    EXPECT_THAT(log.errors().front(),
                testing::MatchesRegex("RadarStatus: get property error: .*com.nolt.Radar1.*\n"));
    EXPECT_EQ(log.errors().back(), setUpLine("Failed to initialize settings", -EHOSTUNREACH));
}

TEST_F(RadarStatusClient, DoesNotFollowAServiceThatComesLate) {
    const auto client = makeClient();
    FakeService service(name);
    emitChange(service, {truth("Enabled", false)});
    EXPECT_TRUE(loop.iterateUntilIdle());
    expectDefaults(*client);
    EXPECT_FALSE(client->initStatus()) << "the connection is released";
}

TEST_F(RadarStatusClient, FollowsAServiceThatRestarts) {
    auto service = std::make_unique<FakeService>(name);
    service->answer(getAll, dictionary({truth("Enabled", false)}));
    const auto client = makeClient();
    service.reset();
    EXPECT_TRUE(loop.iterateUntilIdle());
    EXPECT_FALSE(client->getIsEnabled()) << "the last values stay";
    service = std::make_unique<FakeService>(name);
    emitChange(*service, {truth("Enabled", true)});
    EXPECT_TRUE(loop.iterateUntil([&] { return client->getIsEnabled(); }));
}

TEST_F(RadarStatusClient, KeepsItsValuesAndRestsWhenTheBusDies) {
    FakeService service(name);
    service.answer(getAll, dictionary({truth("Enabled", false), blocked(true)}));
    const auto client = makeClient();
    EXPECT_TRUE(loop.iterateUntilIdle());
    bus.kill();
    bool noticed = false;
    EXPECT_TRUE(loop.iterateUntil([&] { return std::exchange(noticed, true); }));
    EXPECT_TRUE(loop.iterateUntilIdle()) << "a dead bus must not keep the main loop busy";
    EXPECT_FALSE(client->getIsEnabled());
    EXPECT_THAT(client->getFailure(), ElementsAre(Pair("blocked", Pair(3, true))));
    EXPECT_FALSE(client->initStatus());
}

TEST_F(RadarStatusClient, TakesARefusalForAFailure) {
    FakeService service(name);
    service.refuse(getAll, "com.nolt.Error.Failed", "not today");
    const auto client = makeClient();
    EXPECT_THAT(log.errors(), ElementsAre("RadarStatus: get property error: not today\n",
                                          setUpLine("Failed to initialize settings", -EIO)));
    expectDefaults(*client);
}

TEST_F(RadarStatusClient, DoesNotWaitForASlowService) {
    FakeService service(name);
    service.hold(getAll);
    const auto client = makeClient();
    EXPECT_THAT(log.errors(), ElementsAre("RadarStatus: get property error: Connection timed out\n",
                                          setUpLine("Failed to initialize settings", -ETIMEDOUT)));
    service.release(dictionary({truth("Enabled", false)}));
    EXPECT_TRUE(loop.iterateUntilIdle());
    expectDefaults(*client);
}

TEST_F(RadarStatusClient, LogsASubscriptionThatIsRefused) {
    const PrivateBus strict(R"(<limit name="max_match_rules_per_connection">0</limit>)");
    FakeService service(name);
    service.answer(getAll, dictionary({truth("Enabled", false)}));
    const auto client = makeClient();
    EXPECT_THAT(log.errors(),
                ElementsAre(setUpLine("Failed to setup listen to changed settings", -ENOBUFS)));
    EXPECT_FALSE(client->getIsEnabled()) << "the values read before stay";
}

TEST_F(RadarStatusClient, LogsABusThatCannotBeOpened) {
    leaveSystemBus();
    const auto client = makeClient();
    EXPECT_THAT(log.errors(), ElementsAre(setUpLine("Failed to open sd bus", -ENOENT)));
    expectDefaults(*client);
}

TEST_F(RadarStatusClient, GivesUpOnAReplyThatIsNoDictionary) {
    FakeService service(name);
    service.answer(getAll, string("no"));
    const auto client = makeClient();
    EXPECT_THAT(log.errors(), ElementsAre(line("Failed to enter array", -ENXIO),
                                          setUpLine("Failed to initialize settings", -ENXIO)));
}

TEST_F(RadarStatusClient, PassesOverUnknownProperties) {
    const auto client = makeClient();
    log.clear();
    const LocalMessage message(
        dictionary({number("Temperature", 40.0), entries("Nested", {truth("Enabled", false)}),
                    truth("enabled", false), text("RadarProfile", "road")}));
    EXPECT_GE(client->parseProperties(message.get()), 0);
    EXPECT_TRUE(client->getIsEnabled()) << "names count letter by letter";
    EXPECT_EQ(client->getRadarProfile(), "road");
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(RadarStatusClient, ParsesEachPropertyByItself) {
    const auto client = makeClient();
    const LocalMessage enabled(
        [](sd_bus_message* m) { must(sd_bus_message_append(m, "v", "b", 0), "append"); });
    EXPECT_GE(client->parseIsEnabled(enabled.get()), 0);
    EXPECT_FALSE(client->getIsEnabled());
    const LocalMessage profile(
        [](sd_bus_message* m) { must(sd_bus_message_append(m, "v", "s", "road"), "append"); });
    EXPECT_GE(client->parseRadarProfile(profile.get()), 0);
    EXPECT_EQ(client->getRadarProfile(), "road");
    const LocalMessage failure([](sd_bus_message* m) {
        must(sd_bus_message_append(m, "v", "a{sv}", 1, "blocked", "(ib)", 4, 1), "append");
    });
    EXPECT_GE(client->parseFailure(failure.get()), 0);
    EXPECT_THAT(client->getFailure(), ElementsAre(Pair("blocked", Pair(4, true))));
}

TEST_F(RadarStatusClient, EndsAtAFailureOfTheWrongTypeAndKeepsWhatCameBefore) {
    const auto client = makeClient();
    log.clear();
    const LocalMessage message(
        dictionary({entries("FailureStatus", {status("blocked", 1, true), integer("tilted", 2),
                                              status("warm", 3, true)}),
                    truth("Enabled", false)}));
    EXPECT_EQ(client->parseProperties(message.get()), -ENXIO);
    EXPECT_THAT(log.errors(), ElementsAre(line("Failed to read failure status value", -ENXIO)));
    EXPECT_THAT(client->getFailure(), ElementsAre(Pair("blocked", Pair(1, true))));
    EXPECT_TRUE(client->getIsEnabled()) << "the walk has ended";
}

// A wrong property type is a breach of contract, in release builds too.
class RadarStatusDeathTest : public RadarStatusClient {
protected:
    RadarStatusDeathTest() { testing::GTEST_FLAG(death_test_style) = "threadsafe"; }

    static void parse(const Body& entry) {
        leaveSystemBus();
        RadarStatus client;
        const LocalMessage message(dictionary({entry}));
        client.parseProperties(message.get());
    }
};

TEST_F(RadarStatusDeathTest, EnabledMustBeABoolean) {
    EXPECT_EXIT(parse(integer("Enabled", 1)), testing::KilledBySignal(SIGABRT), "");
}

TEST_F(RadarStatusDeathTest, RadarProfileMustBeAString) {
    EXPECT_EXIT(parse(truth("RadarProfile", true)), testing::KilledBySignal(SIGABRT), "");
}

TEST_F(RadarStatusDeathTest, FailureStatusMustBeADictionary) {
    EXPECT_EXIT(parse(text("FailureStatus", "none")), testing::KilledBySignal(SIGABRT), "");
}

TEST_F(RadarStatusDeathTest, AChangeOfTheWrongTypeEndsTheProcessFromTheMainLoop) {
    EXPECT_EXIT(
        {
            FakeService service(name);
            service.answer(getAll, dictionary({}));
            const auto client = makeClient();
            emitChange(service, {number("Enabled", 1.0)});
            loop.iterateUntil([] { return false; });
        },
        testing::KilledBySignal(SIGABRT), "");
}

// What a message bus would refuse to carry must not get the client into trouble either.
class RadarStatusOnABrokenBus : public testing::Test {
protected:
    /// Answers GetAll with an a{sv} whose content, from the first key on, is given as bytes.
    void readStatus(const Bytes& content, std::uint32_t statedLength = 0) {
        Bytes body;
        const auto length = static_cast<std::uint32_t>(content.get().size());
        body.word(statedLength == 0 ? length : statedLength).align(8).append(content.get());
        const RawBus bus({{"a{sv}", body.get()}});
        client = std::make_unique<RadarStatus>();
    }

    void expectBadMessage(const std::string& text) {
        EXPECT_THAT(log.errors(),
                    ElementsAre(line(text, -EBADMSG),
                                setUpLine("Failed to initialize settings", -EBADMSG)));
    }

    SyslogCapture log;
    std::unique_ptr<RadarStatus> client;
};

TEST_F(RadarStatusOnABrokenBus, LogsANameThatIsNoText) {
    readStatus(Bytes().string("\xff\xfe").signature("b").word(1));
    expectBadMessage("Failed to read property");
}

TEST_F(RadarStatusOnABrokenBus, LogsAnEnabledThatIsCutOff) {
    readStatus(Bytes().string("Enabled").signature("b"), 100);
    expectBadMessage("Failed to read property value");
}

TEST_F(RadarStatusOnABrokenBus, LogsAProfileThatIsNoText) {
    readStatus(Bytes().string("RadarProfile").signature("s").string("\xff\xfe"));
    expectBadMessage("Failed to read configuration value");
}

TEST_F(RadarStatusOnABrokenBus, LogsAFailureDictionaryThatIsCutOff) {
    readStatus(Bytes().string("FailureStatus").signature("a{sv}"), 100);
    expectBadMessage("Failed to enter FailureStatus array");
}

TEST_F(RadarStatusOnABrokenBus, LogsAFailureNameThatIsNoText) {
    readStatus(Bytes()
                   .string("FailureStatus")
                   .signature("a{sv}")
                   .word(24)
                   .align(8)
                   .string("\xff")
                   .signature("(ib)")
                   .align(8)
                   .word(1)
                   .word(1));
    expectBadMessage("Failed to read failure");
}

TEST_F(RadarStatusOnABrokenBus, LogsAFailureValueThatIsCutOff) {
    readStatus(Bytes()
                   .string("FailureStatus")
                   .signature("a{sv}")
                   .word(100)
                   .align(8)
                   .string("blocked")
                   .signature("(ib)")
                   .align(8)
                   .word(1),
               150);
    expectBadMessage("Failed to read failure status value");
    EXPECT_THAT(client->getFailure(), IsEmpty());
}
