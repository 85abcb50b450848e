// SPDX-License-Identifier: Apache-2.0
// Faulty inputs and outputs of evaluate, check and replay --explain.
#include "Process.h"
#include "Programs.h"

#include <algorithm>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using VeskarTest::dataFile;
using VeskarTest::Outcome;
using VeskarTest::slurp;
using VeskarTest::spill;
using VeskarTest::veskar;

namespace {

/// A line that must be rejected, and a part of the expected message.
struct BadLine {
    std::string text;
    std::string message;
};

/// They follow a valid line of radar at 1 s.
const std::vector<BadLine> badLines{
    {R"({"source":"radar","time":2,"tracks":[{"id":1,"range":"far","azimuth":0,"radialSpeed":0}]})",
     "tracks[0].range: expected a number, found a string"},
    {R"({"source":"sonar","time":2,"tracks":[]})", "\"sonar\" is not video, radar or truth"},
    {R"({"source":"radar","time":NaN,"tracks":[]})", "invalid literal"},
    {R"({"source":"radar","time":1e999,"tracks":[]})", "number overflow"},
    {R"({"source":"radar","time":2,"tracks":[)"
     R"({"id":1,"range":9,"azimuth":0,"radialSpeed":0},)"
     R"({"id":1,"range":8,"azimuth":0,"radialSpeed":0}]})",
     "tracks[1].id: 1 occurs twice in the frame"},
    {R"({"source":"radar","time":1,"tracks":[]})", "time: 1 is not later than 1"},
    {R"({"source":"truth","time":1,"objects":[{"id":1}]})", "objects[0].position"},
    {"\x01\xff\x80 binary", "invalid"},
};

class JudgementInput : public testing::Test {
protected:
    /// The header of a recording with truth, and a valid line.
    static std::string beginning() {
        const std::string golden = slurp(dataFile("tiny.jsonl"));
        return golden.substr(0, golden.find('\n') + 1) +
               "{\"source\":\"radar\",\"time\":1,\"tracks\":[]}\n";
    }

    /// Runs the program with a standard output that is closed on the other side.
    Outcome intoClosedPipe(const std::string& command, const std::string& input) {
        return VeskarTest::run({"bash", "-c",
                                "exec 3> >(:); wait $!; \"$0\" \"$1\" \"$2\" 2>\"$3\" >&3; echo $?",
                                VESKAR_PROGRAM, command, input, directory / "errors"});
    }

    VeskarTest::TemporaryDirectory directory;
};

TEST_F(JudgementInput, EvaluateNamesFileLineAndReasonAndLeavesNothing) {
    const std::string bad = directory / "bad.jsonl";
    for (const BadLine& line : badLines) {
        spill(bad, beginning() + line.text + "\n");
        const Outcome outcome = veskar({"evaluate", bad, "-o", directory / "report"});
        EXPECT_EQ(outcome.status, 2) << line.text;
        EXPECT_THAT(outcome.errors, StartsWith("veskar: " + bad + ":3: ")) << line.text;
        EXPECT_THAT(outcome.errors, HasSubstr(line.message));
        EXPECT_THAT(directory.names(), ElementsAre("bad.jsonl"));
    }
}

TEST_F(JudgementInput, EvaluateTellsACutLineAndAnotherVersion) {
    const Outcome cut = veskar({"evaluate", "-"}, beginning() + R"({"source":"rad)");
    EXPECT_EQ(cut.status, 2);
    EXPECT_THAT(cut.errors, StartsWith("veskar: <stdin>:3: the line is cut off: "));
    std::string other = beginning();
    other.replace(other.find("\"version\":1"), 11, "\"version\":9");
    const Outcome version = veskar({"evaluate", "-"}, other);
    EXPECT_EQ(version.status, 2);
    EXPECT_THAT(version.errors, StartsWith("veskar: <stdin>:1: version: "));
    EXPECT_THAT(version.output, IsEmpty());
}

TEST_F(JudgementInput, EvaluateNeedsMomentsOfTruth) {
    const Outcome outcome = veskar({"evaluate", "-"}, beginning());
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.errors, "veskar: <stdin>: the recording has no truth line\n");
}

