// SPDX-License-Identifier: Apache-2.0
// Runs calibrate as a user does.
#include "Process.h"
#include "SamplingHost.h"
#include "SourceDirectory.h"
#include "report/Page.h"
#include "support/DatagramReceiver.h"

#include <cmath>
#include <filesystem>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using testing::HasSubstr;
using testing::IsEmpty;
using VeskarTest::Outcome;
using VeskarTest::slurp;
using VeskarTest::spill;
using VeskarTest::veskar;

namespace {

class CalibrateProgram : public testing::Test {
protected:
    /// @param name of the recording
    /// @param camera errors of its mounting, as in scenarios
    /// @param lag of the radar's stamps, s
    std::string perimeter(const std::string& name, const nlohmann::json& camera, double lag = 0.0) {
        auto scenario = nlohmann::json::parse(
            slurp(std::string(VESKAR_SOURCE_DIR) + "/config/scenarios/perimeter.json"));
        scenario["videoSensor"]["mountingError"] = camera;
        scenario["radarSensor"]["timestampError"] = lag;
        spill(directory / "scene.json", scenario.dump());
        std::string path = directory / name;
        EXPECT_EQ(veskar({"simulate", directory / "scene.json", "--duration", "150", "--seed", "51",
                          "-o", path})
                      .status,
                  0);
        return path;
    }

    /// @return GOSPA of the fusion of a recording
    double gospa(const std::string& recording, const std::vector<std::string>& options = {}) {
        std::vector<std::string> replay{"replay", recording, "-o", directory / "fused.jsonl"};
        replay.insert(replay.end(), options.begin(), options.end());
        EXPECT_EQ(veskar(replay).status, 0);
        const Outcome outcome = veskar(
            {"evaluate", recording, directory / "fused.jsonl", "--format", "json", "--force"});
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return nlohmann::json::parse(outcome.output)["parts"]["all"]["fusion"]["GOSPA"];
    }

