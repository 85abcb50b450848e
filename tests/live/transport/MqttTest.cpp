// SPDX-License-Identifier: Apache-2.0
// Clients of a real broker.
#include <veskar-host/InputError.h>

#include "live/support/Broker.h"
#include "live/support/Certificates.h"
#include "live/support/LoopUntil.h"
#include "live/support/Proxy.h"
#include "live/support/Received.h"
#include "live/support/SecretFile.h"
#include "live/transport/MqttInput.h"
#include "live/transport/MqttOutput.h"
#include "support/Pipe.h"
#include "support/TemporaryDirectory.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <list>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using namespace Veskar::Live;
using namespace VeskarTest;
using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Veskar::FileDescriptor;
using Veskar::Host::InputError;

namespace {

MqttOptions at(std::uint16_t port) {
    MqttOptions options;
    options.host = "127.0.0.1";
    options.port = port;
    options.firstRetry = 20ms;
    options.longestRetry = 200ms;
    return options;
}

void expectAccounted(const OutputCounters& counters) {
    EXPECT_EQ(counters.accepted,
              counters.written + counters.dropped + counters.failed + counters.waiting);
}

class Mqtt : public testing::Test {
protected:
    bool until(const std::function<bool()>& condition) { return loopUntil(loop, condition); }
    bool connected(const MqttClient& client) {
        return until([&] { return client.counters().isConnected; });
    }
    /// Publishes until a subscription is in effect: until then, messages are nobody's.
    bool reached(MqttOutput& output, const Received& by) {
        const std::size_t before = by.probes;
        return until([&] {
            output.send(Received::probe);
            return by.probes > before;
        });
    }
    std::string secret(const std::string& user, const std::string& password) const {
        return secretFile(directory.file(user), user, password);
    }

    const TemporaryDirectory directory;
    EventLoop loop;
    ToldFaults log;
    Received received;
};

// Packets of a broker.
const std::string accepted("\x20\x02\x00\x00", 4);
const std::string acceptedInVersion5("\x20\x03\x00\x00\x00", 5);
const std::string unknownVersion("\x20\x02\x00\x01", 4);
const std::string takenOver("\xe0\x02\x8e\x00", 4);

/// Answers requests to connect as told, depending on their version of the protocol, or hangs up. It
/// refuses subscriptions.
class ScriptedBroker {
public:
    ScriptedBroker(EventLoop& loop, std::map<int, std::string> answers)
        : loop_(loop),
          answers_(std::move(answers)),
          acceptor_(loop, ListeningSocket::tcp({"127.0.0.1", 0}), "broker", log_.faults,
                    [this](FileDescriptor client) { add(std::move(client)); }) {}

    std::uint16_t port() const { return acceptor_.port(); }

    std::vector<int> versions;          ///< of the requests to connect
    std::vector<std::string> requests;  ///< these

private:
    struct Connection {
        FileDescriptor client;
        EventLoop::Watch watch;
    };

    void add(FileDescriptor client) {
        const auto added = connections_.emplace(connections_.end());
        added->client = std::move(client);
        added->watch = loop_.watch(added->client.get(), EPOLLIN, [this, added](std::uint32_t) {
            if (!answer(added->client.get(), readSome(added->client.get()))) {
                connections_.erase(added);
            }
        });
    }

    /// @return whether the connection goes on
    bool answer(int client, const std::string& request) {
        constexpr char connect = '\x10';
        constexpr char subscribe = '\x82';
        if (request.size() > 8 && request[0] == connect) {
            versions.push_back(request[8]);
            requests.push_back(request);
            const auto found = answers_.find(request[8]);
            if (found != answers_.end()) {
                writeAll(client, found->second);
            }
            return found != answers_.end();
        }
        if (request.size() > 4 && request[0] == subscribe) {
            writeAll(client, "\x90\x03" + request.substr(2, 2) + "\x80");
        }
        return !request.empty();
    }

    EventLoop& loop_;
    std::map<int, std::string> answers_;
    ToldFaults log_;
    std::list<Connection> connections_;
    Acceptor acceptor_;
};

}  // namespace

