// SPDX-License-Identifier: Apache-2.0
// What the program answers to wrong usage and to questions about its usage.
#include "Process.h"

#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::IsEmpty;
using testing::StartsWith;
using VeskarTest::dataFile;
using VeskarTest::Outcome;
using VeskarTest::veskar;

namespace {

using Words = std::vector<std::string>;

TEST(Usage, WrongWordsAreNamedWithTheNearestRightOne) {
    const std::vector<std::pair<Words, std::string>> wrong{
        {{"replya", "x"},
         "veskar: no command replya; is replay meant?\n"
         "Run \"veskar --help\" for more information.\n"},
        {{"import", "kity"},
         "veskar import: no command kity; is kitti meant?\n"
         "Run \"veskar import --help\" for more information.\n"},
        {{"fly"}, "veskar: no command fly\nRun \"veskar --help\" for more information.\n"},
        {{}, "veskar: which command?\nRun \"veskar --help\" for more information.\n"},
        {{"replay", "--outptu", "a", "b"},
         "veskar replay: no option --outptu; is --output meant?\n"
         "Run \"veskar replay --help\" for more information.\n"},
        {{"replay", "x", "--colour=always"},
         "veskar replay: no option --colour; is --color meant?\n"
         "Run \"veskar replay --help\" for more information.\n"},
        {{"simulate", "a", "b"},
         "veskar simulate: b is one argument too many\n"
         "Run \"veskar simulate --help\" for more information.\n"},
        {{"replay", "\x1b[2J"}, ""},
        {{"\x1b[2J"}, "veskar: no command ?[2J\nRun \"veskar --help\" for more information.\n"}};
    for (const auto& [arguments, complaint] : wrong) {
        const Outcome outcome = veskar(arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.output, IsEmpty());
        if (!complaint.empty()) {
            EXPECT_EQ(outcome.errors, complaint);
        }
    }
}

TEST(Usage, HelpShowsThatOfACommand) {
    for (const Words& command : {Words{}, Words{"replay"}, Words{"import", "kitti"}}) {
        Words asked{"help"};
        asked.insert(asked.end(), command.begin(), command.end());
        Words option = command;
        option.emplace_back("--help");
        const Outcome outcome = veskar(asked);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.output, veskar(option).output);
        EXPECT_THAT(outcome.errors, IsEmpty());
    }
    const Outcome unknown = veskar({"help", "import", "kity"});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_EQ(unknown.errors, "veskar: no command kity; is kitti meant?\n");
}

TEST(Usage, AShortOptionTellsTheVersion) {
    EXPECT_EQ(veskar({"-V"}).output, veskar({"--version"}).output);
    EXPECT_THAT(veskar({"-V"}).output, StartsWith("veskar "));
}

TEST(Usage, BandsMustAscend) {
    const std::string recording = dataFile("tiny.jsonl");
    for (const auto& [bands, complaint] : std::vector<std::pair<Words, std::string>>{
             {{"40", "20"}, "veskar: bands: 20 comes after 40: they must ascend\n"},
             {{"0", "20", "20"}, "veskar: bands: 20 comes after 20: they must ascend\n"}}) {
        Words arguments{"evaluate", recording, "--bands"};
        arguments.insert(arguments.end(), bands.begin(), bands.end());
        const Outcome outcome = veskar(arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.errors, complaint);
    }
    EXPECT_EQ(veskar({"evaluate", recording, "--bands", "0", "20"}).status, 0);
}

}  // namespace
