// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "live/support/LoopUntil.h"
#include "live/support/Received.h"
#include "live/transport/FileOutput.h"
#include "support/FileSizeLimit.h"
#include "support/TemporaryDirectory.h"

#include <fstream>
#include <iterator>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Veskar::Live;
using namespace VeskarTest;
using testing::ElementsAre;
using testing::IsEmpty;
using Veskar::Host::InputError;

namespace {

class FileOutputTest : public testing::Test {
protected:
    std::string textOf(const std::string& suffix) const {
        std::ifstream file(path + suffix);
        return file ? std::string{std::istreambuf_iterator<char>(file), {}} : "none";
    }
    bool drained(const FileOutput& output) {
        return loopUntil(loop, [&] { return output.isDrained(); });
    }

    const TemporaryDirectory directory;
    const std::string path = directory.file("tracks.jsonl");
    EventLoop loop;
    ToldFaults log;
};

}  // namespace

TEST_F(FileOutputTest, WritesWhatWaitsBeforeItEnds) {
    std::ofstream(path) << "earlier\n";
    {
        FileOutput output(path, {}, {}, log.faults);
        for (const char* text : {"1\n", "2\n", "3\n"}) {
            output.send(text);
        }
    }
    EXPECT_EQ(textOf(""), "1\n2\n3\n");
    EXPECT_EQ(textOf(".1"), "earlier\n");
    EXPECT_THAT(log.told(), IsEmpty());
}

TEST_F(FileOutputTest, RotatesItsFiles) {
    {
        FileOutput output(path, {4, 2}, {}, log.faults);
        for (const char* text : {"1\n", "2\n", "3\n", "4\n", "5\n", "6\n", "7\n"}) {
            output.send(text);
        }
    }
    EXPECT_EQ(textOf(""), "7\n");
    EXPECT_EQ(textOf(".1"), "5\n6\n");
    EXPECT_EQ(textOf(".2"), "3\n4\n");
    EXPECT_EQ(textOf(".3"), "none");
}

TEST_F(FileOutputTest, TellsOfAFullDiskAndGoesOnWhenThereIsRoom) {
    FileOutput output(path, {0, 0}, {}, log.faults);
    output.send("one\n");
    EXPECT_TRUE(drained(output));
    {
        const FileSizeLimit full(6);
        output.send("two\n");
        output.send("too\n");
        EXPECT_TRUE(drained(output));
    }
    output.send("three\n");
    EXPECT_TRUE(drained(output));
    EXPECT_EQ(textOf(""), "one\nthree\n");
    EXPECT_THAT(log.told(), ElementsAre("output " + path + ": No space left on device"));
    EXPECT_EQ(log.faults.counts().at("output " + path), 2U);
    const OutputCounters counters = output.counters();
    EXPECT_EQ(counters.accepted, 4U);
    EXPECT_EQ(counters.written, 2U);
    EXPECT_EQ(counters.failed, 2U);
}

TEST_F(FileOutputTest, DropsTheOldestWhenTheDiskIsTooSlow) {
    FileOutput output(path, {0, 0}, {10, 1000}, log.faults);
    constexpr std::uint64_t count = 100000;
    for (std::uint64_t i = 0; i < count; ++i) {
        output.send("line\n");
        ASSERT_LE(output.counters().waiting, 11U);
    }
    EXPECT_TRUE(drained(output));
    const OutputCounters counters = output.counters();
    EXPECT_EQ(counters.accepted, count);
    EXPECT_EQ(counters.accepted, counters.written + counters.dropped);
    EXPECT_EQ(textOf("").size(), 5 * counters.written);
}

TEST_F(FileOutputTest, RefusesAFileThatCannotBeMade) {
    EXPECT_THROW(FileOutput(directory.file("no/file"), {}, {}, log.faults), InputError);
}