TEST_F(Mqtt, DeliversMessagesOfEveryQualityAndVersion) {
    const Broker broker;
    for (const MqttProtocol protocol : {MqttProtocol::V5, MqttProtocol::V311}) {
        MqttOptions options = at(broker.port());
        options.protocol = protocol;
        MqttClient client(loop, options, log.faults);
        for (int qos = 0; qos <= 2; ++qos) {
            const std::string topic =
                "quality/" + std::to_string(qos) + std::to_string(static_cast<int>(protocol));
            Received here;
            const MqttInput input(client, topic, qos, here.receiver());
            MqttOutput output(client, {topic, qos, false}, {});
            ASSERT_TRUE(reached(output, here));
            ASSERT_TRUE(until([&] { return output.isDrained(); }));
            for (int i = 0; i < 100; ++i) {
                output.send(std::to_string(i));
            }
            EXPECT_TRUE(until([&] { return output.isDrained() && here.texts.size() == 100; }));
            for (std::size_t i = 0; i < 100; ++i) {
                EXPECT_EQ(here.texts[i], std::to_string(i));
            }
            EXPECT_EQ(here.channels.back(), topic);
            EXPECT_EQ(output.counters().accepted, output.counters().written);
            EXPECT_EQ(input.counters().messages, 100 + here.probes);
        }
        EXPECT_EQ(client.counters().protocol, protocol == MqttProtocol::V5 ? "5" : "3.1.1");
    }
    EXPECT_THAT(log.told(), IsEmpty());
}

TEST_F(Mqtt, GivesEachInputWhatItsFilterMatches) {
    const Broker broker;
    for (const MqttProtocol protocol : {MqttProtocol::V5, MqttProtocol::V311}) {
        MqttOptions options = at(broker.port());
        options.protocol = protocol;
        MqttClient client(loop, options, log.faults);
        Received video;
        Received same;
        Received all;
        const MqttInput some(client, "site/+/video/#", 0, video.receiver());
        const MqttInput twin(client, "site/+/video/#", 0, same.receiver());
        const MqttInput any(client, "site/#", 0, all.receiver());
        MqttOutput output(client, {"site/probe", 0, false}, {});
        ASSERT_TRUE(reached(output, all));
        output.sendTo("site/north/video/1", "a");
        output.sendTo("site/north/radar/1", "b");
        output.sendTo("site/south/video", "c");
        output.sendTo("elsewhere", "d");
        output.send("end");
        EXPECT_TRUE(until([&] { return all.texts.size() == 4; }));
        loopUntilIdle(loop);
        EXPECT_THAT(video.texts, ElementsAre("a", "c"));
        EXPECT_THAT(video.channels, ElementsAre("site/north/video/1", "site/south/video"));
        EXPECT_EQ(same.texts, video.texts);
        EXPECT_THAT(all.texts, ElementsAre("a", "b", "c", "end"));
    }
}

TEST_F(Mqtt, TakesTwoPublishersOfOneTopic) {
    const Broker broker;
    MqttClient subscriber(loop, at(broker.port()), log.faults);
    const MqttInput input(subscriber, "tracks", 1, received.receiver());
    MqttClient first(loop, at(broker.port()), log.faults);
    MqttClient second(loop, at(broker.port()), log.faults);
    MqttOutput one(first, {"tracks", 1, false}, {});
    MqttOutput two(second, {"tracks", 1, false}, {});
    ASSERT_TRUE(reached(one, received));
    ASSERT_TRUE(connected(second));
    for (int i = 0; i < 50; ++i) {
        one.send("one " + std::to_string(i));
        two.send("two " + std::to_string(i));
    }
    EXPECT_TRUE(until([&] { return received.texts.size() == 100; }));
    EXPECT_EQ(std::set<std::string>(received.texts.begin(), received.texts.end()).size(), 100U);
}

TEST_F(Mqtt, DropsWhatTheBrokerHasKept) {
    const Broker broker;
    MqttClient publisher(loop, at(broker.port()), log.faults);
    MqttOutput output(publisher, {"tracks", 1, true}, {});
    output.send("old");
    ASSERT_TRUE(until([&] { return output.isDrained(); }));
    MqttClient client(loop, at(broker.port()), log.faults);
    const MqttInput input(client, "tracks", 1, received.receiver());
    EXPECT_TRUE(until([&] { return input.counters().retained == 1; }));
    output.send("new");
    EXPECT_TRUE(until([&] { return !received.texts.empty(); }));
    EXPECT_THAT(received.texts, ElementsAre("new"));
}

