// SPDX-License-Identifier: Apache-2.0
// Runs the program as a user does.
#include "Process.h"
#include "Programs.h"
#include "SourceDirectory.h"

#include <chrono>
#include <cmath>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using VeskarTest::dataFile;
using VeskarTest::Outcome;
using VeskarTest::slurp;
using VeskarTest::spill;
using VeskarTest::veskar;

namespace {

class Program : public testing::Test {
protected:
    // The small recording behind the golden files: the whole scenario by default, or a part of it.
    std::string recording(const std::string& duration = "") {
        std::string path = directory / "tiny.jsonl";
        std::vector<std::string> arguments{"simulate", dataFile("tiny.scenario.json"), "-o", path};
        if (!duration.empty()) {
            arguments.insert(arguments.end(), {"--duration", duration});
        }
        EXPECT_EQ(veskar(arguments).status, 0);
        return path;
    }

    VeskarTest::TemporaryDirectory directory;
};

// Allows differences of numbers that rounding on other processors may cause.
void expectAlike(const nlohmann::json& actual, const nlohmann::json& expected,
                 const std::string& where) {
    if (expected.is_number() && actual.is_number()) {
        const double value = expected.get<double>();
        EXPECT_NEAR(actual.get<double>(), value, 2e-3 * std::max(1.0, std::abs(value))) << where;
        return;
    }
    ASSERT_EQ(actual.type(), expected.type()) << where;
    ASSERT_EQ(actual.size(), expected.size()) << where;
    if (expected.is_structured()) {
        for (const auto& item : expected.items()) {
            const nlohmann::json* value = nullptr;
            if (actual.is_array()) {
                value = &actual[std::stoul(item.key())];
            } else if (actual.contains(item.key())) {
                value = &actual[item.key()];
            }
            ASSERT_NE(value, nullptr) << where << "/" << item.key();
            expectAlike(*value, item.value(), where + "/" + item.key());
        }
        return;
    }
    EXPECT_EQ(actual, expected) << where;
}

void expectLinesAlike(const std::string& actual, const std::string& golden) {
    std::istringstream actualLines(actual);
    std::istringstream goldenLines(slurp(dataFile(golden)));
    std::string actualLine;
    std::string goldenLine;
    int number = 0;
    while (std::getline(goldenLines, goldenLine)) {
        ASSERT_TRUE(std::getline(actualLines, actualLine)) << golden << " goes on";
        expectAlike(nlohmann::json::parse(actualLine), nlohmann::json::parse(goldenLine),
                    golden + ":" + std::to_string(++number));
        if (testing::Test::HasFailure()) {
            return;
        }
    }
    EXPECT_GT(number, 5);
    EXPECT_FALSE(std::getline(actualLines, actualLine)) << golden << " has ended";
}

}  // namespace

TEST_F(Program, TellsItsVersion) {
    const Outcome outcome = veskar({"--version"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "veskar " VESKAR_VERSION "\n");
}

TEST_F(Program, HelpShowsAnExampleForEverySubcommand) {
    for (const std::vector<std::string>& command : {std::vector<std::string>{},
                                                    {"simulate"},
                                                    {"import"},
                                                    {"import", "autoferry"},
                                                    {"import", "kitti"},
                                                    {"import", "csv"},
                                                    {"import", "mot"},
                                                    {"import", "kitti-results"},
                                                    {"replay"}}) {
        auto arguments = command;
        arguments.emplace_back("--help");
        const Outcome outcome = veskar(arguments);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_THAT(outcome.output, HasSubstr("Example:\n  veskar "));
        EXPECT_THAT(outcome.errors, IsEmpty());
    }
}

TEST_F(Program, WrongUsageIsStatus2) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{},
                                                      {"fly"},
                                                      {"simulate"},
                                                      {"replay", "x", "--format", "xml"},
                                                      {"simulate", "x", "--seed", "red"},
                                                      {"import"},
                                                      {"replay", "--unknown"}}) {
        const Outcome outcome = veskar(arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.output, IsEmpty());
        EXPECT_THAT(outcome.errors, HasSubstr("--help"));
    }
}