TEST_F(JudgementInput, CheckListsEveryBadLineOfARecording) {
    const std::string bad = directory / "bad.jsonl";
    std::string text = beginning();
    for (const BadLine& line : badLines) {
        text += line.text + "\n";
    }
    spill(bad, text + R"({"source":"rad)");
    const Outcome outcome = veskar({"check", bad});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.errors, IsEmpty());
    std::size_t number = 2;
    for (const BadLine& line : badLines) {
        const std::string place = bad + ":" + std::to_string(++number) + ": fault: ";
        const std::size_t begin = outcome.output.find(place);
        ASSERT_NE(begin, std::string::npos) << outcome.output;
        const std::size_t end = outcome.output.find('\n', begin);
        EXPECT_THAT(outcome.output.substr(begin, end - begin), HasSubstr(line.message));
    }
    EXPECT_THAT(outcome.output,
                HasSubstr(":" + std::to_string(number + 1) + ": fault: the line is cut off: "));
    EXPECT_THAT(outcome.output, HasSubstr(std::to_string(badLines.size() + 1) + " faults"));
    EXPECT_TRUE(std::all_of(outcome.output.begin(), outcome.output.end(),
                            [](char c) { return c == '\n' || (c >= ' ' && c <= '~'); }));
}

TEST_F(JudgementInput, CheckListsTenFaultsOfAScenario) {
    const std::string bad = directory / "scene.json";
    spill(bad,
          "{\n"
          "\"name\": 7,\n"
          "\"duration\": -3,\n"
          "\"camera\": \"front\",\n"
          "\"radar\": {\"position\": [0, 0, 4], \"rotation\": {\"pitch\": 0, \"yaw\": 0, "
          "\"roll\": 0},\n"
          "  \"rangeStd\": 0,\n"
          "  \"azimuthStd\": 100,\n"
          "  \"velocityStd\": null},\n"
          "\"videoSensor\": {\"rate\": \"ten\",\n"
          "  \"latency\": -1},\n"
          "\"objects\": [\n"
          "  {\"class\": \"human\", \"path\": [[1, 2], [3, 4]], \"speed\": 0},\n"
          "  {\"class\": \"human\", \"path\": [[1, 2]], \"speed\": 1}\n"
          "]}\n");
    const Outcome outcome = veskar({"check", bad, "--as", "scenario"});
    EXPECT_EQ(outcome.status, 1);
    for (const char* expected :
         {":2: fault: name is 7: expected a string",
          ":3: fault: duration is -3: expected a number above 0",
          ":4: fault: camera is \"front\": expected an object",
          ":6: fault: radar.rangeStd is 0: expected a number above 0",
          ":7: fault: radar.azimuthStd is 100: expected a number above 0 and at most 90",
          ":8: fault: radar.velocityStd is null: expected a number above 0",
          ":9: fault: videoSensor.rate is \"ten\": expected a number between 0.01 and 1000",
          ":10: fault: videoSensor.latency is -1: expected a number between 0 and 10",
          ":12: fault: objects[0].speed is 0: expected a number above 0 and at most 200",
          ":13: fault: objects[1].path is an array of 1: expected at least two points",
          "scene.json: 10 faults, "}) {
        EXPECT_THAT(outcome.output, HasSubstr(expected));
    }
}

TEST_F(JudgementInput, NothingInAFileCommandsTheTerminal) {
    const std::string escape = R"(\u001b[2J)";
    std::string named = slurp(dataFile("tiny.jsonl"));
    named.replace(named.find("\"tiny\""), 6, "\"" + escape + "\"");
    const Outcome evaluated = veskar({"evaluate", "-"}, named);
    EXPECT_EQ(evaluated.status, 0);
    EXPECT_THAT(evaluated.output, StartsWith("?[2J, "));
    const Outcome refused =
        veskar({"evaluate", "-"}, beginning() + "{\"source\":\"" + escape + "\",\"time\":2}\n");
    EXPECT_THAT(refused.errors, HasSubstr("\"?[2J\" is not video, radar or truth"));
    const Outcome checked =
        veskar({"check", "-", "--as", "camera"}, "{\"" + escape + "\": \"" + escape + "\"}");
    EXPECT_THAT(checked.output, HasSubstr("?[2J is \"?[2J\""));
    for (const Outcome& outcome : {evaluated, refused, checked}) {
        EXPECT_EQ((outcome.output + outcome.errors).find('\x1b'), std::string::npos);
    }
}