TEST_F(Mqtt, KeepsMessagesForABrokerThatIsNotThereYet) {
    Broker broker;
    broker.kill();
    MqttClient client(loop, at(broker.port()), log.faults);
    MqttOutput output(client, {"tracks", 1, false}, {10, 1 << 20});
    for (int i = 0; i < 1000; ++i) {
        output.send(std::to_string(i));
        loop.turn(0ms);
    }
    EXPECT_EQ(output.counters().dropped, 990U);
    EXPECT_TRUE(until([&] { return client.counters().failed >= 3; }));
    EXPECT_THAT(log.told(), ElementsAre("broker 127.0.0.1:" + std::to_string(broker.port()) +
                                        ": cannot connect: Connection refused"));
    EXPECT_FALSE(client.counters().isConnected);

    broker.restart();
    MqttClient subscriber(loop, at(broker.port()), log.faults);
    const MqttInput input(subscriber, "tracks", 1, received.receiver());
    EXPECT_TRUE(until([&] { return output.isDrained(); }));
    EXPECT_EQ(output.counters().written, 10U) << "the newest";
    EXPECT_TRUE(reached(output, received));
    expectAccounted(output.counters());
}

TEST_F(Mqtt, ComesBackAfterTheBrokerWasKilledAndSubscribesAgain) {
    Broker broker;
    MqttClient publisher(loop, at(broker.port()), log.faults);
    MqttClient subscriber(loop, at(broker.port()), log.faults);
    MqttOutput output(publisher, {"tracks", 0, false}, {});
    const MqttInput input(subscriber, "tracks", 0, received.receiver());
    ASSERT_TRUE(reached(output, received));
    for (int round = 1; round <= 3; ++round) {
        broker.kill();
        for (int i = 0; i < 100; ++i) {
            output.send("meanwhile");
            loop.turn(1ms);
        }
        EXPECT_TRUE(until([&] { return !subscriber.counters().isConnected; }));
        broker.restart();
        EXPECT_TRUE(reached(output, received));
        EXPECT_EQ(subscriber.counters().connections, round + 1U);
        EXPECT_EQ(subscriber.counters().lost, std::uint64_t(round));
    }
    EXPECT_TRUE(until([&] { return output.isDrained(); }));
    EXPECT_EQ(output.counters().dropped, 0U);
    EXPECT_EQ(output.counters().accepted, output.counters().written);
    EXPECT_THAT(log.told(), testing::Contains(HasSubstr("lost the connection")));
    EXPECT_LE(log.told().size(), 2U) << "each cause once a minute";
}

TEST_F(Mqtt, LosesNothingThatWasAcceptedWhenConnectionsAreCut) {
    const Broker broker;
    MqttClient subscriber(loop, at(broker.port()), log.faults);
    const MqttInput input(subscriber, "tracks", 1, received.receiver());
    Proxy proxy(loop, broker.port());
    MqttClient publisher(loop, at(proxy.port()), log.faults);
    MqttOutput output(publisher, {"tracks", 1, false}, {});
    ASSERT_TRUE(reached(output, received));
    // Long messages, so that connections are cut in the middle of one.
    const std::string padding(100000, 'x');
    std::size_t sent = proxy.sent();
    for (int i = 0; i < 100; ++i) {
        output.send(std::to_string(i) + " " + padding);
        loop.turn(0ms);
        if (proxy.sent() > sent + 1500000) {
            proxy.cut();
            sent = proxy.sent();
        }
        if (i % 10 == 9) {
            ASSERT_TRUE(until([&] { return output.isDrained(); }));
        }
    }
    std::set<int> arrived;
    EXPECT_TRUE(until([&] {
        for (const std::string& text : std::exchange(received.texts, {})) {
            arrived.insert(std::stoi(text));
        }
        return arrived.size() == 100;
    }));
    EXPECT_GE(publisher.counters().lost, 2U);
    EXPECT_EQ(output.counters().written, output.counters().accepted);
}

