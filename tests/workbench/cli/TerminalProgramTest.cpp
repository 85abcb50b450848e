// SPDX-License-Identifier: Apache-2.0
// What the program tells beside its answer, and in which colours.
#include "Process.h"
#include "Programs.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;
using VeskarTest::dataFile;
using VeskarTest::Outcome;
using VeskarTest::slurp;
using VeskarTest::spill;
using VeskarTest::veskar;

namespace {

class Terminal : public testing::Test {
protected:
    /// A recording with a word that the vocabulary does not have.
    Terminal() {
        std::string text = slurp(dataFile("tiny.jsonl"));
        const std::string human = "\"class\":\"human\"";
        for (std::size_t place = 0; (place = text.find(human, place)) != std::string::npos;) {
            text.replace(place, human.size(), "\"class\":\"person\"");
        }
        spill(recording, text);
    }

    Outcome replay(std::vector<std::string> options) const {
        options.insert(options.begin(), {"replay", recording, "-o", directory / "fused"});
        return veskar(options);
    }

    /// Runs the program with a terminal for all its standard streams.
    std::string onATerminal(const std::string& words, const std::string& environment = "") {
        return VeskarTest::run(
                   {"script", "-qec",
                    "TERM=xterm NO_COLOR= " + environment + " '" VESKAR_PROGRAM "' " + words,
                    "/dev/null"})
            .output;
    }

    VeskarTest::TemporaryDirectory directory;
    const std::string recording = directory / "words.jsonl";
};

TEST_F(Terminal, QuietTellsFaultsOnly) {
    EXPECT_THAT(replay({}).errors, StartsWith("veskar: warning: "));
    EXPECT_THAT(replay({"-q"}).errors, IsEmpty());
    EXPECT_EQ(replay({"--quiet"}).status, 0);
    EXPECT_EQ(veskar({"replay", "-q", directory / "none"}).errors,
              veskar({"replay", directory / "none"}).errors);
    // The library logs why it refuses a configuration; the program's own sentence remains.
    spill(directory / "config.json", "{}");
    const std::vector<std::string> refused{"replay", recording, "--config",
                                           directory / "config.json"};
    std::vector<std::string> quiet = refused;
    quiet.emplace_back("-q");
    const std::string all = veskar(refused).errors;
    const std::string little = veskar(quiet).errors;
    EXPECT_LT(little.size(), all.size());
    EXPECT_THAT(little, StartsWith("veskar: "));
    EXPECT_THAT(all, testing::EndsWith(little));
}

TEST_F(Terminal, VerboseTellsHowLongAStepTook) {
    EXPECT_THAT(
        replay({"-v"}).errors,
        MatchesRegex("veskar: warning: .*\nveskar: replaying took [0-9]+\\.[0-9][0-9] s\n"));
    EXPECT_THAT(replay({}).errors, Not(HasSubstr("took")));
    EXPECT_THAT(veskar({"replay", "-v", directory / "none"}).errors, Not(HasSubstr("took")))
        << "nothing was done";
    EXPECT_EQ(replay({"-v", "-q"}).status, 2);
}

TEST_F(Terminal, ColoursAreForTerminals) {
    const std::string warning = "veskar: \x1b[1;35mwarning:\x1b[0m ";
    EXPECT_THAT(replay({"--color", "always"}).errors, StartsWith(warning));
    EXPECT_THAT(replay({"--color", "auto"}).errors, StartsWith("veskar: warning: "));
    const std::string command = "replay '" + recording + "' -o '" + (directory / "fused") + "'";
    EXPECT_THAT(onATerminal(command), StartsWith(warning));
    EXPECT_THAT(onATerminal(command + " --color never"), StartsWith("veskar: warning: "));
    EXPECT_THAT(onATerminal(command, "NO_COLOR=1"), StartsWith("veskar: warning: "));
    EXPECT_THAT(onATerminal(command, "TERM=dumb"), StartsWith("veskar: warning: "));
    EXPECT_THAT(veskar({"replay", directory / "none", "--color", "always"}).errors,
                StartsWith("\x1b[1;31mveskar:\x1b[0m "));
    EXPECT_EQ(replay({"--color", "green"}).status, 2);
}

TEST_F(Terminal, CheckColoursItsWords) {
    spill(directory / "bad.json", "{\"veskarModule\": {}}");
    const std::string path = directory / "bad.json";
    EXPECT_THAT(veskar({"check", path, "--color", "always"}).output,
                HasSubstr("bad.json:1: \x1b[1;31mfault\x1b[0m: veskarInputs: missing"));
    EXPECT_THAT(veskar({"check", path}).output, HasSubstr("bad.json:1: fault: "));
    ASSERT_EQ(veskar({"check", path, "--color", "always", "-o", directory / "report"}).status, 1);
    EXPECT_THAT(slurp(directory / "report"), Not(HasSubstr("\x1b")));
}

TEST_F(Terminal, EveryCommandTakesTheOptions) {
    for (const char* command : {"simulate", "replay", "evaluate", "export", "info", "check",
                                "report", "calibrate", "completion"}) {
        EXPECT_THAT(veskar({command, "--help"}).output,
                    AllOf(HasSubstr("--quiet"), HasSubstr("--no-progress"), HasSubstr("--color")))
            << command;
    }
    EXPECT_THAT(veskar({"import", "kitti", "--help"}).output, HasSubstr("--quiet"));
    EXPECT_THAT(veskar({"tune", "--help"}).output, Not(HasSubstr("--color")));
}

}  // namespace