// The golden files were made by
//   veskar simulate tiny.scenario.json -o tiny.jsonl
//   veskar replay tiny.jsonl -o tiny.fused.jsonl
//   veskar replay tiny.jsonl --config fusion-plain.json -o tiny.plain.fused.jsonl
//   veskar import kitti kitti.labels.txt kitti.calibration.txt -o kitti.jsonl
//   veskar import autoferry boats.detections.json boats.groundTruth.json -o boats.jsonl
// and reviewed; changing them means changing the product.
TEST_F(Program, SimulateWritesTheGoldenRecording) {
    expectLinesAlike(slurp(recording()), "tiny.jsonl");
}

TEST_F(Program, ReplayWritesTheGoldenTracks) {
    const Outcome outcome = veskar({"replay", dataFile("tiny.jsonl")});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.errors, IsEmpty());
    expectLinesAlike(outcome.output, "tiny.fused.jsonl");
}

TEST_F(Program, ReplayWithoutRulesWritesTheGoldenTracks) {
    const Outcome outcome = veskar({"replay", dataFile("tiny.jsonl"), "--config",
                                    VESKAR_SOURCE_DIR "/config/fusion-plain.json"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.errors, IsEmpty());
    expectLinesAlike(outcome.output, "tiny.plain.fused.jsonl");
}

TEST_F(Program, ImportKittiWritesTheGoldenRecording) {
    const Outcome outcome = veskar(
        {"import", "kitti", dataFile("kitti.labels.txt"), dataFile("kitti.calibration.txt")});
    EXPECT_EQ(outcome.status, 0);
    expectLinesAlike(outcome.output, "kitti.jsonl");
}

TEST_F(Program, ImportAutoferryWritesTheGoldenRecording) {
    const Outcome outcome = veskar({"import", "autoferry", dataFile("boats.detections.json"),
                                    dataFile("boats.groundTruth.json"), "--forward", "0"});
    EXPECT_EQ(outcome.status, 0);
    expectLinesAlike(outcome.output, "boats.jsonl");
}

TEST_F(Program, OutputIsTheSameBytesEveryTime) {
    const std::string path = recording();
    const std::string scenario = dataFile("tiny.scenario.json");
    EXPECT_EQ(veskar({"simulate", scenario, "--seed", "9"}).output,
              veskar({"simulate", scenario, "--seed", "9"}).output);
    EXPECT_NE(veskar({"simulate", scenario, "--seed", "9"}).output, slurp(path));
    EXPECT_EQ(veskar({"replay", path}).output, veskar({"replay", path}).output);
}

TEST_F(Program, DashStandsForTheStandardStreams) {
    const std::string path = recording();
    const Outcome piped =
        veskar({"simulate", "-", "-o", "-"}, slurp(dataFile("tiny.scenario.json")));
    EXPECT_EQ(piped.status, 0);
    EXPECT_EQ(piped.output, slurp(path));
    const std::string fused = directory / "fused";
    EXPECT_EQ(veskar({"replay", path, "-o", fused}).status, 0);
    EXPECT_EQ(veskar({"replay", "-"}, slurp(path)).output, slurp(fused));
}

TEST_F(Program, DurationShortensAScenario) {
    const Outcome outcome = veskar({"simulate", dataFile("tiny.scenario.json"), "--duration", "1"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, HasSubstr("\"source\":\"truth\",\"time\":1,"));
    EXPECT_EQ(outcome.output.find("\"source\":\"truth\",\"time\":1.1,"), std::string::npos);
}

TEST_F(Program, ReplayWritesCsv) {
    const Outcome outcome = veskar({"replay", recording(), "--format", "csv", "--tags"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, StartsWith("time,received,source,id,confirmed,"));
    EXPECT_THAT(outcome.output, HasSubstr("maximizeDetections\n"));
}

TEST_F(Program, SummaryTellsWhatLivedAndWhatFedIt) {
    const std::string path = recording();
    const Outcome toFile = veskar({"replay", path, "-o", directory / "fused", "--summary"});
    EXPECT_THAT(toFile.output, HasSubstr("video and"));
    EXPECT_THAT(toFile.output, HasSubstr("confirmed"));
    EXPECT_THAT(toFile.output, HasSubstr("human"));
    EXPECT_THAT(toFile.output, HasSubstr("fed by"));
    // With the tracks on standard output, there is no summary on it.
    const Outcome toStream = veskar({"replay", path, "--summary"});
    EXPECT_EQ(toStream.output, slurp(directory / "fused"));
    EXPECT_EQ(toStream.errors, toFile.output);
}

TEST_F(Program, RealtimeTakesItsTimeAndChangesNothing) {
    const std::string path = recording("0.5");
    const std::string fast = veskar({"replay", path}).output;
    const auto start = std::chrono::steady_clock::now();
    const Outcome slow = veskar({"replay", path, "--realtime"});
    // Half a second of recording, minus the latency of the first frame.
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(400));
    EXPECT_EQ(slow.output, fast);
    EXPECT_EQ(slow.errors, "");
}

TEST_F(Program, ShowsATerminalHowFarItIsOnceItTakesLongerThanASecond) {
    const std::string path = recording("1.4");
    const std::string command = "'" + std::string(VESKAR_PROGRAM) + "' replay '" + path +
                                "' --realtime -o '" + (directory / "fused") + "'";
    const Outcome outcome = VeskarTest::run({"script", "-qec", command, "/dev/null"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, HasSubstr("replaying [="));
    EXPECT_THAT(outcome.output, HasSubstr(" %"));
    // The line is cleared at the end.
    EXPECT_THAT(outcome.output, EndsWith("\r\033[K"));
}

TEST_F(Program, TruthNeverReachesTheFusion) {
    const std::string path = recording();
    std::istringstream lines(slurp(path));
    std::string line;
    std::string without;
    while (std::getline(lines, line)) {
        without += line.find("\"source\":\"truth\"") == std::string::npos ? line + "\n" : "";
    }
    EXPECT_LT(without.size(), slurp(path).size());
    EXPECT_EQ(veskar({"replay", "-"}, without).output, veskar({"replay", path}).output);
}

TEST_F(Program, ConfigurationAndCameraCanBeReplaced) {
    const std::string path = recording();
    const std::string before = veskar({"replay", path}).output;
    const std::string shipped = std::string(VESKAR_SOURCE_DIR) + "/config/fusion.json";
    EXPECT_EQ(veskar({"replay", path, "--config", shipped}).output, before);
    nlohmann::json config = nlohmann::json::parse(slurp(shipped));
    config["veskarModule"]["systemTrackConfirmationLimitUpper"] = 2.0;
    config["veskarModule"]["systemTrackConfirmationLimitLower"] = 2.0;
    spill(directory / "config", config.dump());
    const Outcome strict = veskar({"replay", path, "--config", directory / "config"});
    EXPECT_EQ(strict.status, 0);
    EXPECT_EQ(strict.output.find("\"confirmed\":true"), std::string::npos);
    nlohmann::json header = nlohmann::json::parse(before.substr(0, before.find('\n')));
    header["camera"]["position"][2] = 6.0;
    spill(directory / "camera", header["camera"].dump());
    const Outcome higher = veskar({"replay", path, "--camera", directory / "camera"});
    EXPECT_EQ(higher.status, 0);
    EXPECT_NE(higher.output, before);
}

TEST_F(Program, TooManyTracksAreStatus1WithAMessage) {
    const std::string path = recording();
    std::string text = slurp(path);
    text = text.substr(0, text.find('\n') + 1);
    for (int frame = 1; frame <= 2; ++frame) {
        text += "{\"source\":\"radar\",\"time\":" + std::to_string(frame) + ",\"tracks\":[";
        for (int id = 0; id < 520; ++id) {
            text += (id == 0 ? "" : ",") + std::string("{\"id\":") + std::to_string(id) +
                    ",\"range\":" + std::to_string(10 + id) + ",\"azimuth\":0,\"radialSpeed\":0}";
        }
        text +=
            "]}\n{\"source\":\"video\",\"time\":" + std::to_string(frame) + ".01,\"tracks\":[]}\n";
    }
    text += "{\"source\":\"radar\",\"time\":3,\"tracks\":[]}\n";
    const Outcome outcome = veskar({"replay", "-", "-o", directory / "fused"}, text);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("the fusion could not associate "));
    EXPECT_THAT(outcome.errors, HasSubstr("too big (>512)"));
    EXPECT_THAT(slurp(directory / "fused"), HasSubstr("\"tracks\":[{\"id\""));
}

TEST_F(Program, AFaultInTheInputLeavesNoOutput) {
    const std::string text = slurp(recording());
    spill(directory / "cut", text.substr(0, text.size() - 30));
    const Outcome outcome = veskar({"replay", directory / "cut", "-o", directory / "fused.jsonl"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.errors, StartsWith("veskar: " + directory / "cut" + ":"));
    EXPECT_THAT(outcome.errors, HasSubstr(": the line is cut off: column "));
    EXPECT_THAT(directory.names(), ElementsAre("cut", "tiny.jsonl"));
}

TEST_F(Program, AnEarlierOutputSurvivesAFault) {
    const std::string text = slurp(recording());
    spill(directory / "fused.jsonl", "precious");
    EXPECT_EQ(
        veskar({"replay", "-", "-o", directory / "fused.jsonl"}, text.substr(0, text.size() - 30))
            .status,
        2);
    EXPECT_EQ(slurp(directory / "fused.jsonl"), "precious");
}

TEST_F(Program, MissingFilesAreStatus2) {
    EXPECT_EQ(veskar({"replay", directory / "no"}).errors,
              "veskar: " + directory / "no" + ": No such file or directory\n");
    EXPECT_EQ(veskar({"replay", recording(), "--config", directory / "no"}).status, 2);
    EXPECT_EQ(veskar({"simulate", directory / "no"}).status, 2);
    EXPECT_EQ(veskar({"import", "kitti", directory / "no", directory / "no"}).status, 2);
    EXPECT_EQ(veskar({"import", "autoferry", directory / "no", directory / "no"}).status, 2);
}

TEST_F(Program, ARefusedConfigurationIsExplained) {
    const std::string path = recording();
    spill(directory / "syntax", "{\n\"veskarInputs\": ]\n");
    const Outcome syntax = veskar({"replay", path, "--config", directory / "syntax"});
    EXPECT_EQ(syntax.status, 2);
    EXPECT_THAT(syntax.errors, StartsWith("veskar: " + directory / "syntax" + ":2: "));
    spill(directory / "empty", "{}");
    const Outcome empty = veskar({"replay", path, "--config", directory / "empty"});
    EXPECT_EQ(empty.status, 2);
    EXPECT_THAT(empty.errors, HasSubstr("No such key: veskarInputs"));
    EXPECT_THAT(empty.errors, HasSubstr("the fusion refuses this configuration"));
    spill(directory / "camera", "{\"bdc\": true}");
    const Outcome camera = veskar({"replay", path, "--camera", directory / "camera"});
    EXPECT_EQ(camera.status, 2);
    EXPECT_EQ(camera.errors, "veskar: " + directory / "camera" + ": position: missing\n");
}

TEST_F(Program, AClosedPipeIsNoErrorAndNoSignal) {
    const std::string path = recording();
    const Outcome outcome = VeskarTest::run(
        {"bash", "-c", "exec 3> >(:); wait $!; \"$0\" replay \"$1\" 2>\"$2\" >&3; echo $?",
         VESKAR_PROGRAM, path, directory / "err"});
    EXPECT_EQ(outcome.output, "0\n");
    EXPECT_EQ(slurp(directory / "err"), "");
}

TEST_F(Program, AFullDiskIsStatus2) {
    const Outcome outcome = veskar({"replay", recording(), "-o", "/dev/full"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.errors, "veskar: /dev/full: cannot write: No space left on device\n");
}

TEST_F(Program, GarbageIsStatus2) {
    const Outcome outcome = veskar({"replay", "-"}, std::string("\x00\x01\xff\xfe\n\x80", 6));
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.output, IsEmpty());
    EXPECT_THAT(outcome.errors, StartsWith("veskar: <stdin>:1: no header of a recording: "));
    for (const char c : outcome.errors) {
        EXPECT_TRUE(c == '\n' || (c >= ' ' && c <= '~'));
    }
}