TEST_F(Mqtt, TellsWhetherItIsThere) {
    const Broker broker;
    MqttClient observer(loop, at(broker.port()), log.faults);
    const MqttInput input(observer, "veskar/+", 1, received.receiver());
    MqttOutput probe(observer, {"veskar/probe", 0, false}, {});
    ASSERT_TRUE(reached(probe, received));
    Proxy proxy(loop, broker.port());
    {
        MqttOptions options = at(proxy.port());
        options.availability = MqttAvailability{"veskar/there"};
        const MqttClient client(loop, options, log.faults);
        EXPECT_TRUE(until([&] { return received.texts.size() == 1; }));
        proxy.cut();
        EXPECT_TRUE(until([&] { return received.texts.size() == 3; }));
        EXPECT_THAT(received.texts, ElementsAre("online", "offline", "online"));
        received.texts.clear();
    }
    EXPECT_TRUE(until([&] { return !received.texts.empty(); }));
    EXPECT_THAT(received.texts, ElementsAre("offline")) << "orderly";
    // Whoever comes later learns it, too.
    MqttClient late(loop, at(broker.port()), log.faults);
    const MqttInput later(late, "veskar/there", 1, received.receiver());
    EXPECT_TRUE(until([&] { return later.counters().retained == 1; }));
}

TEST_F(Mqtt, ShowsItsPassword) {
    Broker::Options guarded;
    guarded.user = "camera";
    guarded.password = "se cret";
    const Broker broker(guarded);
    MqttOptions options = at(broker.port());
    options.credentials = secret("camera", "se cret");
    const MqttClient client(loop, options, log.faults);
    EXPECT_TRUE(connected(client));
    EXPECT_THAT(log.told(), IsEmpty());
}

TEST_F(Mqtt, TellsOnceWhyTheBrokerRefusesItsPassword) {
    Broker::Options guarded;
    guarded.user = "camera";
    guarded.password = "secret";
    const Broker broker(guarded);
    for (const MqttProtocol protocol : {MqttProtocol::V5, MqttProtocol::V311}) {
        ToldFaults told;
        MqttOptions options = at(broker.port());
        options.protocol = protocol;
        options.credentials = secret("camera", "wrong");
        const MqttClient client(loop, options, told.faults);
        EXPECT_TRUE(until([&] { return client.counters().refused == 3; }));
        EXPECT_THAT(told.told(), ElementsAre("broker 127.0.0.1:" + std::to_string(broker.port()) +
                                             ": refused the connection: " +
                                             (protocol == MqttProtocol::V5
                                                  ? "Not authorized"
                                                  : "Connection Refused: not authorised.")));
        EXPECT_EQ(client.counters().connections, 0U);
        EXPECT_EQ(client.counters().failed, 0U);
        // The password is put right while the program runs.
        secret("camera", "secret");
        EXPECT_TRUE(connected(client));
    }
}

TEST_F(Mqtt, RefusesSecretsThatAreOpenToEveryUser) {
    MqttOptions options = at(1);
    options.credentials = secret("camera", "secret");
    std::filesystem::permissions(options.credentials, std::filesystem::perms{0644});
    EXPECT_THROW(MqttClient(loop, options, log.faults), InputError);
}

TEST_F(Mqtt, TellsWhatTheBrokerDoesNotAllow) {
    Broker::Options limited;
    limited.access = "topic read open/#\ntopic write open/#\n";
    const Broker broker(limited);
    MqttClient client(loop, at(broker.port()), log.faults);
    MqttOutput output(client, {"closed/tracks", 1, false}, {});
    output.send("secret");
    EXPECT_TRUE(until([&] { return output.counters().failed == 1; }));
    EXPECT_THAT(log.told(), ElementsAre(client.name() +
                                        ": refused a message to closed/tracks: Not authorized"));
    EXPECT_TRUE(output.isDrained());
}

TEST_F(Mqtt, TellsASubscriptionThatTheBrokerRefuses) {
    ScriptedBroker broker(loop, {{4, accepted}});
    MqttOptions options = at(broker.port());
    options.protocol = MqttProtocol::V311;
    MqttClient client(loop, options, log.faults);
    const MqttInput input(client, "closed/#", 1, received.receiver());
    EXPECT_TRUE(until([&] { return !log.told().empty(); }));
    EXPECT_THAT(log.told(), ElementsAre(client.name() +
                                        ": refused to subscribe to closed/#: Unspecified error"));
}

