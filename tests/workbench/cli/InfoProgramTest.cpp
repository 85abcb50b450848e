// SPDX-License-Identifier: Apache-2.0
// What `veskar info` says of files.
#include "Process.h"
#include "support/TemporaryDirectory.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using VeskarTest::dataFile;
using VeskarTest::Outcome;
using VeskarTest::slurp;
using VeskarTest::spill;
using VeskarTest::veskar;

namespace {

class InfoProgram : public testing::Test {
protected:
    nlohmann::json ask(const std::string& path) {
        const Outcome outcome = veskar({"info", path, "--format", "json"});
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return nlohmann::json::parse(outcome.output);
    }

    VeskarTest::TemporaryDirectory directory;
    std::string recording = directory / "two.jsonl";
};

/// A header, then two video frames, a radar frame and a moment of truth.
const std::string lines =
    R"({"source":"truth","time":0.5,"objects":[{"id":7,"class":"human","position":[9,1],"velocity":[0,0]}]}
{"source":"video","time":1,"received":1.1,"tracks":[{"id":1,"box":{"left":0,"bottom":0,"right":0.1,"top":0.1},"class":"human","classProbability":0.9}]}
{"source":"radar","time":1.2,"received":1.25,"tracks":[{"id":1,"range":20,"azimuth":1,"radialSpeed":0},{"id":2,"range":30,"azimuth":1,"radialSpeed":0}]}
{"source":"video","time":1.2,"received":1.4,"tracks":[]}
)";

TEST_F(InfoProgram, CountsWhatIsInARecording) {
    const std::string tiny = slurp(dataFile("tiny.jsonl"));
    spill(recording, tiny.substr(0, tiny.find('\n') + 1) + lines);
    const nlohmann::json info = ask(recording);
    EXPECT_EQ(info["kind"], "recording");
    EXPECT_EQ(info["file"], recording);
    EXPECT_EQ(info["span"]["firstSeconds"], 0.5);
    EXPECT_EQ(info["span"]["lastSeconds"], 1.2);
    EXPECT_EQ(info["video"]["frames"], 2);
    EXPECT_EQ(info["video"]["emptyFrames"], 1);
    EXPECT_EQ(info["video"]["reports"], 1);
    EXPECT_DOUBLE_EQ(info["video"]["framesPerSecond"], 5.0);
    EXPECT_NEAR(info["video"]["meanDelaySeconds"].get<double>(), 0.15, 1e-12);
    EXPECT_EQ(info["video"]["reportsByClass"], (nlohmann::json{{"human", 1}}));
    EXPECT_EQ(info["radar"]["trackIds"], 2);
    EXPECT_EQ(info["radar"]["framesPerSecond"], 0.0);  // one frame has no rate
    EXPECT_EQ(info["truth"]["moments"], 1);
    EXPECT_EQ(info["truth"]["objectsByClass"], (nlohmann::json{{"human", 1}}));
    const std::string text = veskar({"info", recording}).output;
    EXPECT_THAT(text, StartsWith(recording + ": recording \"tiny\"\n"));
    EXPECT_THAT(text, HasSubstr("  duration   0.70 s, from 0.50 to 1.20\n"));
    EXPECT_THAT(text, HasSubstr("  radar      1 frame; 2 track ids\n"));
    EXPECT_THAT(text, HasSubstr("1 moment, 1 object\n             1 human\n"));
}

TEST_F(InfoProgram, StatesTheDateOfTheBeginning) {
    const std::string tiny = slurp(dataFile("tiny.jsonl"));
    const auto begins = [&](double epoch) {
        nlohmann::json header = nlohmann::json::parse(tiny.substr(0, tiny.find('\n')));
        header["epoch"] = epoch;
        spill(recording, header.dump() + "\n" + lines);
        return veskar({"info", recording}).output;
    };
    EXPECT_THAT(begins(1777636800.0), HasSubstr("  begins     2026-05-01 12:00:00 UTC\n"));
    // No more seconds than 32 bits hold would end in 2038.
    EXPECT_THAT(begins(4102444799.5), HasSubstr("  begins     2100-01-01 00:00:00 UTC\n"));
    EXPECT_THAT(begins(1e300), HasSubstr("  begins     before 1970 or after 9999\n"));
}

TEST_F(InfoProgram, TellsTheDigestThatRunsState) {
    const nlohmann::json recorded = ask(dataFile("tiny.jsonl"));
    const nlohmann::json fused = ask(dataFile("tiny.fused.jsonl"));
    EXPECT_EQ(fused["kind"], "fused");
    EXPECT_EQ(fused["recording"], "tiny");
    EXPECT_EQ(fused["digests"]["recording"], recorded["digest"]);
    EXPECT_GE(fused["systemTracks"], fused["confirmedSystemTracks"]);
    EXPECT_GT(fused["confirmedSystemTracks"], 0);
}

TEST_F(InfoProgram, TellsOfAPart) {
    const std::string whole = dataFile("tiny.jsonl");
    const nlohmann::json part = nlohmann::json::parse(
        veskar({"info", whole, "--start", "1", "--end", "3", "--format", "json"}).output);
    const std::string fused = directory / "fused.jsonl";
    ASSERT_EQ(veskar({"replay", whole, "--start", "1", "--end", "3", "-o", fused}).status, 0);
    EXPECT_EQ(part["digest"], ask(fused)["digests"]["recording"]);
    EXPECT_EQ(veskar({"info", fused, "--start", "1"}).errors,
              "veskar: " + fused + ": --start and --end are for recordings\n");
}

TEST_F(InfoProgram, SaysThatAnUnfinishedRunHasNoDigests) {
    const std::string whole = slurp(dataFile("tiny.fused.jsonl"));
    const std::string unfinished = directory / "unfinished.jsonl";
    spill(unfinished, whole.substr(0, whole.rfind('\n', whole.size() - 2) + 1));
    EXPECT_FALSE(ask(unfinished).contains("digests"));
    EXPECT_THAT(veskar({"info", unfinished}).output,
                HasSubstr("  digests    none: the file is unfinished\n"));
}

TEST_F(InfoProgram, AsksSeveralFilesAtOnce) {
    const Outcome outcome =
        veskar({"info", dataFile("tiny.jsonl"), dataFile("tiny.fused.jsonl"), "--format", "json"});
    const nlohmann::json all = nlohmann::json::parse(outcome.output);
    ASSERT_EQ(all.size(), 2);
    EXPECT_EQ(all[0]["kind"], "recording");
    EXPECT_EQ(all[1]["kind"], "fused");
}

TEST_F(InfoProgram, RefusesWhatItCannotRead) {
    const std::string config = directory / "config.json";
    spill(config, "{}\n");
    const Outcome outcome = veskar({"info", config});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.output, IsEmpty());
    EXPECT_THAT(outcome.errors, StartsWith("veskar: " + config + ":1: "));
    EXPECT_EQ(veskar({"info", "-"}).errors,
              "veskar: <stdin>: is read twice by info: name a file\n");
}

}  // namespace
