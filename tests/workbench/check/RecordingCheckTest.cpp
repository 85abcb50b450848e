// SPDX-License-Identifier: Apache-2.0
// The findings of the check for faults in simulated recordings.
#include <veskar-host/Projection.h>

#include "Process.h"
#include "SourceDirectory.h"
#include "check/RecordingCheck.h"
#include "recording/RecordingWriter.h"
#include "simulate/Simulation.h"
#include "simulate/scenario/Scenario.h"

#include <algorithm>
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Workbench {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using VeskarTest::spill;

/// The shipped perimeter with its walkers, five minutes long.
Scenario shippedPerimeter() {
    Scenario scenario =
        readScenario(std::string(VESKAR_SOURCE_DIR) + "/config/scenarios/perimeter.json");
    scenario.duration = 300.0;
    return scenario;
}

class RecordingCheck : public testing::Test {
protected:
    RecordingCheckResult checkSimulated(const Scenario& scenario, std::uint64_t seed) {
        Simulation simulation(scenario, seed);
        std::string text = toJsonLine(simulation.header());
        simulation.run(
            [&](const RecordingLine& line) {
                text += std::visit([](const auto& frame) { return toJsonLine(frame); }, line);
            },
            [](double) {});
        return checkText(text);
    }

    RecordingCheckResult checkText(const std::string& text) {
        spill(directory / "recording", text);
        return checkRecording(directory / "recording", [](const Workbench::LineReader&) {});
    }

    /// @return the keys of the installation with warnings
    static std::vector<std::string> warnedOf(const RecordingCheckResult& result) {
        std::vector<std::string> keys;
        for (const Finding& finding : result.findings) {
            const bool isInstallation = finding.key == "yaw" || finding.key == "height" ||
                                        finding.key == "pitch" || finding.key == "lag";
            if (finding.severity == Severity::Warning && isInstallation) {
                keys.push_back(finding.key);
            }
        }
        return keys;
    }

    VeskarTest::TemporaryDirectory directory;
};

TEST_F(RecordingCheck, RaisesNoAlarmOnACleanInstallation) {
    for (const std::uint64_t seed : {21U, 22U}) {
        const RecordingCheckResult result = checkSimulated(shippedPerimeter(), seed);
        ASSERT_TRUE(result.mounting.has_value());
        EXPECT_THAT(warnedOf(result), IsEmpty()) << seed;
        EXPECT_FALSE(hasFault(result.findings));
    }
}

TEST_F(RecordingCheck, FindsAYawErrorOfTwoDegrees) {
    Scenario scenario = shippedPerimeter();
    scenario.video.mountingError.yaw = 2.0;
    const RecordingCheckResult result = checkSimulated(scenario, 21);
    EXPECT_THAT(warnedOf(result), testing::ElementsAre("yaw"));
    EXPECT_NEAR(degrees(result.mounting->yaw.value), 2.0, 0.4);
}

TEST_F(RecordingCheck, FindsAHeightErrorOfHalfAMetre) {
    Scenario scenario = shippedPerimeter();
    scenario.video.mountingError.position[2] = 0.5;
    const RecordingCheckResult result = checkSimulated(scenario, 21);
    EXPECT_THAT(warnedOf(result), testing::ElementsAre("height"));
    EXPECT_NEAR(result.mounting->height.value, 0.5, 0.1);
    const auto finding = std::find_if(result.findings.begin(), result.findings.end(),
                                      [](const Finding& f) { return f.key == "height"; });
    EXPECT_THAT(finding->message, HasSubstr("set camera.position[2] to 5."));
}

TEST_F(RecordingCheck, FindsARadarLagOf150Milliseconds) {
    Scenario scenario = shippedPerimeter();
    scenario.radarSensor.timestampError = 0.15;
    const RecordingCheckResult result = checkSimulated(scenario, 21);
    EXPECT_THAT(warnedOf(result), testing::ElementsAre("lag"));
    EXPECT_NEAR(result.mounting->lag.value, 0.15, 0.03);
}

TEST_F(RecordingCheck, SaysNothingOfAnInstallationThatTooFewObjectsShow) {
    Scenario scenario = shippedPerimeter();
    scenario.duration = 20.0;
    const RecordingCheckResult result = checkSimulated(scenario, 21);
    EXPECT_FALSE(result.mounting.has_value());
    EXPECT_THAT(warnedOf(result), IsEmpty());
    const auto isAboutIt = [](const Finding& finding) { return finding.key == "installation"; };
    EXPECT_TRUE(std::any_of(result.findings.begin(), result.findings.end(), isAboutIt));
}

TEST_F(RecordingCheck, ListsEveryFaultOfTheHeader) {
    std::string header = toJsonLine(Simulation(shippedPerimeter(), 1).header());
    const auto spoil = [&](const std::string& from, const std::string& to) {
        const std::size_t place = header.find(from);
        ASSERT_NE(place, std::string::npos) << from;
        header.replace(place, from.size(), to);
    };
    spoil("\"resolution\":[1920,1080]", "\"resolution\":[1920,-1080]");
    spoil("\"azimuthStd\":", "\"azimuthDeviation\":");
    spoil("\"version\":1", "\"version\":2");
    const RecordingCheckResult result = checkText(header);
    std::vector<std::string> keys;
    for (const Finding& finding : result.findings) {
        EXPECT_EQ(finding.severity, Severity::Fault) << finding.message;
        EXPECT_EQ(finding.line, 1U);
        keys.push_back(finding.key);
    }
    EXPECT_THAT(keys, testing::UnorderedElementsAre("version", "camera.resolution[1]",
                                                    "radar.azimuthStd", "radar.azimuthDeviation"));
}

TEST_F(RecordingCheck, NamesTheKeyThatTheReaderRefuses) {
    const std::string header = toJsonLine(Simulation(shippedPerimeter(), 1).header());
    const RecordingCheckResult ofLines =
        checkText(header + R"({"source":"radar","time":1.0,"tracks":[],"a: b":1})" + "\n" +
                  R"({"source":"radar","time":1.1,"tracks":[{"id":1,"range":"far"}]})" + "\n");
    ASSERT_GE(ofLines.findings.size(), 2U);
    EXPECT_EQ(ofLines.findings[0].key, "a: b");
    EXPECT_EQ(ofLines.findings[0].message, "unknown key");
    EXPECT_EQ(ofLines.findings[0].line, 2U);
    EXPECT_EQ(ofLines.findings[1].key, "tracks[0].range");
    EXPECT_EQ(ofLines.findings[1].message, "expected a number, found a string");
    // The check leaves the word to the reader.
    std::string wrong = header;
    const std::string truth = "\"truth\":\"complete\"";
    ASSERT_NE(wrong.find(truth), std::string::npos);
    wrong.replace(wrong.find(truth), truth.size(), "\"truth\":\"some\"");
    const RecordingCheckResult ofHeader = checkText(wrong);
    ASSERT_EQ(ofHeader.findings.size(), 1U);
    EXPECT_EQ(ofHeader.findings[0].key, "truth");
    EXPECT_EQ(ofHeader.findings[0].message, "\"some\" is not none, incomplete or complete");
    EXPECT_EQ(ofHeader.findings[0].line, 1U);
}

TEST_F(RecordingCheck, SaysThatSomethingIsNoRecording) {
    const std::string others[] = {"", "\x01\x02garbage\n", "{\"format\":\"veskar-fused\"}\n",
                                  "[]\n"};
    for (const std::string& text : others) {
        const RecordingCheckResult result = checkText(text);
        ASSERT_TRUE(hasFault(result.findings)) << text;
        EXPECT_EQ(result.findings[0].line, 1U) << text;
    }
    EXPECT_THROW(checkRecording(directory / "nowhere", [](const Workbench::LineReader&) {}),
                 std::runtime_error);
}

TEST_F(RecordingCheck, ListsTheFaultsOfEveryLineAndGoesOn) {
    Scenario scenario = shippedPerimeter();
    scenario.duration = 1.0;
    const Simulation simulation(scenario, 1);
    std::string text = toJsonLine(simulation.header());
    text += R"({"source":"video","time":1.0,"tracks":[]})"
            "\n"
            R"({"source":"video","time":1.1,"tracks":[]})"
            "\n"
            R"({"source":"video","time":1.2,"tracks":[]})"
            "\n"
            R"({"source":"video","time":0.9,"tracks":[]})"
            "\n"
            R"({"source":"sonar","time":1.2,"tracks":[]})"
            "\n"
            R"({"source":"radar","time":1.2,"tracks":[{"id":1}]})"
            "\n"
            R"({"source":"radar","time":NaN,"tracks":[]})"
            "\n"
            R"({"source":"video","time":5.0,"tracks":[]})"
            "\n"
            R"({"source":"video","time":5.1,"tra)";
    const RecordingCheckResult result = checkText(text);
    std::vector<std::uint64_t> lines;
    for (const Finding& finding : result.findings) {
        if (finding.severity == Severity::Fault) {
            lines.push_back(finding.line);
        }
    }
    EXPECT_THAT(lines, testing::ElementsAre(5, 6, 7, 8, 10));
    EXPECT_EQ(result.findings[0].key, "time");
    EXPECT_THAT(result.findings[1].message, HasSubstr("sonar"));
    EXPECT_EQ(result.findings[2].key, "tracks[0].range");
    EXPECT_THAT(result.findings[4].message, HasSubstr("cut off"));
    const auto gap =
        std::find_if(result.findings.begin(), result.findings.end(), [](const Finding& finding) {
            return finding.severity == Severity::Warning && finding.line == 9;
        });
    ASSERT_NE(gap, result.findings.end());
    EXPECT_THAT(gap->message, HasSubstr("no frame for 3.80 s"));
}

}  // namespace
}  // namespace Workbench