TEST_F(Mqtt, TakesMessagesOfTenMegabytesAndDropsLongerOnesThanAllowed) {
    const Broker broker;
    MqttClient client(loop, at(broker.port()), log.faults);
    const MqttInput input(client, "tracks", 1, received.receiver());
    MqttOutput output(client, {"tracks", 1, false}, {10, 100 << 20});
    ASSERT_TRUE(reached(output, received));
    const std::string large(10 << 20, 'x');
    output.send(large);
    output.send(std::string(longestMessage + 1, 'y'));
    output.send("small");
    EXPECT_TRUE(until([&] { return !received.texts.empty() && received.texts.back() == "small"; }));
    EXPECT_THAT(received.texts, ElementsAre(large, "small"));
    EXPECT_EQ(input.counters().tooLong, 1U);
    EXPECT_THAT(log.told(),
                ElementsAre("input tracks: dropped a message: longer than 16777216 bytes"));
}

TEST_F(Mqtt, GoesOnWhenTheReceiverThrows) {
    const Broker broker;
    MqttClient client(loop, at(broker.port()), log.faults);
    const MqttInput input(client, "tracks", 1, [&](const Message& message) {
        if (message.bytes == "bad") {
            throw std::runtime_error("refused");
        }
        received.receiver()(message);
    });
    MqttOutput output(client, {"tracks", 1, false}, {});
    ASSERT_TRUE(reached(output, received));
    output.send("bad");
    EXPECT_THROW(until([] { return false; }), std::runtime_error);
    output.send("good");
    EXPECT_TRUE(until([&] { return !received.texts.empty(); }));
    EXPECT_THAT(received.texts, ElementsAre("good"));
    EXPECT_EQ(client.counters().connections, 1U);
}

TEST_F(Mqtt, AnswersWithinTheCallThatReceives) {
    const Broker broker;
    MqttClient client(loop, at(broker.port()), log.faults);
    MqttOutput answers(client, {"answers", 0, false}, {});
    const MqttInput input(client, "questions", 0,
                          [&](const Message& message) { answers.send(message.bytes); });
    const MqttInput back(client, "answers", 0, received.receiver());
    MqttOutput questions(client, {"questions", 0, false}, {});
    ASSERT_TRUE(reached(questions, received));
    for (int i = 0; i < 100; ++i) {
        questions.send(std::to_string(i));
    }
    EXPECT_TRUE(until([&] { return received.texts.size() == 100; }));
    EXPECT_EQ(received.texts.back(), "99");
}

TEST_F(Mqtt, NeverWaitsForABrokerThatHangs) {
    const Broker broker;
    MqttClient client(loop, at(broker.port()), log.faults);
    MqttOutput output(client, {"tracks", 0, false}, {20, 100 << 20});
    ASSERT_TRUE(connected(client));
    broker.stop();
    const std::string message(100000, 'x');
    for (int i = 0; i < 1000; ++i) {
        output.send(message);
        loop.turn(0ms);
    }
    const OutputCounters counters = output.counters();
    EXPECT_GT(counters.dropped, 500U);
    EXPECT_LE(counters.waiting, 21U);
    expectAccounted(counters);
}

TEST_F(Mqtt, GivesUpAnAttemptThatIsNotAnsweredWithoutBeingBusy) {
    const ListeningSocket silent = ListeningSocket::tcp({"127.0.0.1", 0});
    const Certificates certificates;
    for (const bool hasTls : {false, true}) {
        ToldFaults told;
        MqttOptions options = at(silent.port());
        options.answerWithin = 1s;
        if (hasTls) {
            options.tls = MqttTls{certificates.authority(), "", ""};
        }
        const MqttClient client(loop, options, told.faults);
        int turns = 0;
        EXPECT_TRUE(until([&] {
            ++turns;
            return client.counters().failed == 1;
        }));
        EXPECT_LT(turns, 1000) << "about 200 are for the patience of this test";
        EXPECT_THAT(told.told(),
                    ElementsAre(client.name() + ": cannot connect: no answer within 1 s"));
    }
}

