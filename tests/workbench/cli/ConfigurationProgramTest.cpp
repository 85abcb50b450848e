// SPDX-License-Identifier: Apache-2.0
// The program's messages about configurations, and the settings that its outputs state.
#include "Process.h"
#include "SourceDirectory.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using VeskarTest::dataFile;
using VeskarTest::Outcome;
using VeskarTest::slurp;
using VeskarTest::spill;
using VeskarTest::veskar;

namespace {

const std::string shippedFloor = R"("radarFloorStd": [0.02, 0.06, 0.05, 0.1, 0.6, 0.3])";
const std::string shippedPath = std::string(VESKAR_SOURCE_DIR) + "/config/fusion.json";
const std::string integerForReal = "4 is an integer where a real number is needed: write 4.0";

class ConfigurationProgram : public testing::Test {
protected:
    /// Writes the shipped configuration with one piece replaced.
    void write(const std::string& from, const std::string& to) {
        std::string text = slurp(shippedPath);
        const std::size_t place = text.find(from);
        ASSERT_NE(place, std::string::npos) << from;
        spill(config, text.replace(place, from.size(), to));
    }
    Outcome replay() { return veskar({"replay", dataFile("tiny.jsonl"), "--config", config}); }
    static nlohmann::json headerOf(const std::string& fused) {
        return nlohmann::json::parse(fused.substr(0, fused.find('\n')));
    }
    static nlohmann::json configurationOf(const std::string& fused) {
        return headerOf(fused).at("configuration");
    }

    VeskarTest::TemporaryDirectory directory;
    const std::string config = directory / "config.json";
};

}  // namespace

TEST_F(ConfigurationProgram, AReplayStatesEverySettingThatItUsed) {
    write("        \"removeClassMismatches\": false,\n", "");
    const Outcome outcome = replay();
    EXPECT_THAT(outcome.errors, IsEmpty());
    auto shipped = nlohmann::json::parse(slurp(shippedPath));
    EXPECT_EQ(headerOf(outcome.output).at("veskarHost"), shipped.at("veskarHost"));
    shipped.erase("veskarHost");
    EXPECT_EQ(configurationOf(outcome.output), shipped);
}

TEST_F(ConfigurationProgram, AReplayStatesWhatItUsedAndNotWhatWasWritten) {
    write("\"stationaryBlockingMinVideoAge\": 3.0", "\"stationaryBlockingMinVideoAge\": 5");
    const Outcome outcome = replay();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(configurationOf(outcome.output)["veskarModule"]["stationaryBlockingMinVideoAge"],
              3.0);
    EXPECT_EQ(outcome.errors,
              "veskar: warning: " + config +
                  ": veskarModule.stationaryBlockingMinVideoAge (line 25): 5 is an integer where a "
                  "real number is needed: write 5.0; 3.0 is used\n");
}

TEST_F(ConfigurationProgram, RealsAreStatedWithAFraction) {
    write("\"gatingDistance\": 6.0", "\"gatingDistance\": 7.0");
    EXPECT_THAT(replay().output, HasSubstr("\"gatingDistance\":7.0,"));
}

TEST_F(ConfigurationProgram, AReplayNamesTheRightKeyOfAMisspeltOne) {
    write("\"removeClassMismatches\"", "\"removeClassMissmatches\"");
    const Outcome outcome = replay();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "veskar: warning: " + config +
                                  ": veskarModule.removeClassMissmatches (line 31): the key is not "
                                  "known; is removeClassMismatches meant?\n");
    EXPECT_THAT(outcome.output, Not(HasSubstr("removeClassMissmatches")));
}

TEST_F(ConfigurationProgram, AnEvaluationWarnsToo) {
    write("\"removeClassMismatches\"", "\"removeClassMissmatches\"");
    const Outcome outcome = veskar({"evaluate", dataFile("tiny.jsonl"), "--config", config});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.errors, HasSubstr("is removeClassMismatches meant?\n"));
}

