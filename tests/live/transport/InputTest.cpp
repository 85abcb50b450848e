// SPDX-License-Identifier: Apache-2.0
// Inputs of streams and datagrams on real pipes, files and sockets.
#include "live/support/Client.h"
#include "live/support/LoopUntil.h"
#include "live/support/Received.h"
#include "live/transport/ClientInput.h"
#include "live/transport/DatagramInput.h"
#include "live/transport/DescriptorInput.h"
#include "live/transport/ServerInput.h"
#include "support/DescriptorLimit.h"
#include "support/Pipe.h"
#include "support/TemporaryDirectory.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using namespace Veskar::Live;
using namespace VeskarTest;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Veskar::FileDescriptor;

namespace {

class LiveInput : public testing::Test {
protected:
    bool until(const std::function<bool()>& condition) { return loopUntil(loop, condition); }

    const TemporaryDirectory directory;
    const std::string path = directory.file("socket");
    EventLoop loop;
    ToldFaults log;
    Received received;
};

}  // namespace

TEST_F(LiveInput, ReadsAPipeUntilItsEnd) {
    Pipe pipe;
    bool hasEnded = false;
    const DescriptorInput input(loop, pipe.reader.get(), {"standard input"}, log.faults,
                                received.receiver(), [&] { hasEnded = true; });
    const auto begin = EventLoop::Clock::now();
    writeAll(pipe.writer.get(), "one\ntwo\nthr");
    EXPECT_TRUE(until([&] { return received.texts.size() == 2; }));
    EXPECT_THAT(received.channels, Each("standard input"));
    EXPECT_GE(received.arrived[0], begin);
    EXPECT_LE(received.arrived[0], EventLoop::Clock::now());
    EXPECT_FALSE(hasEnded);
    writeAll(pipe.writer.get(), "ee");
    pipe.writer.reset();
    EXPECT_TRUE(until([&] { return hasEnded; }));
    EXPECT_THAT(received.texts, ElementsAre("one", "two", "three"));
    EXPECT_EQ(input.counters().messages, 3U);
    EXPECT_EQ(input.counters().publishers, 0U);
    EXPECT_FALSE(loop.turn(0ms)) << "a closed pipe must not keep the loop busy";
    EXPECT_THAT(log.told(), IsEmpty());
}

TEST_F(LiveInput, DoesNotChangeHowOthersReadThePipe) {
    const Pipe pipe;
    const DescriptorInput input(loop, pipe.reader.get(), {"standard input"}, log.faults,
                                received.receiver());
    EXPECT_EQ(::fcntl(pipe.reader.get(), F_GETFL) & O_NONBLOCK, 0);
}

TEST_F(LiveInput, ReadsAFileToItsEnd) {
    std::ofstream(path) << "one\ntwo";
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    bool hasEnded = false;
    const DescriptorInput input(loop, file.get(), {"file"}, log.faults, received.receiver(),
                                [&] { hasEnded = true; });
    EXPECT_TRUE(until([&] { return hasEnded; }));
    EXPECT_THAT(received.texts, ElementsAre("one", "two"));
    EXPECT_FALSE(loop.turn(0ms));
}

TEST_F(LiveInput, RefusesADescriptorThatIsNotOpen) {
    EXPECT_THROW(DescriptorInput(loop, 12345, {"input"}, log.faults, received.receiver()),
                 std::system_error);
}

