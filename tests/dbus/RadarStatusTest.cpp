// SPDX-License-Identifier: Apache-2.0
#include <veskar/RadarStatus.h>

#include "dbus/LocalMessage.h"
#include "dbus/PropertyClients.h"

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

std::string line(const std::string& text, int code) {
    return lineWithCode("RadarStatus: " + text, code);
}

Body blocked(bool isBlocked) {
    return entries("FailureStatus", {status("blocked", isBlocked ? 3 : 0, isBlocked)});
}

class RadarStatusClient : public PropertyClientTest<RadarService> {
protected:
    int marks = 0;
};

}  // namespace

TEST_F(RadarStatusClient, ReadsAllPropertiesWhenItIsMade) {
    const auto service = makeService(
        {truth("Enabled", false), text("RadarProfile", "road"),
         entries("FailureStatus", {status("blocked", 3, true), status("tilted", -1, false)})});
    const auto client = makeClient();
    EXPECT_FALSE(client->getIsEnabled());
    EXPECT_EQ(client->getRadarProfile(), "road");
    EXPECT_THAT(client->getFailure(),
                ElementsAre(Pair("blocked", Pair(3, true)), Pair("tilted", Pair(-1, false))));
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(RadarStatusClient, FollowsChangesAndKeepsWhatTheyDoNotName) {
    const auto service = makeService(
        {text("RadarProfile", "road"),
         entries("FailureStatus", {status("blocked", 3, true), status("tilted", 1, true)})});
    const auto client = makeClient();
    emitChange(*service, {truth("Enabled", false)});
    EXPECT_TRUE(loop.iterateUntil([&] { return !client->getIsEnabled(); }));
    EXPECT_EQ(client->getRadarProfile(), "road");
    emitChange(*service,
               {entries("FailureStatus", {status("blocked", 0, false), status("warm", 7, true)}),
                truth("Enabled", true)});
    EXPECT_TRUE(loop.iterateUntil([&] { return client->getIsEnabled(); }));
    EXPECT_THAT(client->getFailure(),
                ElementsAre(Pair("blocked", Pair(0, false)), Pair("tilted", Pair(1, true)),
                            Pair("warm", Pair(7, true))));
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(RadarStatusClient, IsReadOnOneThreadWhileTheMainLoopRunsOnAnother) {
    const auto service = makeService({text("RadarProfile", "road"), blocked(true)});
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
        emitChange(*service, {truth("Enabled", even), text("RadarProfile", even ? "area" : "road"),
                              blocked(even)});
    }
    emitChange(*service, {text("RadarProfile", "end")});
    EXPECT_TRUE(loop.waitUntil([&] { return client->getRadarProfile() == "end"; }));
    stop = true;
    reader.join();
    EXPECT_EQ(torn, 0);
    loop.stop();
}

TEST_F(RadarStatusClient, KeepsAThousandFailures) {
    const auto service = makeService({});
    const auto client = makeClient();
    const auto report = [&](int first, int last, int value) {
        std::vector<Body> failures;
        for (int i = first; i < last; ++i) {
            failures.push_back(status("failure" + std::to_string(i), value, true));
        }
        // The profile comes last and marks the end of the message.
        const std::string mark = std::to_string(++marks);
        emitChange(*service, {entries("FailureStatus", failures), text("RadarProfile", mark)});
        EXPECT_TRUE(loop.iterateUntil([&] { return client->getRadarProfile() == mark; }));
        return client->getFailure();
    };
    EXPECT_EQ(report(0, 999, 1).size(), 999U);
    EXPECT_EQ(report(999, 1000, 1).size(), 1000U);
    EXPECT_EQ(report(1000, 1001, 1).size(), 1000U);
    RadarStatus::Failures failures = report(998, 20000, 2);
    EXPECT_EQ(failures.size(), 1000U);
    EXPECT_EQ(failures.at("failure997"), std::make_pair(1, true));
    EXPECT_EQ(failures.at("failure998"), std::make_pair(2, true)) << "known ones are kept up";
    EXPECT_EQ(failures.at("failure999"), std::make_pair(2, true));
    EXPECT_EQ(failures.count("failure1000"), 0U);
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(RadarStatusClient, KeepsTheFirstThousandOfOneMessage) {
    std::vector<Body> failures;
    constexpr int names = 1200;  // an emulated client must read them within the limit of a call
    for (int i = 0; i < names; ++i) {
        failures.push_back(status("failure" + std::to_string(i), 1, true));
        failures.push_back(status("failure0", i, true));
    }
    const auto service = makeService({entries("FailureStatus", failures)});
    const auto client = makeClient();
    EXPECT_EQ(client->getFailure().size(), 1000U);
    EXPECT_EQ(client->getFailure().count("failure999"), 1U);
    EXPECT_EQ(client->getFailure().at("failure0"), std::make_pair(names - 1, true));
}

TEST_F(RadarStatusClient, LivesOnWithItsDefaultsWithoutTheService) {
    const auto client = makeClient();
    EXPECT_TRUE(client->getIsEnabled());
    EXPECT_THAT(client->getFailure(), IsEmpty());
    EXPECT_EQ(client->getRadarProfile(), "area");
    ASSERT_EQ(log.errors().size(), 2U);
    EXPECT_THAT(log.errors().front(),
                testing::MatchesRegex("RadarStatus: get property error: .*com.nolt.Radar1.*\n"));
    EXPECT_EQ(log.errors().back(), setUpLine("Failed to initialize settings", -EHOSTUNREACH));
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

// A wrong property type is a contract violation, in release builds too.
class RadarStatusDeathTest : public RadarStatusClient {
protected:
    RadarStatusDeathTest() { testing::GTEST_FLAG(death_test_style) = "threadsafe"; }

    /// Excludes a failing fake and an uncaught exception, which would end the process likewise.
    const testing::Matcher<const std::string&> isSilent = testing::Not(
        testing::AnyOf(testing::HasSubstr("failed with"), testing::HasSubstr("terminate called")));

    static void parse(const Body& entry) {
        leaveSystemBus();
        RadarStatus client;
        const LocalMessage message(dictionary({entry}));
        client.parseProperties(message.get());
    }
};

TEST_F(RadarStatusDeathTest, EnabledMustBeABoolean) {
    EXPECT_EXIT(parse(integer("Enabled", 1)), testing::KilledBySignal(SIGABRT), isSilent);
}

TEST_F(RadarStatusDeathTest, RadarProfileMustBeAString) {
    EXPECT_EXIT(parse(truth("RadarProfile", true)), testing::KilledBySignal(SIGABRT), isSilent);
}

TEST_F(RadarStatusDeathTest, FailureStatusMustBeADictionary) {
    EXPECT_EXIT(parse(text("FailureStatus", "none")), testing::KilledBySignal(SIGABRT), isSilent);
}

TEST_F(RadarStatusDeathTest, AChangeOfTheWrongTypeEndsTheProcessFromTheMainLoop) {
    EXPECT_EXIT(
        {
            const auto service = makeService({});
            const auto client = makeClient();
            emitChange(*service, {number("Enabled", 1.0)});
            loop.iterateUntil([] { return false; });
        },
        testing::KilledBySignal(SIGABRT), isSilent);
}

class RadarStatusOnABrokenBus : public BrokenBusTest<RadarStatus> {
protected:
    void expectBadMessage(const std::string& text) {
        EXPECT_THAT(log.errors(),
                    ElementsAre(line(text, -EBADMSG),
                                setUpLine("Failed to initialize settings", -EBADMSG)));
    }
};

TEST_F(RadarStatusOnABrokenBus, LogsANameThatIsNoText) {
    read(Bytes().string("\xff\xfe").signature("b").word(1));
    expectBadMessage("Failed to read property");
}

TEST_F(RadarStatusOnABrokenBus, LogsAnEnabledThatIsCutOff) {
    read(Bytes().string("Enabled").signature("b"), 100);
    expectBadMessage("Failed to read property value");
}

TEST_F(RadarStatusOnABrokenBus, LogsAProfileThatIsNoText) {
    read(Bytes().string("RadarProfile").signature("s").string("\xff\xfe"));
    expectBadMessage("Failed to read configuration value");
}

TEST_F(RadarStatusOnABrokenBus, LogsAFailureDictionaryThatIsCutOff) {
    read(Bytes().string("FailureStatus").signature("a{sv}"), 100);
    expectBadMessage("Failed to enter FailureStatus array");
}

TEST_F(RadarStatusOnABrokenBus, LogsAFailureNameThatIsNoText) {
    read(Bytes()
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
    read(Bytes()
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