TEST_F(Mqtt, FallsBackToTheOldProtocol) {
    using Answers = std::map<int, std::string>;
    for (const Answers& answers :
         {Answers{{4, accepted}, {5, unknownVersion}}, Answers{{4, accepted}}}) {
        ScriptedBroker broker(loop, answers);
        const MqttClient client(loop, at(broker.port()), log.faults);
        EXPECT_TRUE(connected(client));
        EXPECT_EQ(client.counters().protocol, "3.1.1");
        EXPECT_THAT(broker.versions, ElementsAre(5, 4));
    }
}

TEST_F(Mqtt, AsksTheBrokerToKeepHugeMessages) {
    ScriptedBroker broker(loop, {{5, acceptedInVersion5}});
    const MqttClient client(loop, at(broker.port()), log.faults);
    EXPECT_TRUE(connected(client));
    // Maximum Packet Size (39) of 32 MiB
    EXPECT_THAT(broker.requests[0], HasSubstr(std::string("\x27\x02\x00\x00\x00", 5)));
}

TEST_F(Mqtt, KeepsToAProtocolThatWasChosen) {
    ScriptedBroker broker(loop, {{4, accepted}, {5, unknownVersion}});
    MqttOptions options = at(broker.port());
    options.protocol = MqttProtocol::V5;
    const MqttClient client(loop, options, log.faults);
    EXPECT_TRUE(until([&] { return client.counters().refused == 2; }));
    EXPECT_THAT(broker.versions, testing::Each(5));
    EXPECT_THAT(log.told(), ElementsAre(client.name() +
                                        ": refused the connection: Unsupported Protocol Version"));
}

TEST_F(Mqtt, TellsWhyTheBrokerEndsASession) {
    ScriptedBroker broker(loop, {{5, acceptedInVersion5 + takenOver}});
    const MqttClient client(loop, at(broker.port()), log.faults);
    EXPECT_TRUE(until([&] { return client.counters().lost == 1; }));
    EXPECT_THAT(log.told(),
                ElementsAre(client.name() + ": lost the connection: Session taken over"));
}

TEST_F(Mqtt, TellsOfANameWithoutAddressAndDoesNotWaitForIt) {
    MqttOptions options = at(1883);
    options.host = "broker.invalid";
    const MqttClient client(loop, options, log.faults);
    EXPECT_TRUE(until([&] { return client.counters().failed == 1; }));
    EXPECT_THAT(log.told(), ElementsAre(HasSubstr("broker broker.invalid:1883: cannot connect: ")));
}

TEST_F(Mqtt, RefusesTopicsThatAreNone) {
    MqttClient client(loop, at(1), log.faults);
    EXPECT_THROW(MqttInput(client, "a/#/b", 0, received.receiver()), InputError);
    EXPECT_THROW(MqttInput(client, "", 0, received.receiver()), InputError);
    EXPECT_THROW(MqttOutput(client, {"a/+", 0, false}, {}), InputError);
    EXPECT_THROW(MqttOutput(client, {"", 0, false}, {}), InputError);
}

TEST_F(Mqtt, LetsInputsAndOutputsComeAndGo) {
    const Broker broker;
    MqttClient client(loop, at(broker.port()), log.faults);
    ASSERT_TRUE(connected(client));
    MqttOutput output(client, {"tracks", 1, false}, {});
    {
        const MqttInput input(client, "tracks", 1, received.receiver());
        EXPECT_TRUE(reached(output, received));
        MqttOutput gone(client, {"tracks", 1, false}, {});
        gone.send("last words");
    }
    EXPECT_TRUE(until([&] { return output.isDrained(); }));
    loopUntilIdle(loop);
    const std::size_t before = received.probes;
    output.send(Received::probe);
    EXPECT_TRUE(until([&] { return output.isDrained(); }));
    loopUntilIdle(loop);
    EXPECT_EQ(received.probes, before);
}

namespace {

class MqttOverTls : public Mqtt {
protected:
    static const Certificates& certificates() {
        static const Certificates made;
        return made;
    }
    static Broker::Options server(const std::string& name) {
        Broker::Options options;
        options.authority = certificates().authority();
        options.certificate = certificates().certificate(name);
        options.key = certificates().key(name);
        return options;
    }
    MqttOptions with(const Broker& broker, const MqttTls& tls) const {
        MqttOptions options = at(broker.port());
        options.tls = tls;
        return options;
    }
    /// @return what is told when a client cannot connect
    std::string refusal(const MqttOptions& options) {
        ToldFaults told;
        const MqttClient client(loop, options, told.faults);
        EXPECT_TRUE(until([&] { return !told.told().empty(); }));
        EXPECT_EQ(client.counters().connections, 0U);
        return told.told().front();
    }
};

}  // namespace

