// SPDX-License-Identifier: Apache-2.0
// Disks that are full, and readers that do not read.
#include "cli/live/LiveSite.h"
#include "support/Pipe.h"
#include "support/SystemCall.h"

#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <sys/resource.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using testing::UnorderedElementsAre;

namespace VeskarTest {
namespace {

class OutputFault : public LiveSite {
protected:
    OutputFault() { letCameraConnect(); }

    /// Sends many frames in a short time.
    static void flood(const Veskar::FileDescriptor& camera, int frames) {
        for (int i = 0; i < frames; ++i) {
            writeAll(camera.get(), sensorFrame("video", 20).dump() + "\n");
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
};

/// From now on, no file of the process grows beyond so many bytes: as a full disk.
void limitFiles(const RunningProgram& program, std::uintmax_t most) {
    const rlimit limit{static_cast<rlim_t>(most), RLIM_INFINITY};
    checked(::prlimit(program.id(), RLIMIT_FSIZE, &limit, nullptr), "prlimit");
}

}  // namespace

TEST_F(OutputFault, TheDiskIsFull) {
    const std::string tracks = directory_ / "tracks.jsonl";
    const std::string recording = directory_ / "run.jsonl";
    addOutput("file", "json-lines", {{"type", "file"}, {"path", tracks}});
    addOutput("lines", "json-lines", {{"type", "mqtt"}, {"topic", "lines"}});
    run_["record"] = {{"path", recording}};
    RunningProgram program({"run", configuration()}, {});
    awaitStart(program);
    const Veskar::FileDescriptor camera = connectTo(socketOf("camera"));
    ASSERT_TRUE(writeUntil(camera, [](const auto& status) {
        return status["framesRecorded"] > 3 && status["output"]["file"]["written"] > 3;
    }));
    limitFiles(program, 4096);
    ASSERT_TRUE(writeUntil(camera, [](const auto& status) {
        return status["framesNotRecorded"] > 3 && status["output"]["file"]["failed"] > 3;
    }));
    const nlohmann::json full = status();
    limitFiles(program, RLIM_INFINITY);
    ASSERT_TRUE(writeUntil(camera, [&](const auto& status) {
        return status["framesRecorded"] > full["framesRecorded"].template get<int>() + 3 &&
               status["output"]["file"]["written"] >
                   full["output"]["file"]["written"].template get<int>() + 3;
    }));
    ASSERT_TRUE(until([](const auto& status) {
        return framesJudged(status["sensor"]["camera"]) == status["sensor"]["camera"]["messages"] &&
               status["output"]["file"]["waiting"] == 0 &&
               status["output"]["lines"]["waiting"] == 0 &&
               status["framesRecorded"].template get<int>() +
                       status["framesNotRecorded"].template get<int>() ==
                   status["framesIn"];
    }));
    const nlohmann::json last = status();
    expectAccounted(last);
    EXPECT_EQ(last["output"]["lines"]["written"], last["framesOut"]);
    EXPECT_THAT(warnings(program),
                UnorderedElementsAre(
                    StartsWith("veskar: warning: output " + tracks + ": "),
                    StartsWith("veskar: FrameRecorder: Left out a frame: " + recording + ": ")));
    program.send(SIGTERM);
    EXPECT_EQ(program.finish().status, 0);
    // Whole lines only.
    EXPECT_GE(linesOf(slurp(tracks)).size(), last["output"]["file"]["written"]);
    for (const std::string& line : linesOf(slurp(tracks))) {
        EXPECT_TRUE(nlohmann::json::accept(line)) << line;
    }
    EXPECT_EQ(veskar({"replay", recording, "-o", "/dev/null"}).status, 0);
}

TEST_F(OutputFault, ReadersThatNeverRead) {
    addOutput("stdout", "json-lines", {{"type", "stdout"}});
    addOutput("socket", "onvif-xml", {{"type", "unix"}, {"path", socketOf("tracks")}});
    addOutput("file", "json-lines", {{"type", "file"}, {"path", directory_ / "tracks.jsonl"}});
    Pipe full;
    fill(full);
    RunningProgram program({"run", configuration()}, {-1, full.writer.get()});
    full.writer.reset();
    awaitStart(program);
    const Veskar::FileDescriptor camera = connectTo(socketOf("camera"));
    const Veskar::FileDescriptor deaf = connectTo(socketOf("tracks"));
    ASSERT_TRUE(writeUntil(camera, [](const auto& status) {
        return status["output"]["socket"]["readers"] == 1 && status["framesOut"] > 0;
    }));
    flood(camera, 1300);
    ASSERT_TRUE(until([](const auto& status) {
        return status["sensor"]["camera"]["messages"] >= 1300 &&
               status["output"]["file"]["waiting"] == 0;
    }));
    const nlohmann::json last = status();
    expectAccounted(last);
    EXPECT_EQ(last["output"]["file"]["written"], last["framesOut"]);
    EXPECT_EQ(last["output"]["stdout"]["written"], 0);
    EXPECT_GT(last["output"]["stdout"]["dropped"], 0);
    EXPECT_GT(last["output"]["socket"]["dropped"], 0);
    EXPECT_LE(last["output"]["stdout"]["waiting"], 1001);
    EXPECT_LE(last["output"]["socket"]["waiting"], 1001);
    EXPECT_LE(last["output"]["socket"]["waitingBytes"], 9 << 20);
    EXPECT_THAT(warnings(program), IsEmpty());
}

// One that goes is told to nobody; those that stay get everything.
TEST_F(OutputFault, ReadersThatGo) {
    addOutput("socket", "json-lines", {{"type", "unix"}, {"path", socketOf("tracks")}});
    addOutput("stdout", "json-lines", {{"type", "stdout"}});
    Pipe output;
    RunningProgram program({"run", configuration()}, {-1, output.writer.get()});
    output.writer.reset();
    awaitStart(program);
    const Veskar::FileDescriptor camera = connectTo(socketOf("camera"));
    breakOff(connectTo(socketOf("tracks")));
    const Veskar::FileDescriptor stays = connectTo(socketOf("tracks"));
    output.reader.reset();
    ASSERT_TRUE(writeUntil(camera, [](const auto& status) {
        return status["output"]["socket"]["readers"] == 1 &&
               status["output"]["socket"]["written"] > 3;
    }));
    std::string text;
    const auto written = status()["output"]["socket"]["written"].get<std::size_t>();
    while (linesOf(text).size() < written) {
        text += readSome(stays.get());
    }
    for (const std::string& line : linesOf(text)) {
        EXPECT_TRUE(nlohmann::json::accept(line)) << line;
    }
    EXPECT_THAT(warnings(program), ElementsAre(HasSubstr("output stdout: ")));
}

}  // namespace VeskarTest
