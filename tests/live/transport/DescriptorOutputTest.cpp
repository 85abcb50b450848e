// SPDX-License-Identifier: Apache-2.0
// Output to pipes, files and a full disk.
#include "live/support/LoopUntil.h"
#include "live/support/Received.h"
#include "live/transport/DescriptorOutput.h"
#include "support/FileSizeLimit.h"
#include "support/Pipe.h"
#include "support/TemporaryDirectory.h"

#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using namespace Veskar::Live;
using namespace VeskarTest;
using testing::ElementsAre;

namespace {

constexpr const char* name = "output test";

void expectAccounted(const OutputCounters& counters) {
    EXPECT_EQ(counters.accepted,
              counters.written + counters.dropped + counters.failed + counters.waiting);
}

std::string line(int number) {
    std::string text = std::to_string(number);
    return std::string(99 - text.size(), ' ') + text + "\n";
}

class DescriptorOutputTest : public testing::Test {
protected:
    const TemporaryDirectory directory;
    const std::string path = directory.file("file");
    EventLoop loop;
    ToldFaults log;
};

}  // namespace

TEST_F(DescriptorOutputTest, WritesAtOnce) {
    const Pipe pipe;
    DescriptorOutput output(loop, pipe.writer.get(), name, {}, log.faults);
    output.send("one\n");
    output.send("two\n");
    EXPECT_EQ(readSome(pipe.reader.get()), "one\ntwo\n");
    EXPECT_EQ(output.counters().written, 2U);
    EXPECT_TRUE(output.isDrained());
    EXPECT_FALSE(loop.turn(0ms));
    EXPECT_EQ(::fcntl(pipe.writer.get(), F_GETFL) & O_NONBLOCK, 0) << "others share the pipe";
}

TEST_F(DescriptorOutputTest, DropsTheOldestForAReaderThatNeverReads) {
    const Pipe pipe;
    DescriptorOutput output(loop, pipe.writer.get(), name, {50, 1 << 20}, log.faults);
    constexpr int count = 5000;
    for (int i = 0; i < count; ++i) {
        output.send(line(i));
        loop.turn(0ms);
    }
    OutputCounters counters = output.counters();
    EXPECT_EQ(counters.accepted, std::uint64_t{count});
    EXPECT_GT(counters.dropped, 4000U);
    EXPECT_LE(counters.waiting, 51U);
    expectAccounted(counters);
    EXPECT_FALSE(loop.turn(0ms)) << "the full pipe must not keep the loop busy";

    // It reads after all: whole lines, the newest at the end.
    std::string text;
    EXPECT_TRUE(loopUntil(loop, [&] {
        text += readSome(pipe.reader.get());
        return output.isDrained();
    }));
    ASSERT_EQ(text.size() % 100, 0U);
    int last = -1;
    for (std::size_t at = 0; at < text.size(); at += 100) {
        const int number = std::stoi(text.substr(at, 100));
        EXPECT_EQ(text.substr(at, 100), line(number));
        EXPECT_GT(number, last);
        last = number;
    }
    EXPECT_EQ(last, count - 1);
    counters = output.counters();
    EXPECT_EQ(counters.written, text.size() / 100);
    EXPECT_EQ(counters.waiting, 0U);
    expectAccounted(counters);
}

TEST_F(DescriptorOutputTest, TellsOnceThatTheReaderHasGone) {
    Pipe pipe;
    int closed = 0;
    DescriptorOutput output(loop, pipe.writer.get(), name, {}, log.faults, [&] { ++closed; });
    output.send("one\n");
    pipe.reader.reset();
    output.send("two\n");
    output.send("three\n");
    EXPECT_TRUE(loopUntil(loop, [&] { return closed > 0; }));
    output.send("four\n");
    loopUntilIdle(loop);
    EXPECT_EQ(closed, 1);
    EXPECT_THAT(log.told(), ElementsAre("output test: closed by the reader"));
    const OutputCounters counters = output.counters();
    EXPECT_EQ(counters.written, 1U);
    EXPECT_EQ(counters.failed, 3U);
    EXPECT_EQ(counters.readers, 0U);
    expectAccounted(counters);
}

TEST_F(DescriptorOutputTest, NoticesTheEndOfAReaderWithoutAnythingToWrite) {
    Pipe pipe;
    int closed = 0;
    const DescriptorOutput output(loop, pipe.writer.get(), name, {}, log.faults, [&] { ++closed; });
    pipe.reader.reset();
    EXPECT_TRUE(loopUntil(loop, [&] { return closed > 0; }));
    EXPECT_FALSE(loop.turn(0ms));
}

TEST_F(DescriptorOutputTest, MayBeDestroyedWhenTheReaderHasGone) {
    Pipe pipe;
    std::optional<DescriptorOutput> output;
    output.emplace(loop, pipe.writer.get(), name, QueueLimits{}, log.faults,
                   [&] { output.reset(); });
    pipe.reader.reset();
    EXPECT_TRUE(loopUntil(loop, [&] { return !output; }));
}

TEST_F(DescriptorOutputTest, AppendsToAFileThatOthersWrite) {
    const Veskar::FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    writeAll(file.get(), "before\n");
    DescriptorOutput output(loop, file.get(), name, {}, log.faults);
    output.send("one\n");
    writeAll(file.get(), "after\n");
    EXPECT_TRUE(output.isDrained());
    std::ifstream written(path);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(written), {}), "before\none\nafter\n");
}

TEST_F(DescriptorOutputTest, CountsWhatDoesNotFitOnTheDisk) {
    const Veskar::FileDescriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    DescriptorOutput output(loop, full.get(), name, {3, 1000}, log.faults);
    for (int i = 0; i < 10; ++i) {
        output.send("line\n");
        loop.turn(0ms);
    }
    const OutputCounters counters = output.counters();
    EXPECT_EQ(counters.failed, 1U);
    EXPECT_EQ(counters.dropped, 6U);
    EXPECT_EQ(counters.waiting, 3U);
    expectAccounted(counters);
    EXPECT_THAT(log.told(), ElementsAre("output test: No space left on device"));
    EXPECT_FALSE(loop.turn(0ms)) << "it rests before it tries again";
}

TEST_F(DescriptorOutputTest, FinishesALineThatTheFullDiskCutInTwo) {
    const Veskar::FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    DescriptorOutput output(loop, file.get(), name, {}, log.faults);
    {
        const FileSizeLimit full(6);
        output.send("one\n");
        output.send("two\n");
        output.send("three\n");
        loop.turn(0ms);
    }
    EXPECT_THAT(log.told(), ElementsAre("output test: File too large"));
    EXPECT_TRUE(loopUntil(loop, [&] { return output.isDrained(); }));
    std::ifstream written(path);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(written), {}), "one\ntwo\nthree\n");
    EXPECT_EQ(output.counters().written, 3U);
}