TEST_F(LiveInput, TellsAReadError) {
    const FileDescriptor writeOnly(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    bool hasEnded = false;
    const DescriptorInput input(loop, writeOnly.get(), {"file"}, log.faults, received.receiver(),
                                [&] { hasEnded = true; });
    EXPECT_TRUE(until([&] { return hasEnded; }));
    EXPECT_THAT(log.told(), ElementsAre("input file: Bad file descriptor"));
}

TEST_F(LiveInput, TakesSeveralPublishersAtOnce) {
    const ServerInput input(loop, ListeningSocket::atPath(path, 0600), {"tracks"}, log.faults,
                            received.receiver());
    const FileDescriptor first = connectTo(path);
    FileDescriptor second = connectTo(path);
    writeAll(first.get(), "first 1\nfirst ");
    writeAll(second.get(), "second 1\nsec");
    EXPECT_TRUE(until([&] { return received.texts.size() == 2; }));
    EXPECT_EQ(input.counters().publishers, 2U);
    writeAll(first.get(), "2\n");
    writeAll(second.get(), "ond 2\n");
    EXPECT_TRUE(until([&] { return received.texts.size() == 4; }));
    EXPECT_THAT(received.texts, UnorderedElementsAre("first 1", "second 1", "first 2", "second 2"));
    second.reset();
    EXPECT_TRUE(until([&] { return input.counters().publishers == 1; }));
    writeAll(first.get(), "first 3\n");
    EXPECT_TRUE(until([&] { return received.texts.size() == 5; }));
    EXPECT_EQ(input.counters().connections, 2U);
    EXPECT_THAT(log.told(), IsEmpty());
}

TEST_F(LiveInput, TellsConnectionsApart) {
    std::vector<std::string> departed;
    const ServerInput input(loop, ListeningSocket::atPath(path, 0600), {"tracks"}, log.faults,
                            received.receiver(), [&](const std::string& channel) {
                                departed.push_back(channel);
                                EXPECT_THAT(received.texts, Contains("last"))
                                    << "departs too early";
                            });
    FileDescriptor first = connectTo(path);
    writeAll(first.get(), "a\n");
    EXPECT_TRUE(until([&] { return received.texts.size() == 1; }));
    const FileDescriptor second = connectTo(path);
    writeAll(second.get(), "b\n");
    EXPECT_TRUE(until([&] { return received.texts.size() == 2; }));
    writeAll(first.get(), "last\nunfinished");
    first.reset();
    EXPECT_TRUE(until([&] { return !departed.empty(); }));
    const FileDescriptor third = connectTo(path);
    writeAll(third.get(), "c\n");
    EXPECT_TRUE(until([&] { return received.texts.size() == 4; }));
    EXPECT_THAT(received.channels, ElementsAre("tracks#1", "tracks#2", "tracks#1", "tracks#3"));
    EXPECT_THAT(departed, ElementsAre("tracks#1"));
}

TEST_F(LiveInput, LimitsTheMemoryOfAllPublishers) {
    StreamOptions options{"tracks"};
    options.finishWithin.reset();
    const ServerInput input(loop, ListeningSocket::atPath(path, 0600), options, log.faults,
                            received.receiver());
    const FileDescriptor small = connectTo(path);
    writeAll(small.get(), "{\"begun\": ");
    std::thread greedy([this] {
        std::vector<FileDescriptor> publishers;
        for (int i = 0; i < 6; ++i) {
            publishers.push_back(connectTo(path));
            try {
                writeAll(publishers.back().get(), std::string(longestMessage - 1, 'x'));
            } catch (const std::system_error&) {
                // Was the largest itself.
            }
        }
        writeAll(connectTo(path).get(), "all are there\n");
        publishers.clear();
    });
    std::size_t most = 0;
    EXPECT_TRUE(until([&] {
        most = std::max(most, input.memory());
        return !received.texts.empty();
    }));
    greedy.join();
    EXPECT_LE(most, ServerInput::mostMemory);
    EXPECT_GE(most, ServerInput::mostMemory / 2);
    EXPECT_TRUE(until([&] { return input.counters().publishers == 1; }));
    EXPECT_EQ(input.counters().cut, 6U);
    EXPECT_LE(input.memory(), std::size_t{1} << 20);
    writeAll(small.get(), "1}\n");
    EXPECT_TRUE(until([&] { return received.texts.size() == 2; }));
    EXPECT_THAT(received.texts, ElementsAre("all are there", "{\"begun\": 1}"));
    EXPECT_THAT(log.told(), Contains("input tracks: lost a publisher: unfinished messages occupy "
                                     "more than 67108864 bytes"));
}

TEST_F(LiveInput, LimitsTheTimeOfAMessage) {
    StreamOptions options{"tracks"};
    EXPECT_EQ(options.finishWithin, 10s);
    options.finishWithin = 300ms;
    const ServerInput input(loop, ListeningSocket::atPath(path, 0600), options, log.faults,
                            received.receiver());
    const FileDescriptor silent = connectTo(path);
    writeAll(silent.get(), "whole\n\r\n");
    const FileDescriptor slow = connectTo(path);
    const auto begin = EventLoop::Clock::now();
    EXPECT_TRUE(until([&] {
        if (input.counters().cut == 0) {
            writeAll(slow.get(), "x");
        }
        return input.counters().cut == 1;
    }));
    EXPECT_GE(EventLoop::Clock::now() - begin, 300ms);
    EXPECT_EQ(input.counters().publishers, 1U) << "one that is silent between messages stays";
    EXPECT_THAT(log.told(), ElementsAre("input tracks: dropped an unfinished message: a message "
                                        "took too long to arrive",
                                        "input tracks: lost a publisher: a message took too long "
                                        "to arrive"));
    writeAll(silent.get(), "next\n");
    EXPECT_TRUE(until([&] { return received.texts.size() == 2; }));
}

TEST_F(LiveInput, LetsAPipeTakeItsTime) {
    const Pipe pipe;
    StreamOptions options{"standard input"};
    options.finishWithin = 1ms;
    const DescriptorInput input(loop, pipe.reader.get(), options, log.faults, received.receiver());
    writeAll(pipe.writer.get(), "be");
    loopUntilIdle(loop);
    writeAll(pipe.writer.get(), "gun\n");
    EXPECT_TRUE(until([&] { return !received.texts.empty(); }));
    EXPECT_THAT(received.texts, ElementsAre("begun"));
}

TEST_F(LiveInput, CountsAMessageThatIsCutByTheEndOfItsConnection) {
    const ServerInput input(loop, ListeningSocket::tcp({"127.0.0.1", 0}), {"radar"}, log.faults,
                            received.receiver());
    {
        const FileDescriptor publisher = connectTo(input.port());
        writeAll(publisher.get(), "whole\n{\"cut\": ");
    }
    EXPECT_TRUE(until([&] { return input.counters().cut == 1; }));
    EXPECT_THAT(received.texts, ElementsAre("whole"));
    FileDescriptor publisher = connectTo(input.port());
    writeAll(publisher.get(), "next\n{\"broken\": ");
    EXPECT_TRUE(until([&] { return received.texts.size() == 2; }));
    breakOff(std::move(publisher));
    EXPECT_TRUE(until([&] { return input.counters().cut == 2; }));
    EXPECT_THAT(received.texts, ElementsAre("whole", "next"));
    EXPECT_THAT(
        log.told(),
        ElementsAre("input radar: dropped an unfinished message: its publisher broke it off",
                    "input radar: lost a publisher: Connection reset by peer"));
    EXPECT_EQ(input.counters().publishers, 0U);
}

TEST_F(LiveInput, TakesMessagesOfTenMegabytesAndDropsLongerOnesThanAllowed) {
    const ServerInput input(loop, ListeningSocket::tcp({"127.0.0.1", 0}), {"radar"}, log.faults,
                            received.receiver());
    const std::string large(10 << 20, 'x');
    const std::string tooLarge(longestMessage + 1, 'y');
    std::thread publisher([&, port = input.port()] {
        const FileDescriptor connection = connectTo(port);
        writeAll(connection.get(), large + "\n" + tooLarge + "\nsmall\n");
    });
    EXPECT_TRUE(until([&] { return received.texts.size() == 2; }));
    publisher.join();
    EXPECT_EQ(received.texts[0], large);
    EXPECT_EQ(received.texts[1], "small");
    EXPECT_EQ(input.counters().tooLong, 1U);
    EXPECT_THAT(log.told(),
                ElementsAre("input radar: dropped a message: longer than 16777216 bytes"));
}

TEST_F(LiveInput, TurnsPublishersAwayWhenThereAreTooMany) {
    const ServerInput input(loop, ListeningSocket::atPath(path, 0600), {"tracks"}, log.faults,
                            received.receiver());
    std::vector<FileDescriptor> publishers;
    for (std::size_t i = 0; i < ServerInput::mostPublishers + 2; ++i) {
        publishers.push_back(connectTo(path));
    }
    EXPECT_TRUE(until([&] { return input.counters().refusedConnections == 2; }));
    EXPECT_EQ(input.counters().publishers, ServerInput::mostPublishers);
    EXPECT_THAT(log.told(), ElementsAre("input tracks: turned a publisher away: there are 64"));
    publishers.front().reset();
    EXPECT_TRUE(
        until([&] { return input.counters().publishers == ServerInput::mostPublishers - 1; }));
    const FileDescriptor last = connectTo(path);
    writeAll(last.get(), "hello\n");
    EXPECT_TRUE(until([&] { return !received.texts.empty(); }));
}

TEST_F(LiveInput, RestsWhenTheSystemHasNoRoomForAConnection) {
    const ServerInput input(loop, ListeningSocket::atPath(path, 0600), {"tracks"}, log.faults,
                            received.receiver());
    const FileDescriptor publisher = connectTo(path);
    writeAll(publisher.get(), "hello\n");
    {
        const DescriptorLimit none(0);
        EXPECT_TRUE(until([&] { return !log.told().empty(); }));
        EXPECT_FALSE(loop.turn(0ms)) << "it must not try again at once";
    }
    EXPECT_THAT(log.told(), ElementsAre("input tracks: cannot accept a connection: Too many open "
                                        "files"));
    EXPECT_TRUE(until([&] { return !received.texts.empty(); }));
    EXPECT_THAT(received.texts, ElementsAre("hello"));
}

TEST_F(LiveInput, GoesOnWhenTheReceiverThrows) {
    const ServerInput input(loop, ListeningSocket::atPath(path, 0600), {"tracks"}, log.faults,
                            [&](const Message& message) {
                                if (message.bytes == "bad") {
                                    throw std::runtime_error("refused");
                                }
                                received.texts.emplace_back(message.bytes);
                            });
    const FileDescriptor publisher = connectTo(path);
    writeAll(publisher.get(), "bad\n");
    EXPECT_THROW(until([] { return false; }), std::runtime_error);
    writeAll(publisher.get(), "good\n");
    EXPECT_TRUE(until([&] { return !received.texts.empty(); }));
    EXPECT_THAT(received.texts, ElementsAre("good"));
}

TEST_F(LiveInput, TakesWholeMessagesOutOfDatagrams) {
    const DatagramInput input(loop, ListeningSocket::udp({"127.0.0.1", 0}), {"radar"}, log.faults,
                              received.receiver());
    const FileDescriptor first = connectTo(input.port(), SOCK_DGRAM);
    const FileDescriptor second = connectTo(input.port(), SOCK_DGRAM);
    writeAll(first.get(), "one\ntwo\n");
    writeAll(second.get(), "three");
    writeAll(first.get(), std::string(60000, 'x'));
    EXPECT_TRUE(until([&] { return received.texts.size() == 4; }));
    EXPECT_THAT(received.texts, ElementsAre("one", "two", "three", std::string(60000, 'x')));
    EXPECT_EQ(input.counters().messages, 4U);
}

namespace {

/// A sensor that listens itself.
class Server {
public:
    Server(EventLoop& loop, std::uint16_t port)
        : acceptor_(loop, ListeningSocket::tcp({"127.0.0.1", port}), "server", log_.faults,
                    [this](FileDescriptor connection) { client = std::move(connection); }) {}

    std::uint16_t port() const { return acceptor_.port(); }

    FileDescriptor client;  ///< the last one

private:
    ToldFaults log_;
    Acceptor acceptor_;
};

ClientInput::Options at(const std::string& host, std::uint16_t port) {
    ClientInput::Options options;
    options.host = host;
    options.port = port;
    options.stream.name = "radar";
    options.firstRetry = 20ms;
    options.longestRetry = 100ms;
    return options;
}

}  // namespace

TEST_F(LiveInput, ConnectsToAServerAgainAndAgain) {
    std::optional<Server> server(std::in_place, loop, 0);
    const std::uint16_t port = server->port();
    std::vector<std::string> departed;
    const ClientInput input(loop, at("localhost", port), log.faults, received.receiver(),
                            [&](const std::string& channel) { departed.push_back(channel); });
    for (std::uint64_t round = 1; round <= 3; ++round) {
        EXPECT_TRUE(until([&] { return input.counters().publishers == 1 && server->client; }));
        writeAll(server->client.get(), "whole\n{\"cut\":");
        EXPECT_TRUE(until([&] { return received.texts.size() == round; }));
        server.reset();
        EXPECT_TRUE(until([&] { return input.counters().publishers == 0; }));
        EXPECT_EQ(input.counters().cut, round);
        server.emplace(loop, port);
    }
    EXPECT_TRUE(until([&] { return input.counters().connections == 4; }));
    EXPECT_THAT(received.texts, Each("whole"));
    EXPECT_THAT(received.channels, ElementsAre("radar#1", "radar#2", "radar#3"));
    EXPECT_EQ(departed, received.channels);
}

TEST_F(LiveInput, ConnectsAgainWhenAMessageTakesTooLong) {
    Server server(loop, 0);
    ClientInput::Options options = at("127.0.0.1", server.port());
    options.stream.finishWithin = 50ms;
    const ClientInput input(loop, options, log.faults, received.receiver());
    EXPECT_TRUE(until([&] { return input.counters().publishers == 1 && server.client; }));
    writeAll(server.client.get(), "never ended");
    EXPECT_TRUE(until([&] { return input.counters().connections == 2; }));
    EXPECT_EQ(input.counters().cut, 1U);
    EXPECT_THAT(log.told(),
                Contains("input radar: lost the connection: a message took too long to arrive"));
}

TEST_F(LiveInput, TellsWhyItCannotConnect) {
    const std::uint16_t port = Server(loop, 0).port();
    const ClientInput refused(loop, at("127.0.0.1", port), log.faults, received.receiver());
    EXPECT_TRUE(until([&] { return log.faults.counts()["input radar: cannot connect"] == 3; }));
    EXPECT_THAT(log.told(), ElementsAre("input radar: cannot connect: Connection refused"));
    // It still tries.
    const Server server(loop, port);
    EXPECT_TRUE(until([&] { return refused.counters().connections == 1; }));
}

TEST_F(LiveInput, DoesNotWaitForANameWithoutAddress) {
    const ClientInput input(loop, at("sensor.invalid", 5000), log.faults, received.receiver());
    EXPECT_TRUE(until([&] { return !log.told().empty(); }));
    EXPECT_THAT(log.told(), ElementsAre(HasSubstr("input radar: cannot connect: ")));
}
