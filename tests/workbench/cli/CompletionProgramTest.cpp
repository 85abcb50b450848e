// SPDX-License-Identifier: Apache-2.0
// Completion in a real bash.
#include "Process.h"
#include "Programs.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::AllOf;
using testing::HasSubstr;
using VeskarTest::Outcome;
using VeskarTest::veskar;

namespace {

/// @param words a command line; the last word is being typed
/// @return what bash offers, in one line
std::string offered(const std::vector<std::string>& words) {
    std::vector<std::string> arguments{"bash", "-c",
                                       "eval \"$(\"$0\" completion bash)\"; "
                                       "COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); "
                                       "_veskar; echo \"${COMPREPLY[*]}\"",
                                       VESKAR_PROGRAM};
    arguments.insert(arguments.end(), words.begin(), words.end());
    const Outcome outcome = VeskarTest::run(arguments);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "");
    return outcome.output;
}

TEST(Completion, OffersCommandsOptionsAndTheirWordsInBash) {
    EXPECT_THAT(offered({"veskar", ""}), AllOf(HasSubstr("simulate"), HasSubstr("import")));
    EXPECT_EQ(offered({"veskar", "rep"}), "replay report\n");
    EXPECT_EQ(offered({"veskar", "import", ""}),
              "autoferry kitti csv mcap onvif mot kitti-results\n");
    EXPECT_EQ(offered({"veskar", "replay", "road.jsonl", "--fo"}), "--format\n");
    EXPECT_EQ(offered({"veskar", "replay", "--format", ""}), "jsonl csv\n");
    EXPECT_EQ(offered({"veskar", "export", "--to", ""}),
              "csv geojson mcap mot kitti onvif-xml onvif-json\n");
    EXPECT_EQ(offered({"veskar", "import", "kitti", "--camera"}), "--camera-height\n");
    EXPECT_THAT(offered({"veskar", "replay", "--"}), HasSubstr("--explain"));
}

// Nothing is offered, so that bash completes file names.
TEST(Completion, LeavesFileNamesToBash) {
    EXPECT_EQ(offered({"veskar", "replay", ""}), "\n");
    EXPECT_EQ(offered({"veskar", "replay", "-o", "re"}), "\n");
    EXPECT_EQ(offered({"veskar", "replay", "--output", "--fo"}), "\n");
}

TEST(Completion, IsMadeForOtherShells) {
    EXPECT_THAT(veskar({"completion", "fish"}).output,
                HasSubstr("complete -c veskar -n '__fish_seen_subcommand_from replay' -l format -r "
                          "-f -a 'jsonl csv' -d "));
    EXPECT_THAT(veskar({"completion", "zsh"}).output,
                AllOf(HasSubstr("#compdef veskar\n"),
                      HasSubstr("veskar/replay:--format) isValue=1 values='jsonl csv' ;;\n")));
    EXPECT_EQ(veskar({"completion", "csh"}).status, 2);
}

}  // namespace
