// SPDX-License-Identifier: Apache-2.0
// How `veskar check` counts, and what it does with several documents.
#include "Process.h"
#include "SourceDirectory.h"
#include "support/TemporaryDirectory.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using testing::EndsWith;
using testing::HasSubstr;
using VeskarTest::dataFile;
using VeskarTest::Outcome;
using VeskarTest::slurp;
using VeskarTest::spill;
using VeskarTest::veskar;

namespace {

class CheckProgram : public testing::Test {
protected:
    /// Writes the header of a recording and radar frames with wrong ranges and lines that are none.
    void write(int wrongRanges, int garbage) {
        const std::string tiny = slurp(dataFile("tiny.jsonl"));
        std::string text = tiny.substr(0, tiny.find('\n') + 1);
        for (int i = 0; i < wrongRanges; ++i) {
            const std::string track = R"({"id":1,"range":20,"azimuth":0,"radialSpeed":0},)";
            const std::string wrong = R"({"id":2,"range":-1,"azimuth":0,"radialSpeed":0})";
            text += R"({"source":"radar","time":)" + std::to_string(i) + R"(,"tracks":[)" +
                    (i % 2 == 0 ? track + wrong : wrong) + "]}\n";
        }
        for (int i = 0; i < garbage; ++i) {
            text += "{]\n";
        }
        spill(recording, text);
    }

    VeskarTest::TemporaryDirectory directory;
    std::string recording = directory / "faulty.jsonl";
    const std::string good = VESKAR_SOURCE_DIR "/config/fusion.json";
};

TEST_F(CheckProgram, CountsFaultsBeyondTheListedOnesByTheirKind) {
    write(5000, 7);
    const Outcome outcome = veskar({"check", recording});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output,
                HasSubstr("fault: 4907 more faulty lines: 4900 in tracks[].range, 7 elsewhere\n"));
    EXPECT_THAT(outcome.output, HasSubstr(": 5007 faults, "));
    const auto json =
        nlohmann::json::parse(veskar({"check", recording, "--format", "json"}).output);
    EXPECT_EQ(json["faults"], 5007);
}

TEST_F(CheckProgram, SaysOneFaultOfOne) {
    write(1, 0);
    EXPECT_THAT(veskar({"check", recording}).output, HasSubstr(": 1 fault, "));
    write(101, 0);
    EXPECT_THAT(veskar({"check", recording}).output,
                HasSubstr("fault: 1 more faulty line: 1 in tracks[].range\n"));
}

TEST_F(CheckProgram, ChecksSeveralDocuments) {
    write(1, 0);
    const Outcome outcome = veskar({"check", good, recording, good});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output, HasSubstr(good + ": 0 faults, 0 warnings\n"));
    EXPECT_THAT(outcome.output, HasSubstr(recording + ": 1 fault, "));
    EXPECT_EQ(veskar({"check", good, good}).status, 0);
    const auto json =
        nlohmann::json::parse(veskar({"check", good, recording, "--format", "json"}).output);
    ASSERT_EQ(json.size(), 2);
    EXPECT_EQ(json[0]["document"], good);
    EXPECT_EQ(json[1]["faults"], 1);
}

TEST_F(CheckProgram, ChecksTheOthersWhenOneCannotBeRead) {
    const std::string missing = directory / "missing.json";
    const Outcome outcome = veskar({"check", missing, good});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.errors, "veskar: " + missing + ": No such file or directory\n");
    EXPECT_THAT(outcome.output, EndsWith(good + ": 0 faults, 0 warnings\n"));
}

}  // namespace
