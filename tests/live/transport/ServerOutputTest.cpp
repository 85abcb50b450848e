// SPDX-License-Identifier: Apache-2.0
#include "live/support/Client.h"
#include "live/support/LoopUntil.h"
#include "live/support/Received.h"
#include "live/transport/ServerOutput.h"
#include "support/Pipe.h"
#include "support/TemporaryDirectory.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using namespace Veskar::Live;
using namespace VeskarTest;
using testing::ElementsAre;
using testing::IsEmpty;
using Veskar::FileDescriptor;

namespace {

class ServerOutputTest : public testing::Test {
protected:
    FileDescriptor join(const ServerOutput& output) {
        const std::size_t before = output.counters().readers;
        FileDescriptor reader = connectTo(path);
        EXPECT_TRUE(loopUntil(loop, [&] { return output.counters().readers == before + 1; }));
        return reader;
    }

    const TemporaryDirectory directory;
    const std::string path = directory.file("socket");
    EventLoop loop;
    ToldFaults log;
};

}  // namespace

TEST_F(ServerOutputTest, GivesEachReaderWhatComesFromThenOn) {
    ServerOutput output(loop, ListeningSocket::atPath(path, 0600), "output tracks", {}, log.faults);
    output.send("nobody\n");
    const FileDescriptor first = join(output);
    output.send("one\n");
    const FileDescriptor second = join(output);
    output.send("two\n");
    EXPECT_EQ(readSome(first.get()), "one\ntwo\n");
    EXPECT_EQ(readSome(second.get()), "two\n");
    EXPECT_EQ(output.counters().accepted, 3U);
    EXPECT_EQ(output.counters().written, 3U);
}

TEST_F(ServerOutputTest, GreetsAReader) {
    int number = 0;
    const ServerOutput output(loop, ListeningSocket::atPath(path, 0600), "output status", {},
                              log.faults,
                              [&] { return "status " + std::to_string(++number) + "\n"; });
    const FileDescriptor first = join(output);
    const FileDescriptor second = join(output);
    EXPECT_EQ(readSome(first.get()), "status 1\n");
    EXPECT_EQ(readSome(second.get()), "status 2\n");
}

TEST_F(ServerOutputTest, LetsAReaderThatNeverReadsCostTheOthersNothing) {
    ServerOutput output(loop, ListeningSocket::atPath(path, 0600), "output tracks", {20, 1 << 20},
                        log.faults);
    const FileDescriptor lazy = join(output);
    const FileDescriptor keen = join(output);
    const std::string line = std::string(999, 'x') + "\n";
    std::size_t read = 0;
    constexpr std::size_t count = 2000;
    for (std::size_t i = 0; i < count; ++i) {
        output.send(line);
        loop.turn(0ms);
        read += readSome(keen.get()).size();
    }
    EXPECT_EQ(read, count * line.size());
    const OutputCounters counters = output.counters();
    EXPECT_EQ(counters.accepted, 2 * count);
    EXPECT_GT(counters.dropped, count / 2);
    EXPECT_LE(counters.waiting, 21U);
    EXPECT_EQ(counters.accepted, counters.written + counters.dropped + counters.waiting);
    EXPECT_FALSE(loop.turn(0ms));
}

TEST_F(ServerOutputTest, ForgetsReadersThatHaveGone) {
    ServerOutput output(loop, ListeningSocket::atPath(path, 0600), "output tracks", {}, log.faults);
    FileDescriptor quiet = join(output);
    FileDescriptor talking = join(output);
    const FileDescriptor stays = join(output);
    writeAll(talking.get(), "what a reader says is ignored\n");
    output.send("one\n");
    quiet.reset();
    EXPECT_TRUE(loopUntil(loop, [&] { return output.counters().readers == 2; }));
    talking.reset();
    output.send("two\n");
    output.send("three\n");
    EXPECT_TRUE(loopUntil(loop, [&] { return output.counters().readers == 1; }));
    output.send("four\n");
    EXPECT_EQ(readSome(stays.get()), "one\ntwo\nthree\nfour\n");
    const OutputCounters counters = output.counters();
    EXPECT_EQ(counters.connections, 3U);
    EXPECT_EQ(counters.accepted, counters.written + counters.failed);
    EXPECT_THAT(log.told(), IsEmpty()) << "readers may come and go";
}

TEST_F(ServerOutputTest, TurnsReadersAwayWhenThereAreTooMany) {
    const ServerOutput output(loop, ListeningSocket::atPath(path, 0600), "output tracks", {},
                              log.faults);
    std::vector<FileDescriptor> readers;
    for (std::size_t i = 0; i < ServerOutput::mostReaders + 1; ++i) {
        readers.push_back(connectTo(path));
    }
    EXPECT_TRUE(loopUntil(loop, [&] { return output.counters().refusedConnections == 1; }));
    EXPECT_EQ(output.counters().readers, ServerOutput::mostReaders);
    EXPECT_THAT(log.told(), ElementsAre("output tracks: turned a reader away: there are 64"));
}