TEST_F(ConfigurationProgram, ARefusalTellsKeyLineAndReason) {
    write("\"gatingDistance\": 6.0", "\"gatingDistance\": 4");
    const Outcome outcome = replay();
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.errors,
                EndsWith("veskar: " + config +
                         ": the fusion refuses this configuration: veskarModule.gatingDistance "
                         "(line 19): " +
                         integerForReal + "\n"));
    // The library's log messages are unchanged.
    EXPECT_THAT(outcome.errors,
                HasSubstr("Failed to parse fusion config: JsonNode is not a real number."));
}

TEST_F(ConfigurationProgram, ARefusalCountsTheOtherReasons) {
    spill(config, "{}");
    EXPECT_THAT(replay().errors,
                HasSubstr("veskarInputs (line 1): missing; an object is needed; veskar "
                          "check names 2 more\n"));
}

TEST_F(ConfigurationProgram, ACommentIsRefusedWithItsLine) {
    write("\"useJVA\": true,", "\"useJVA\": true,  // optimal");
    const Outcome outcome = replay();
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.errors, StartsWith("veskar: " + config + ":30: JSON has no comments"));
}

TEST_F(ConfigurationProgram, CheckAndReplaySayTheSame) {
    for (const auto& [from, to] : std::vector<std::pair<std::string, std::string>>{
             {"\"gatingDistance\": 6.0", "\"gatingDistance\": 4"},
             {"\"useJVA\": true,", ""},
             {"\"removeClassMismatches\": false", "\"removeClassMismatches\": 0"},
             {"\"removeClassMismatches\"", "\"removeClassMissmatches\""},
             {"\"useJVA\": true,", "// \"useJVA\": true,"},
             {"\"useJVA\": true,", "\"useJVA\": true"}}) {
        SCOPED_TRACE(to);
        write(from, to);
        const std::string errors = replay().errors;
        const auto findings =
            nlohmann::json::parse(veskar({"check", config, "--format", "json"}).output)["findings"];
        ASSERT_EQ(findings.size(), 1U);
        EXPECT_THAT(errors, HasSubstr(findings[0]["message"].get<std::string>() + "\n"));
        const std::string line = std::to_string(findings[0]["line"].get<int>());
        EXPECT_THAT(errors, testing::AnyOf(HasSubstr(findings[0]["key"].get<std::string>() +
                                                     " (line " + line + "): "),
                                           HasSubstr(config + ":" + line + ": ")));
    }
}

TEST_F(ConfigurationProgram, CheckNamesTheValueOnce) {
    write("\"gatingDistance\": 6.0", "\"gatingDistance\": 4");
    const Outcome outcome = veskar({"check", config});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output,
                StartsWith(config + ":19: fault: veskarModule.gatingDistance: " + integerForReal));
    const auto json = nlohmann::json::parse(veskar({"check", config, "--format", "json"}).output);
    EXPECT_EQ(json["findings"][0]["value"], "4");
}

TEST_F(ConfigurationProgram, CheckStrictLetsWarningsCount) {
    EXPECT_EQ(veskar({"check", shippedPath, "--strict"}).status, 0);
    write("\"removeClassMismatches\"", "\"removeClassMissmatches\"");
    EXPECT_EQ(veskar({"check", config}).status, 0);
    const Outcome strict = veskar({"check", config, "--strict"});
    EXPECT_EQ(strict.status, 1);
    EXPECT_THAT(strict.output, EndsWith("0 faults, 1 warning\n"));
    EXPECT_THAT(veskar({"check", "--help"}).output, HasSubstr("--strict"));
}

TEST_F(ConfigurationProgram, AFusedFileWithARefusedConfigurationSaysWhy) {
    const std::string fused = directory / "fused.jsonl";
    std::string text = veskar({"replay", dataFile("tiny.jsonl")}).output;
    text.replace(text.find("\"useJVA\":true"), 13, "\"useJVA\":1");
    spill(fused, text);
    EXPECT_THAT(
        veskar({"evaluate", dataFile("tiny.jsonl"), fused}).errors,
        HasSubstr(fused + ":1: configuration: the fusion refuses it: veskarModule.useJVA: 1 is an "
                          "integer where true or false is needed: write true\n"));
}

