// SPDX-License-Identifier: Apache-2.0
// Signals that end the program, or let it begin anew.
#include "cli/live/LiveSite.h"
#include "support/Pipe.h"

#include <chrono>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <string>

#include <gmock/gmock.h>

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Lt;

namespace VeskarTest {
namespace {

/// The program's own promise to the system, which kills it otherwise.
constexpr std::chrono::seconds longestEnd(2);

class LiveEnd : public LiveSite {
protected:
    LiveEnd() {
        addOutput("lines", "json-lines", {{"type", "mqtt"}, {"topic", "lines"}, {"qos", 1}});
    }

    static Outcome end(RunningProgram& program) {
        const Clock::time_point start = Clock::now();
        program.send(SIGTERM);
        Outcome outcome = program.finish();
        EXPECT_THAT(Clock::now() - start, Lt(longestEnd));
        return outcome;
    }
};

}  // namespace

TEST_F(LiveEnd, WritesWhatWaits) {
    const std::string tracks = directory_ / "tracks.jsonl";
    addOutput("file", "json-lines", {{"type", "file"}, {"path", tracks}});
    // Most of them wait for the end.
    addOutput("slow", "json-lines", {{"type", "stdout"}}, {{"interval", 3600}});
    peer_.subscribe("lines");
    RunningProgram program({"run", configuration()}, {});
    awaitStart(program);
    ASSERT_TRUE(publishUntil([](const auto& status) { return status["framesOut"] >= 10; }));
    const Outcome outcome = end(program);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(warningsOf(outcome.errors), IsEmpty());
    const Lines fused = linesOf(slurp(tracks));
    EXPECT_TRUE(heard([&] { return peer_.on("lines").size() >= fused.size(); }));
    EXPECT_EQ(peer_.on("lines"), fused);
    const Lines slow = linesOf(outcome.output);
    ASSERT_EQ(slow.size(), 2U);
    EXPECT_EQ(slow[0], fused.front());
    EXPECT_EQ(slow[1], fused.back());
}

TEST_F(LiveEnd, DoesNotWaitForWhoIsAway) {
    letCameraConnect();
    addOutput("stdout", "json-lines", {{"type", "stdout"}});
    addOutput("socket", "json-lines", {{"type", "unix"}, {"path", socketOf("tracks")}});
    for (const bool isGone : {false, true}) {
        Pipe full;
        fill(full);
        RunningProgram program({"run", configuration()}, {-1, full.writer.get()});
        full.writer.reset();
        awaitStart(program);
        const Veskar::FileDescriptor camera = connectTo(socketOf("camera"));
        const Veskar::FileDescriptor deaf = connectTo(socketOf("tracks"));
        ASSERT_TRUE(writeUntil(
            camera, [](const auto& status) { return status["output"]["lines"]["written"] > 3; }));
        // Connected, but silent; or not there at all.
        isGone ? broker_.kill() : broker_.stop();
        ASSERT_TRUE(writeUntil(camera, [](const auto& status) {
            return status["output"]["lines"]["waiting"] > 3 &&
                   status["output"]["stdout"]["waiting"] > 3;
        }));
        EXPECT_EQ(end(program).status, 0);
        broker_.restart();
    }
}

TEST_F(LiveEnd, AReloadKeepsTheConnections) {
    letCameraConnect();
    addOutput("socket", "json-lines", {{"type", "unix"}, {"path", socketOf("tracks")}});
    run_["fusion"] = directory_ / "fusion.json";
    run_["record"] = {{"path", directory_ / "run.jsonl"}};
    const std::string shipped = slurp(dataFile("../../../config/fusion.json"));
    spill(directory_ / "fusion.json", shipped);
    RunningProgram program({"run", configuration()}, {});
    awaitStart(program);
    const Veskar::FileDescriptor camera = connectTo(socketOf("camera"));
    const Veskar::FileDescriptor reader = connectTo(socketOf("tracks"));
    const auto goesOn = [&](const nlohmann::json& before) {
        return meanwhile(
            [&] {
                writeAll(camera.get(), sensorFrame("video").dump() + "\n");
                peer_.publish(radarTopic, onvifJson(sensorFrame("radar")));
            },
            [&](const auto& status) {
                const auto more = [&](const nlohmann::json::json_pointer& counter) {
                    return before.is_null() ||
                           status[counter] > before[counter].template get<int>() + 3;
                };
                return status["sensor"]["radar"]["framesTaken"] > 3 &&
                       more("/sensor/camera/framesTaken"_json_pointer) &&
                       more("/sensor/radar/framesTaken"_json_pointer) &&
                       more("/output/lines/written"_json_pointer) &&
                       more("/output/socket/written"_json_pointer);
            });
    };
    ASSERT_TRUE(goesOn({}));
    nlohmann::json before = status();
    program.send(SIGHUP);
    program.await([&] { return std::filesystem::exists(directory_ / "run.jsonl.1"); });
    EXPECT_TRUE(goesOn(before));
    before = status();
    spill(directory_ / "fusion.json", "{");
    program.send(SIGHUP);
    program.await([&] { return !program.errors().empty(); });
    EXPECT_TRUE(goesOn(before));
    const nlohmann::json last = status();
    EXPECT_EQ(last["broker"]["site"]["connections"], 1);
    EXPECT_EQ(last["broker"]["site"]["lost"], 0);
    EXPECT_EQ(last["sensor"]["camera"]["publishers"], 1);
    EXPECT_EQ(last["output"]["socket"]["readers"], 1);
    EXPECT_EQ(last["output"]["lines"]["dropped"], 0);
    EXPECT_EQ(last["faults"], 1);
    const Outcome outcome = end(program);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(warningsOf(outcome.errors), testing::ElementsAre(HasSubstr("reload: ")));
    for (const char* recording : {"run.jsonl", "run.jsonl.1"}) {
        EXPECT_EQ(veskar({"replay", directory_ / recording, "-o", "/dev/null"}).status, 0);
    }
}

}  // namespace VeskarTest
