// SPDX-License-Identifier: Apache-2.0
// A knocked camera, told of by the program that fuses.
#include "SourceDirectory.h"
#include "cli/live/LiveSite.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <string>
#include <thread>

#include <gmock/gmock.h>

using testing::HasSubstr;
using testing::SizeIs;

namespace VeskarTest {
namespace {

/// A crowd, seen by a camera that looks five degrees too far to the left.
class Watch : public LiveSite {
protected:
    Watch() {
        auto scenario = nlohmann::json::parse(
            slurp(std::string(VESKAR_SOURCE_DIR) + "/config/scenarios/crowd.json"));
        scenario["videoSensor"]["mountingError"] = {{"yaw", 5.0}};
        spill(directory_ / "scene.json", scenario.dump());
        lines_ =
            linesOf(veskar({"simulate", directory_ / "scene.json", "--duration", "60"}).output);
        const auto header = nlohmann::json::parse(lines_.front());
        run_["installation"] = {{"camera", header["camera"]}, {"radar", header["radar"]}};
        for (std::size_t i = 0; i < 2; ++i) {
            run_["sensors"][i]["format"] = "json-lines";
            run_["sensors"][i]["input"] = {{"type", "unix"},
                                           {"path", socketOf(run_["sensors"][i]["kind"])}};
        }
        run_["watch"] = {{"window", 10}, {"mqtt", {{"topic", "installation"}, {"qos", 1}}}};
        peer_.subscribe("installation");
    }

    /// Sends the frames at their pace until told to stop.
    void sendFrames(const std::atomic<bool>& stops) const {
        const FileDescriptor camera = connectTo(socketOf("camera"));
        const FileDescriptor radar = connectTo(socketOf("radar"));
        const Clock::time_point start = Clock::now();
        const double utc = utcNow();
        for (const std::string& line : lines_) {
            nlohmann::json frame = nlohmann::json::parse(line);
            if (!frame.contains("tracks")) {
                continue;
            }
            const double received = frame.value("received", frame["time"].get<double>());
            std::this_thread::sleep_until(start + std::chrono::duration_cast<Clock::duration>(
                                                      std::chrono::duration<double>(received)));
            if (stops) {
                return;
            }
            frame["time"] = utc + frame["time"].get<double>();
            frame.erase("received");
            writeAll((frame["source"] == "radar" ? radar : camera).get(), frame.dump() + "\n");
        }
    }

    using FileDescriptor = Veskar::FileDescriptor;
    Lines lines_;
};

TEST_F(Watch, TellsOfAKnockedCamera) {
    RunningProgram program({"run", configuration()}, {});
    awaitStart(program);
    std::atomic<bool> stops = false;
    std::thread sensors([&] { sendFrames(stops); });
    EXPECT_TRUE(heard([&] { return !peer_.on("installation").empty(); }));
    const nlohmann::json told = status();
    stops = true;
    sensors.join();
    program.send(SIGTERM);
    const Outcome outcome = program.finish();
    EXPECT_EQ(outcome.status, 0);
    ASSERT_THAT(peer_.on("installation"), SizeIs(1));
    const auto message = nlohmann::json::parse(peer_.on("installation").front());
    EXPECT_EQ(message["event"], "moved");
    EXPECT_NEAR(message["yaw"].get<double>(), 5.0, 0.7);
    EXPECT_NEAR(message["pitch"].get<double>(), 0.0, 0.9);
    EXPECT_GT(message["yawStd"].get<double>(), 0.0);
    EXPECT_GE(message["clusters"].get<int>(), 12);
    EXPECT_EQ(told["cameraMoved"], 1);
    EXPECT_NEAR(told["cameraYawError"].get<double>(), 5.0, 0.7);
    EXPECT_EQ(occurrences(outcome.errors, "the installation has moved: the camera looks"), 1U);
    EXPECT_THAT(outcome.errors, HasSubstr("degrees to the left of where it is stated to"));
}

}  // namespace
}  // namespace VeskarTest