TEST_F(JudgementInput, AClosedPipeIsNoErrorAndNoSignal) {
    for (const char* command : {"evaluate", "check"}) {
        EXPECT_EQ(intoClosedPipe(command, dataFile("tiny.jsonl")).output, "0\n") << command;
        EXPECT_EQ(slurp(directory / "errors"), "");
    }
}

TEST_F(JudgementInput, AFullDiskIsStatus2) {
    const std::string path = dataFile("tiny.jsonl");
    const std::string expected = "veskar: /dev/full: cannot write: No space left on device\n";
    EXPECT_EQ(veskar({"evaluate", path, "-o", "/dev/full"}).errors, expected);
    EXPECT_EQ(veskar({"check", path, "-o", "/dev/full"}).errors, expected);
    const Outcome explained =
        veskar({"replay", path, "-o", directory / "fused.jsonl", "--explain", "/dev/full"});
    EXPECT_EQ(explained.status, 2);
    EXPECT_EQ(explained.errors, expected);
    EXPECT_THAT(directory.names(), IsEmpty()) << "no tracks without their explanations";
}

TEST_F(JudgementInput, AnEarlierReportSurvivesAFault) {
    spill(directory / "report", "precious");
    EXPECT_EQ(veskar({"evaluate", "-", "-o", directory / "report"}, beginning() + "{").status, 2);
    EXPECT_EQ(slurp(directory / "report"), "precious");
}

TEST_F(JudgementInput, ExplanationsAppearCompleteOrNotAtAll) {
    const Outcome outcome =
        veskar({"replay", "-", "-o", directory / "fused", "--explain", directory / "why"},
               beginning() + "{");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(directory.names(), IsEmpty());
}

TEST_F(JudgementInput, TracksAndExplanationsDoNotShareAStream) {
    const Outcome outcome = veskar({"replay", dataFile("tiny.jsonl"), "--explain", "-"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.errors,
              "veskar: tracks and explanations cannot both go to standard output\n");
    EXPECT_THAT(outcome.output, IsEmpty());
    EXPECT_THAT(
        veskar({"replay", dataFile("tiny.jsonl"), "--explain", "-", "-o", directory / "fused"})
            .output,
        StartsWith("{\"source\":"));
}

TEST_F(JudgementInput, ASummaryDoesNotMixWithTheExplanations) {
    const std::vector<std::string> command = {
        "replay", dataFile("tiny.jsonl"), "-o", directory / "fused", "--explain", "-"};
    std::vector<std::string> summarised = command;
    summarised.emplace_back("--summary");
    const Outcome outcome = veskar(summarised);
    EXPECT_EQ(outcome.output, veskar(command).output);
    EXPECT_THAT(outcome.errors, HasSubstr("system tracks"));
}

TEST_F(JudgementInput, StandardInputIsOneInputOnly) {
    const std::string path = dataFile("tiny.jsonl");
    const std::string out = directory / "out";
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{"report", "-", "-", "-o", out}, "recording and fused tracks"},
        {{"report", "-", path, "-", "-o", out}, "recording and other fused tracks"},
        {{"report", path, "-", "--explain", "-", "-o", out}, "fused tracks and explanations"},
        {{"evaluate", "-", "-", "-o", out}, "recording and fused tracks"},
        {{"replay", "-", "--config", "-", "-o", out}, "recording and configuration"},
        {{"evaluate", "-", "--camera", "-", "-o", out}, "recording and camera"},
        {{"import", "kitti", "-", "-", "-o", out}, "labels and calibration"}};
    for (const auto& [command, roles] : cases) {
        const Outcome outcome = veskar(command, slurp(path));
        EXPECT_EQ(outcome.status, 2) << roles;
        EXPECT_EQ(outcome.errors,
                  std::string("veskar: ") + roles + " cannot both come from standard input\n");
    }
    EXPECT_THAT(directory.names(), IsEmpty());
}

}  // namespace
