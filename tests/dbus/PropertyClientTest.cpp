// SPDX-License-Identifier: Apache-2.0
// Both clients when services, the bus and threads appear and disappear.
#include "dbus/PropertyClient.h"
#include "dbus/PropertyClients.h"
#include "support/DescriptorLimit.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <dlfcn.h>
#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

namespace {

/// Match rules that have been added.
std::vector<std::string> addedRules;
/// Called before a source is removed from its main context.
std::function<void()> beforeSourceEnds;

}  // namespace

// These definitions override those of the libraries.
extern "C" int sd_bus_add_match(sd_bus* bus, sd_bus_slot** slot, const char* match,
                                sd_bus_message_handler_t callback, void* userdata) {
    addedRules.emplace_back(match);
    static const auto original =
        reinterpret_cast<decltype(&sd_bus_add_match)>(dlsym(RTLD_NEXT, "sd_bus_add_match"));
    return original(bus, slot, match, callback, userdata);
}

extern "C" void g_source_destroy(GSource* source) {
    if (beforeSourceEnds) {
        beforeSourceEnds();
    }
    static const auto original =
        reinterpret_cast<decltype(&g_source_destroy)>(dlsym(RTLD_NEXT, "g_source_destroy"));
    original(source);
}

namespace VeskarTest {

int GeoLocationService::value(Client& client) {
    return static_cast<int>(std::lround(100.0 * client.getPosition(0.0, 0.0).longitude)) - 1;
}

int RadarService::value(Client& client) {
    const std::string profile = client.getRadarProfile();
    return profile == "area" ? -1 : std::stoi(profile);
}

std::string lineWithCode(const std::string& text, int code) {
    return text + ". Error code: " + std::to_string(code) + "\n";
}

std::string setUpLine(const std::string& text, int code) {
    return lineWithCode("GeoLocation: " + text, code);
}

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int none = -1;

template <class Service>
using PropertyClient = PropertyClientTest<Service>;
using Services = testing::Types<GeoLocationService, RadarService>;
TYPED_TEST_SUITE(PropertyClient, Services);

TYPED_TEST(PropertyClient, AsksOnceForThePropertiesOfTheServicesInterface) {
    const auto service = this->makeService({TypeParam::property(5)});
    std::string asked;
    service->inspect(this->getAll, [&](sd_bus_message* call) {
        const char* interface = nullptr;
        must(sd_bus_message_read(call, "s", &interface), "read");
        asked = std::string(sd_bus_message_get_signature(call, 1)) + " " + interface;
    });
    const auto client = this->makeClient();
    EXPECT_EQ(TypeParam::value(*client), 5);
    EXPECT_EQ(asked, std::string("s ") + TypeParam::name);
    EXPECT_EQ(service->calls(this->getAll), 1);
    EXPECT_THAT(this->log.errors(), IsEmpty());
}

TYPED_TEST(PropertyClient, SubscribesToTheChangesOfTheServicesObject) {
    const auto service = this->makeService({});
    addedRules.clear();
    const auto client = this->makeClient();
    EXPECT_THAT(addedRules, ElementsAre(std::string("type='signal',sender='") + TypeParam::name +
                                        "',path='" + TypeParam::path +
                                        "',interface='org.freedesktop.DBus.Properties',"
                                        "member='PropertiesChanged'"));
}

TYPED_TEST(PropertyClient, SubscribesToNothingWithoutTheService) {
    addedRules.clear();
    const auto client = this->makeClient();
    EXPECT_THAT(addedRules, IsEmpty());
}

TYPED_TEST(PropertyClient, FollowsChangesInTheMainContext) {
    const auto service = this->makeService({TypeParam::property(1)});
    const auto client = this->makeClient();
    this->emitChange(*service, {TypeParam::property(2)});
    EXPECT_EQ(TypeParam::value(*client), 1) << "nothing happens before the loop runs";
    EXPECT_TRUE(this->loop.iterateUntil([&] { return TypeParam::value(*client) == 2; }));
    EXPECT_THAT(this->log.errors(), IsEmpty());
}

TYPED_TEST(PropertyClient, MayBeMadeOnTheThreadOfTheMainLoop) {
    const auto service = this->makeService({TypeParam::property(1)});
    this->loop.start();
    std::unique_ptr<typename TypeParam::Client> client;
    this->loop.call([&] { client = std::make_unique<typename TypeParam::Client>(); });
    this->emitChange(*service, {TypeParam::property(2)});
    EXPECT_TRUE(this->loop.waitUntil([&] { return TypeParam::value(*client) == 2; }));
}

TYPED_TEST(PropertyClient, MayBeMadeAndEndWhileTheMainLoopRunsOnAnotherThread) {
    const auto service = this->makeService({TypeParam::property(1)});
    MainLoop global(MainLoop::Context::GlobalDefault);
    global.start();
    for (int i = 2; i < 22; ++i) {
        typename TypeParam::Client client;
        this->emitChange(*service, {TypeParam::property(i)});
        EXPECT_TRUE(global.waitUntil([&] { return TypeParam::value(client) == i; }));
        // Not yet received when the client is destroyed.
        this->emitChange(*service, {TypeParam::property(0)});
    }
    EXPECT_THAT(this->log.errors(), IsEmpty());
}

TYPED_TEST(PropertyClient, EndsABurstOfChangesWithTheLastOne) {
    const auto service = this->makeService({TypeParam::property(0)});
    const auto client = this->makeClient();
    this->loop.start();
    for (int i = 1; i <= 10000; ++i) {
        this->emitChange(*service, {TypeParam::property(i)});
    }
    EXPECT_TRUE(this->loop.waitUntil([&] { return TypeParam::value(*client) == 10000; }));
    EXPECT_THAT(this->log.errors(), IsEmpty());
}

TYPED_TEST(PropertyClient, AnswersDuringAFloodOfChangesRightAndWrong) {
    const auto service = this->makeService({TypeParam::property(0)});
    const auto client = this->makeClient();
    this->loop.start();
    std::atomic<bool> isOver{false};
    std::atomic<int> answers{0};
    std::thread reader([&] {
        while (!isOver) {
            EXPECT_GE(TypeParam::value(*client), 0);
            ++answers;
        }
    });
    constexpr int signals = 30000;
    const std::vector<std::function<void(int)>> kinds = {
        [&](int i) { this->emitChange(*service, {TypeParam::property(i % 1000)}); },
        [&](int) { this->emitChange(*service, {TypeParam::unknown()}); },
        [&](int) { this->emitChange(*service, {}); },
        [&](int) {
            service->emit(this->propertiesChanged,
                          changed(std::string(TypeParam::name) + "x", {TypeParam::property(0)}));
        },
        [&](int) {
            service->emit(this->propertiesChanged, [](sd_bus_message* m) {
                must(sd_bus_message_append(m, "i", 1), "append");
            });
        },
        [&](int) { service->emit(this->propertiesChanged, string(TypeParam::name)); },
    };
    for (int i = 0; i < signals; ++i) {
        kinds[static_cast<std::size_t>(i) % kinds.size()](i);
    }
    this->emitChange(*service, {TypeParam::property(5000)});
    EXPECT_TRUE(this->loop.waitUntil([&] { return TypeParam::value(*client) == 5000; }));
    isOver = true;
    reader.join();
    EXPECT_GT(answers, 100);
    const std::size_t each = signals / kinds.size();
    EXPECT_THAT(
        this->log.errors(),
        testing::AllOf(
            SizeIs(2 * each),
            Contains(lineWithCode(TypeParam::interfaceFailed, -ENXIO))
                .Times(static_cast<int>(each)),
            Contains(lineWithCode(TypeParam::arrayFailed, -ENXIO)).Times(static_cast<int>(each))));
}

TYPED_TEST(PropertyClient, IgnoresChangesOfAnotherInterface) {
    const auto service = this->makeService({TypeParam::property(1)});
    const auto client = this->makeClient();
    int least = 1;
    service->emit(this->propertiesChanged,
                  changed(std::string(TypeParam::name) + "x", {TypeParam::property(0)}));
    this->emitChange(*service, {TypeParam::property(2)});
    EXPECT_TRUE(this->loop.iterateUntil([&] {
        least = std::min(least, TypeParam::value(*client));
        return TypeParam::value(*client) == 2;
    }));
    EXPECT_EQ(least, 1);
    EXPECT_THAT(this->log.errors(), IsEmpty());
}

TYPED_TEST(PropertyClient, LogsAChangeWithoutInterface) {
    const auto service = this->makeService({TypeParam::property(1)});
    const auto client = this->makeClient();
    service->emit(this->propertiesChanged,
                  [](sd_bus_message* m) { must(sd_bus_message_append(m, "i", 1), "append"); });
    this->emitChange(*service, {TypeParam::property(2)});
    EXPECT_TRUE(this->loop.iterateUntil([&] { return TypeParam::value(*client) == 2; }));
    EXPECT_THAT(this->log.errors(), ElementsAre(lineWithCode(TypeParam::interfaceFailed, -ENXIO)));
}

TYPED_TEST(PropertyClient, HearsOneSignalOfOneObjectOfOneServiceOnly) {
    const auto service = this->makeService({TypeParam::property(1)});
    FakeService stranger("com.nolt.Stranger");
    const auto client = this->makeClient();
    const Body content = changed(TypeParam::name, {TypeParam::property(0)});
    const FakeService::Member& signal = this->propertiesChanged;
    stranger.emit(signal, content);
    service->emit({signal.path + "x", signal.interface, signal.name}, content);
    service->emit({signal.path, signal.interface + "x", signal.name}, content);
    service->emit({signal.path, signal.interface, signal.name + "x"}, content);
    int least = 1;
    this->emitChange(*service, {TypeParam::property(2)});
    EXPECT_TRUE(this->loop.iterateUntil([&] {
        least = std::min(least, TypeParam::value(*client));
        return TypeParam::value(*client) == 2;
    }));
    EXPECT_EQ(least, 1);
    EXPECT_THAT(this->log.errors(), IsEmpty());
}

TYPED_TEST(PropertyClient, DoesNotFollowAServiceThatComesLate) {
    const auto client = this->makeClient();
    const auto service = this->makeService({TypeParam::property(1)});
    this->emitChange(*service, {TypeParam::property(2)});
    EXPECT_TRUE(this->loop.iterateUntilIdle());
    EXPECT_EQ(TypeParam::value(*client), none);
}

TYPED_TEST(PropertyClient, FollowsAServiceThatRestarts) {
    auto service = this->makeService({TypeParam::property(1)});
    const auto client = this->makeClient();
    service.reset();
    EXPECT_TRUE(this->loop.iterateUntilIdle());
    EXPECT_EQ(TypeParam::value(*client), 1) << "the last values stay";
    service = this->makeService({});
    this->emitChange(*service, {TypeParam::property(2)});
    EXPECT_TRUE(this->loop.iterateUntil([&] { return TypeParam::value(*client) == 2; }));
    EXPECT_THAT(this->log.errors(), IsEmpty());
}

TYPED_TEST(PropertyClient, KeepsItsValuesAndRestsWhenTheBusDies) {
    const auto service = this->makeService({TypeParam::property(1)});
    const auto client = this->makeClient();
    EXPECT_TRUE(this->loop.iterateUntilIdle());
    this->bus.kill();
    bool noticed = false;
    EXPECT_TRUE(this->loop.iterateUntil([&] { return std::exchange(noticed, true); }));
    EXPECT_TRUE(this->loop.iterateUntilIdle()) << "a dead bus must not keep the main loop busy";
    EXPECT_EQ(TypeParam::value(*client), 1);
    EXPECT_FALSE(TypeParam::query(*client));
    EXPECT_EQ(TypeParam::value(*client), 1);
}

TYPED_TEST(PropertyClient, TakesARefusalForAFailureAndReleasesTheBus) {
    const auto service = this->makeService({});
    service->refuse(this->getAll, "com.nolt.Error.Failed", "not today");
    const auto client = this->makeClient();
    EXPECT_THAT(this->log.errors(), ElementsAre(std::string(TypeParam::callFailed) + "not today\n",
                                                setUpLine("Failed to initialize settings", -EIO)));
    service->answer(this->getAll, dictionary({TypeParam::property(1)}));
    this->log.clear();
    EXPECT_FALSE(TypeParam::query(*client));
    EXPECT_EQ(service->calls(this->getAll), 1) << "there is no connection any more";
    EXPECT_THAT(this->log.errors(),
                ElementsAre(std::string(TypeParam::callFailed) + "Invalid argument\n"));
    this->emitChange(*service, {TypeParam::property(2)});
    EXPECT_TRUE(this->loop.iterateUntilIdle());
    EXPECT_EQ(TypeParam::value(*client), none);
}

TYPED_TEST(PropertyClient, DoesNotWaitForASlowService) {
    const auto service = this->makeService({});
    service->hold(this->getAll);
    const auto client = this->makeClient();
    EXPECT_THAT(this->log.errors(),
                ElementsAre(std::string(TypeParam::callFailed) + "Connection timed out\n",
                            setUpLine("Failed to initialize settings", -ETIMEDOUT)));
    service->release(dictionary({TypeParam::property(1)}));
    EXPECT_TRUE(this->loop.iterateUntilIdle());
    EXPECT_EQ(TypeParam::value(*client), none);
}

TYPED_TEST(PropertyClient, LeavesAServiceAloneThatHasNotAnsweredARepeatedQuery) {
    const auto service = this->makeService({TypeParam::property(1)});
    const auto client = this->makeClient();
    service->hold(this->getAll);
    const FreshBudget later;
    EXPECT_FALSE(TypeParam::query(*client));
    EXPECT_FALSE(TypeParam::query(*client));
    EXPECT_EQ(service->calls(this->getAll), 2);
    EXPECT_THAT(this->log.errors(),
                ElementsAre(std::string(TypeParam::callFailed) + "Connection timed out\n"));
    EXPECT_EQ(TypeParam::value(*client), 1);
    this->emitChange(*service, {TypeParam::property(2)});
    EXPECT_TRUE(this->loop.iterateUntil([&] { return TypeParam::value(*client) == 2; }))
        << "its changes are heard all the same";
}

TYPED_TEST(PropertyClient, GivesUpOnAReplyThatIsNoDictionary) {
    const auto service = this->makeService({});
    service->answer(this->getAll, string("no"));
    const auto client = this->makeClient();
    EXPECT_THAT(this->log.errors(),
                ElementsAre(lineWithCode(TypeParam::arrayFailed, -ENXIO),
                            setUpLine("Failed to initialize settings", -ENXIO)));
}

TYPED_TEST(PropertyClient, TakesWhatARepeatedQueryFinds) {
    const auto service = this->makeService({TypeParam::property(1)});
    const auto client = this->makeClient();
    service->answer(this->getAll, dictionary({TypeParam::property(2)}));
    EXPECT_TRUE(TypeParam::query(*client));
    EXPECT_EQ(TypeParam::value(*client), 2);
    service->answer(this->getAll, string("no"));
    EXPECT_FALSE(TypeParam::query(*client));
    EXPECT_EQ(TypeParam::value(*client), 2);
}

TYPED_TEST(PropertyClient, LogsASubscriptionThatIsRefusedAndKeepsWhatItHasRead) {
    const PrivateBus strict(R"(<limit name="max_match_rules_per_connection">0</limit>)");
    const auto service = this->makeService({TypeParam::property(1)});
    const auto client = this->makeClient();
    EXPECT_THAT(this->log.errors(),
                ElementsAre(setUpLine("Failed to setup listen to changed settings", -ENOBUFS)));
    EXPECT_EQ(TypeParam::value(*client), 1);
}

TYPED_TEST(PropertyClient, LogsABusThatCannotBeOpened) {
    leaveSystemBus();
    const auto client = this->makeClient();
    EXPECT_THAT(this->log.errors(), ElementsAre(setUpLine("Failed to open sd bus", -ENOENT)));
    EXPECT_EQ(TypeParam::value(*client), none);
}

TYPED_TEST(PropertyClient, LogsALoopThatCannotBeMade) {
    {
        const DescriptorLimit onlyTheBus(1);
        const auto client = this->makeClient();
        EXPECT_EQ(TypeParam::value(*client), none);
    }
    EXPECT_THAT(this->log.errors(), ElementsAre(setUpLine("Failed to create sd event", -EMFILE)));
}

// A change may still be delivered on the main loop's thread until the bridge has left the context.
class EndOfAClient : public PropertyClientTest<RadarService> {
protected:
    void TearDown() override { beforeSourceEnds = nullptr; }
};

TEST_F(EndOfAClient, HasItsHandlerUntilTheBridgeHasEnded) {
    auto held = std::make_shared<int>();
    const std::weak_ptr<int> watched = held;
    auto client = std::make_unique<Impl::PropertyClient>(
        Impl::PropertyClient::Service{RadarService::name, RadarService::path});
    loop.asThreadDefault([&] {
        client->setUp([&] { client->follow([held](sd_bus_message* /*signal*/) { return 0; }); });
    });
    held.reset();
    bool isThere = false;
    beforeSourceEnds = [&] { isThere = !watched.expired(); };
    client.reset();
    EXPECT_TRUE(isThere);
    EXPECT_TRUE(watched.expired());
}

TEST_F(EndOfAClient, HasItsValuesUntilTheBridgeHasEnded) {
    const std::string profile(1000, 'p');
    const auto service = makeService({text("RadarProfile", profile)});
    auto client = makeClient();
    std::string last;
    beforeSourceEnds = [&, ending = client.get()] { last = ending->getRadarProfile(); };
    client.reset();
    EXPECT_EQ(last, profile);
}

}  // namespace
}  // namespace VeskarTest