TEST_F(MqttOverTls, DeliversMessages) {
    const Broker broker(server("server"));
    MqttClient client(loop, with(broker, {certificates().authority(), "", ""}), log.faults);
    const MqttInput input(client, "tracks", 1, received.receiver());
    MqttOutput output(client, {"tracks", 1, false}, {10, 100 << 20});
    ASSERT_TRUE(reached(output, received));
    const std::string large(10 << 20, 'x');
    output.send(large);
    output.send("small");
    EXPECT_TRUE(until([&] { return !received.texts.empty() && received.texts.back() == "small"; }));
    EXPECT_THAT(received.texts, ElementsAre(large, "small"));
    EXPECT_THAT(log.told(), IsEmpty());
}

TEST_F(MqttOverTls, RefusesABrokerOfAnotherAuthority) {
    const Broker broker(server("server"));
    EXPECT_THAT(refusal(with(broker, {certificates().stranger(), "", ""})),
                HasSubstr("certificate verify failed"));
}

TEST_F(MqttOverTls, RefusesABrokerOfAnotherName) {
    const Broker broker(server("elsewhere"));
    EXPECT_THAT(refusal(with(broker, {certificates().authority(), "", ""})),
                HasSubstr("host name verification failed"));
}

TEST_F(MqttOverTls, ShowsItsCertificate) {
    Broker::Options options = server("server");
    options.asksForCertificate = true;
    const Broker broker(options);
    const Certificates& made = certificates();
    const MqttClient client(
        loop, with(broker, {made.authority(), made.certificate("client"), made.key("client")}),
        log.faults);
    EXPECT_TRUE(connected(client));
    // systemd may have handed the key over.
    const std::string key = made.key("client");
    const std::size_t slash = key.rfind('/');
    ::setenv("CREDENTIALS_DIRECTORY", key.substr(0, slash).c_str(), 1);
    const MqttClient service(loop,
                             with(broker, {made.authority(), made.certificate("client"),
                                           "$CREDENTIALS_DIRECTORY" + key.substr(slash)}),
                             log.faults);
    EXPECT_TRUE(connected(service));
    ::unsetenv("CREDENTIALS_DIRECTORY");
    // The broker's alert, or the failure to write that comes with it, whatever is seen first.
    EXPECT_THAT(refusal(with(broker, {made.authority(), "", ""})),
                AnyOf(HasSubstr("certificate required"),
                      HasSubstr("the broker may ask for a certificate")));
}

TEST_F(MqttOverTls, RefusesAKeyThatIsLockedOrOpenOrMissing) {
    const Broker broker(server("server"));
    const Certificates& made = certificates();
    EXPECT_THAT(
        refusal(with(broker, {made.authority(), made.certificate("client"), made.key("locked")})),
        HasSubstr("Unable to load client key file"));
    EXPECT_THROW(MqttClient(loop, with(broker, {made.authority(), made.certificate("client"), ""}),
                            log.faults),
                 InputError);
    EXPECT_THROW(
        MqttClient(loop,
                   with(broker, {made.authority(), made.certificate("client"), made.key("none")}),
                   log.faults),
        InputError);
    EXPECT_THROW(MqttClient(loop, with(broker, {directory.file("none"), "", ""}), log.faults),
                 InputError);
}

TEST_F(MqttOverTls, ComesBackAfterTheBrokerWasKilled) {
    Broker broker(server("server"));
    MqttClient client(loop, with(broker, {certificates().authority(), "", ""}), log.faults);
    const MqttInput input(client, "tracks", 0, received.receiver());
    MqttOutput output(client, {"tracks", 0, false}, {});
    ASSERT_TRUE(reached(output, received));
    broker.kill();
    EXPECT_TRUE(until([&] { return !client.counters().isConnected; }));
    broker.restart();
    EXPECT_TRUE(reached(output, received));
}