TEST_F(ConfigurationProgram, ConstantsOfTheHostAreSetInTheConfigurationOrByHand) {
    const std::string recording = dataFile("tiny.jsonl");
    const std::string before = veskar({"replay", recording}).output;
    // Setting the default changes no byte of the output.
    EXPECT_EQ(veskar({"replay", recording, "--set", "radarGain=3"}).output, before);

    const Outcome byHand = veskar(
        {"replay", "--set", "radarGain=1.5", recording, "--set", "radarFloorStd=[1,1,1,1,1,1]"});
    EXPECT_EQ(byHand.status, 0) << byHand.errors;
    EXPECT_NE(byHand.output, before);
    EXPECT_EQ(veskar({"replay", recording, "--set", "veskarHost.radarGain=1.5", "--set",
                      "veskarHost.radarFloorStd=[1,1,1,1,1,1]"})
                  .output,
              byHand.output);
    auto expected = nlohmann::json::parse(slurp(shippedPath)).at("veskarHost");
    expected["radarGain"] = 1.5;
    expected["radarFloorStd"] = std::vector<double>(6, 1.0);
    EXPECT_EQ(headerOf(byHand.output).at("veskarHost").dump(), expected.dump());
    EXPECT_THAT(byHand.output, HasSubstr(R"("host":")"));

    write(shippedFloor, R"("radarGain": 1.5, "radarFloorStd": [1, 1, 1, 1, 1, 1])");
    EXPECT_EQ(replay().output, byHand.output);
    EXPECT_THAT(replay().errors, IsEmpty());
    EXPECT_EQ(veskar({"check", config}).status, 0);
    // The command line overrides the file.
    EXPECT_EQ(veskar({"replay", recording, "--config", config, "--set", "radarGain=3", "--set",
                      "radarFloorStd=[0.02,0.06,0.05,0.1,0.6,0.3]"})
                  .output,
              before);
}

TEST_F(ConfigurationProgram, KeysOfTheConfigurationAreSetByHand) {
    const std::string recording = dataFile("tiny.jsonl");
    write("\"gatingDistance\": 6.0", "\"gatingDistance\": 2.0");
    const Outcome byHand =
        veskar({"replay", recording, "--set", "veskarModule.gatingDistance=2.0"});
    EXPECT_EQ(byHand.output, replay().output);
    EXPECT_EQ(configurationOf(byHand.output)["veskarModule"]["gatingDistance"], 2.0);
}

TEST_F(ConfigurationProgram, WhatCannotBeSetIsRefused) {
    const std::vector<std::pair<std::string, std::string>> faults{
        {"radarGian=2", "--set radarGian: the key is not known; is radarGain meant?"},
        {"radarGain=0", "--set radarGain: 0 is not above 0 and at most 1000000"},
        {"radarGain=much", "--set radarGain: \"much\" is not a number"},
        {"radarGain", "--set radarGain: expected KEY=VALUE"},
        {"veskarModule.gatingDistanc=2.0",
         "--set veskarModule.gatingDistanc: the key is not known"},
        {"veskarModule.gatingDistance=",
         "--set veskarModule.gatingDistance: \"\" is no JSON value"},
        {"veskarModule.gatingDistance=4", integerForReal}};
    for (const auto& [change, fault] : faults) {
        const Outcome outcome = veskar({"replay", dataFile("tiny.jsonl"), "--set", change});
        EXPECT_EQ(outcome.status, 2) << change;
        EXPECT_EQ(outcome.output, "") << change;
        EXPECT_THAT(outcome.errors, HasSubstr(fault)) << change;
    }
    write(shippedFloor, R"("radarGian": 2.0, "videoSilence": -1, "radarFloorStd": [1])");
    const std::string text = slurp(config);
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(text.find("radarGian"));
    const std::string line = std::to_string(1 + std::count(text.begin(), end, '\n'));
    EXPECT_THAT(replay().errors,
                HasSubstr(config + ": veskarHost.radarGian: the key is not known"));
    const Outcome checked = veskar({"check", config});
    EXPECT_EQ(checked.status, 1);
    for (const char* fault : {"radarGian is 2.0: the key is not known; is radarGain meant?",
                              "videoSilence is -1: expected a number between 0.01 and 3600: s",
                              "radarFloorStd is an array of 1: expected 6 numbers: "}) {
        EXPECT_THAT(checked.output,
                    HasSubstr(config + ":" + line + ": fault: veskarHost." + fault));
    }
}