    static nlohmann::json answer(const std::vector<std::string>& arguments) {
        std::vector<std::string> all{"calibrate", "--format", "json"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const Outcome outcome = veskar(all);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return nlohmann::json::parse(outcome.output);
    }

    VeskarTest::TemporaryDirectory directory;
};

TEST_F(CalibrateProgram, BringsAKnockedCameraBack) {
    const std::string clean = perimeter("clean.jsonl", nlohmann::json::object());
    const std::string knocked = perimeter("knocked.jsonl", {{"yaw", 3.0}, {"height", -0.5}});
    const Outcome outcome = veskar({"calibrate", knocked, "-o", directory / "corrected.json"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, HasSubstr("camera.yaw"));
    EXPECT_THAT(outcome.output, HasSubstr("corrected from 0 to 3.0"));
    EXPECT_THAT(outcome.output, HasSubstr("in held-out time: bearing"));
    const double reached = gospa(knocked, {"--installation", directory / "corrected.json"});
    EXPECT_GT(gospa(knocked), 1.2 * gospa(clean));
    EXPECT_LT(reached, 1.03 * gospa(clean));
}

TEST_F(CalibrateProgram, AppliesTheCorrectionToACopy) {
    const std::string late = perimeter("late.jsonl", {{"yaw", 2.0}}, 0.2);
    const nlohmann::json first = answer({late, "--apply", directory / "copy.jsonl"});
    EXPECT_EQ(first["values"]["lag"]["verdict"], "corrected");
    EXPECT_NEAR(first["values"]["lag"]["error"], 0.2, 0.03);
    EXPECT_NEAR(first["values"]["camera.yaw"]["error"], 2.0, 0.15);
    EXPECT_GT(first["heldOut"]["before"]["standardDeviations"],
              first["heldOut"]["after"]["standardDeviations"]);
    const nlohmann::json second = answer({directory / "copy.jsonl"});
    for (const auto& [name, value] : second["values"].items()) {
        EXPECT_EQ(value["verdict"], "as stated") << name;
    }
    // Truth and every frame are still there.
    EXPECT_EQ(veskar({"check", directory / "copy.jsonl"}).status, 0);
    const std::string before = slurp(late);
    const std::string after = slurp(directory / "copy.jsonl");
    EXPECT_EQ(std::count(before.begin(), before.end(), '\n'),
              std::count(after.begin(), after.end(), '\n'));
}

TEST_F(CalibrateProgram, HoldsWhatItIsTold) {
    const std::string path = perimeter("turned.jsonl", {{"yaw", 2.0}});
    const nlohmann::json json = answer({path, "--hold", "camera.roll", "--estimate", "focalScale"});
    EXPECT_FALSE(json["values"].contains("camera.roll"));
    EXPECT_TRUE(json["values"].contains("focalScale"));
    EXPECT_TRUE(json["correlations"]["camera.pitch"].contains("camera.height"));
}

TEST_F(CalibrateProgram, SaysWhatToWalkWhenItCannotTell) {
    auto scenario = nlohmann::json::parse(
        slurp(std::string(VESKAR_SOURCE_DIR) + "/config/scenarios/perimeter.json"));
    scenario["objects"] = nlohmann::json::array();
    spill(directory / "scene.json", scenario.dump());
    ASSERT_EQ(
        veskar({"simulate", directory / "scene.json", "-o", directory / "empty.jsonl"}).status, 0);
    const Outcome outcome =
        veskar({"calibrate", directory / "empty.jsonl", "-o", directory / "corrected.json"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output, HasSubstr("cannot tell anything"));
    EXPECT_THAT(outcome.output, HasSubstr("for camera.pitch: walk towards the camera"));
    // The header states what the recording states.
    const std::string recording = slurp(directory / "empty.jsonl");
    EXPECT_EQ(slurp(directory / "corrected.json"), recording.substr(0, recording.find('\n') + 1));
}

TEST_F(CalibrateProgram, DoesNotFitAnErrorOfConvention) {
    const std::string path = perimeter("clean.jsonl", nlohmann::json::object());
    std::istringstream lines(slurp(path));
    std::string text;
    for (std::string line; std::getline(lines, line);) {
        nlohmann::ordered_json json = nlohmann::ordered_json::parse(line);
        if (json.value("source", "") == "radar") {
            for (auto& track : json["tracks"]) {
                track["azimuth"] = -track["azimuth"].get<double>();
            }
        }
        text += json.dump() + "\n";
    }
    spill(directory / "mirrored.jsonl", text);
    const Outcome outcome =
        veskar({"calibrate", directory / "mirrored.jsonl", "-o", directory / "corrected.json"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output, IsEmpty());
    EXPECT_THAT(outcome.errors, HasSubstr("azimuth"));
    EXPECT_THAT(outcome.errors, HasSubstr("veskar check"));
    EXPECT_NE(veskar({"replay", path, "--installation", directory / "corrected.json"}).status, 0);
}

TEST_F(CalibrateProgram, ShowsTheErrorsOnAPage) {
    const std::string path = perimeter("turned.jsonl", {{"yaw", 2.0}});
    const std::string page = directory / "page.html";
    const Outcome outcome = veskar({"calibrate", path, "--page", page, "--format", "json"});
    if (const std::string missing(Workbench::reportPageMissing); !missing.empty()) {
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.errors, HasSubstr(missing));
        return;
    }
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    const std::string html = slurp(page);
    const std::string mark = "id=\"report-data\">";
    const std::size_t begin = html.find(mark) + mark.size();
    const auto data =
        nlohmann::json::parse(html.substr(begin, html.find("</script>", begin) - begin));
    EXPECT_EQ(data["answer"], nlohmann::json::parse(outcome.output));
    const auto& pairs = data["pairs"];
    const std::size_t count = data["answer"]["samples"];
    for (const auto& [name, values] : pairs.items()) {
        EXPECT_EQ(values.size(), count) << name;
    }
    double sum = 0.0;
    for (const auto& error : pairs["bearingBefore"]) {
        sum += error.get<double>();
    }
    EXPECT_NEAR(sum / static_cast<double>(count), -2.0, 0.3) << "seen too far to the right";
}

TEST_F(CalibrateProgram, ListensToADevice) {
    const VeskarTest::SocketPath socket("/tmp/autocalibration.sock");
    const VeskarTest::KnownErrors recording = VeskarTest::simulated(
        "perimeter", 300.0,
        [](Workbench::Scenario& scenario) { scenario.video.mountingError.pitch = 1.0; });
    spill(directory / "device.json", Workbench::toJsonLine(recording.header));
    VeskarTest::RunningProgram program(
        {"calibrate", "--listen", "100", "--datagrams", "1500", "--installation",
         directory / "device.json", "--format", "json", "-o", directory / "corrected.json"},
        {});
    program.await([&] { return program.errors().find("listening to") != std::string::npos; });
    VeskarTest::fuseAndSendSamples(recording);
    const Outcome outcome = program.finish();
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    const auto json = nlohmann::json::parse(outcome.output);
    EXPECT_NEAR(json["values"]["camera.pitch"]["error"], 1.0, 0.35);
    EXPECT_EQ(json["values"]["camera.pitch"]["verdict"], "corrected");
    EXPECT_FALSE(json["values"].contains("camera.yaw"));
    EXPECT_TRUE(json["errors"]["before"]["bearingDegrees"].is_null());
    const auto corrected = nlohmann::json::parse(slurp(directory / "corrected.json"));
    EXPECT_NEAR(corrected["camera"]["rotation"]["pitch"].get<double>(),
                recording.header.camera.mounting.pitch + 1.0, 0.35);
}

TEST_F(CalibrateProgram, SaysWhichDatagramsItLeftOut) {
    const std::string socket = directory / "samples.sock";
    const std::string path = perimeter("clean.jsonl", nlohmann::json::object());
    VeskarTest::RunningProgram program({"calibrate", "--listen", "100", "--datagrams", "1",
                                        "--socket", socket, "--installation", path},
                                       {});
    program.await([&] { return program.errors().find("listening to") != std::string::npos; });
    for (const char* const text : {"nonsense", "{}", R"({"radarTimestamp_ns":1,"data":[]})"}) {
        VeskarTest::sendDatagram(socket, text);
    }
    const Outcome outcome = program.finish();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("2 datagrams left out; the first: no calibration"));
    EXPECT_THAT(outcome.output, HasSubstr("cannot tell anything"));
    EXPECT_FALSE(std::filesystem::exists(socket));
}

TEST_F(CalibrateProgram, ListensWithWhatBelongsToIt) {
    const std::string path = perimeter("clean.jsonl", nlohmann::json::object());
    const auto refusal = [](const std::vector<std::string>& options) {
        std::vector<std::string> all{"calibrate"};
        all.insert(all.end(), options.begin(), options.end());
        const Outcome outcome = veskar(all);
        EXPECT_EQ(outcome.status, 2);
        return outcome.errors;
    };
    EXPECT_THAT(refusal({}), HasSubstr("a recording is needed, or --listen"));
    EXPECT_THAT(refusal({"--listen", "5"}), HasSubstr("--installation is needed"));
    EXPECT_THAT(refusal({path, "--listen", "5"}), HasSubstr("--listen takes no recordings"));
    EXPECT_THAT(refusal({"--listen", "5", "--apply", "copy.jsonl"}), HasSubstr("--apply"));
    EXPECT_THAT(refusal({"--listen", "5", "--estimate", "drift"}),
                HasSubstr("--estimate drift: samples of a device tell"));
    EXPECT_THAT(refusal({"--listen", "0"}), HasSubstr("--listen"));
    EXPECT_THAT(refusal({path, "--socket", "s"}), HasSubstr("--socket requires --listen"));
}

TEST_F(CalibrateProgram, RefusesWhatDoesNotBelongTogether) {
    const std::string path = perimeter("clean.jsonl", nlohmann::json::object());
    std::string other = slurp(path);
    const std::size_t place = other.find("\"position\":[0.0,0.0,5.0]");
    ASSERT_NE(place, std::string::npos) << other.substr(0, 600);
    other.replace(place, 24, "\"position\":[0.0,0.0,6.0]");
    spill(directory / "other.jsonl", other);
    Outcome outcome = veskar({"calibrate", path, directory / "other.jsonl"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.errors, HasSubstr("states another installation than"));

    outcome = veskar({"calibrate", path, "--estimate", "radar.yaw"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.errors,
                HasSubstr("radar.yaw: only the angle between both sensors can be told; hold "
                          "camera.yaw"));

    outcome = veskar({"calibrate", path, path, "--apply", directory / "copy.jsonl"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.errors, HasSubstr("--apply: takes one recording"));

    outcome = veskar({"calibrate", path, "--apply", path});
    EXPECT_EQ(outcome.status, 2);

    for (const char* ofTheModel : {"video.smoothing", "radar.depth"}) {
        outcome = veskar({"calibrate", path, "--estimate", ofTheModel});
        EXPECT_EQ(outcome.status, 2) << ofTheModel;
    }
}

}  // namespace
