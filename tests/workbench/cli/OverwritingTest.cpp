// SPDX-License-Identifier: Apache-2.0
// No command overwrites its inputs, or one output with another.
#include "Process.h"
#include "Programs.h"

#include <filesystem>
#include <ostream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using VeskarTest::dataFile;
using VeskarTest::Outcome;
using VeskarTest::slurp;
using VeskarTest::spill;
using VeskarTest::veskar;

namespace fs = std::filesystem;

namespace {

/// A command; words that begin with ">" name files that it reads.
struct Command {
    const char* name;
    std::vector<std::string> words;
};

/// The name in test reports, which must not depend on addresses.
std::ostream& operator<<(std::ostream& stream, const Command& command) {
    return stream << command.name;
}

/// @param outcome result of a command that would have overwritten a file
/// @param written the name of its output
/// @param other the name of the other file
void expectRefused(const Outcome& outcome, const std::string& written, const std::string& other) {
    EXPECT_EQ(outcome.status, 2) << written << " " << other;
    EXPECT_THAT(outcome.errors, StartsWith("veskar: " + written + ": the "));
    EXPECT_THAT(outcome.errors, HasSubstr(", " + other + ": name "));
    EXPECT_THAT(outcome.output, IsEmpty());
}

class Overwriting : public testing::Test {
protected:
    /// @param name an input file of a command
    /// @return other names of it
    std::vector<std::string> namesOf(const std::string& name) {
        const std::string path = directory / name;
        fs::create_directories(directory / "links");
        const std::string symbolic = directory / ("links/symbolic-" + name);
        const std::string hard = directory / ("links/hard-" + name);
        fs::create_symlink("../" + name, symbolic);
        fs::create_hard_link(path, hard);
        return {path, directory / ("./" + name), directory / ("links/../" + name), symbolic, hard};
    }

    /// @param script shell script; $0 is the program
    /// @param argument $1
    Outcome shell(const std::string& script, const std::string& argument) {
        return VeskarTest::run({"bash", "-c", script, VESKAR_PROGRAM, argument});
    }

    VeskarTest::TemporaryDirectory directory;
};

class OverwritingAnInput : public Overwriting, public testing::WithParamInterface<Command> {};

}  // namespace

TEST_P(OverwritingAnInput, IsRefusedHoweverItIsNamed) {
    std::vector<std::string> words;
    std::vector<std::string> inputs;
    for (const std::string& word : GetParam().words) {
        const bool isInput = word.front() == '>';
        words.push_back(isInput ? directory / word.substr(1) : word);
        if (isInput) {
            inputs.push_back(word.substr(1));
            spill(words.back(), "precious " + word);
        }
    }
    words.insert(words.end(), {"-o", ""});
    for (const std::string& input : inputs) {
        for (const std::string& name : namesOf(input)) {
            words.back() = name;
            expectRefused(veskar(words), name, directory / input);
            EXPECT_EQ(slurp(directory / input), "precious >" + input);
        }
    }
    EXPECT_EQ(directory.names().size(), inputs.size() + 1) << "nothing but the inputs and links";
}

INSTANTIATE_TEST_SUITE_P(
    EachCommand, OverwritingAnInput,
    testing::Values(
        Command{"simulate", {"simulate", ">scene"}},
        Command{"autoferry", {"import", "autoferry", ">detections", ">truth"}},
        Command{"kitti", {"import", "kitti", ">labels", ">calibration"}},
        Command{"tables",
                {"import", "csv", "--recipe", ">recipe", "--radar", ">radar", "--video", ">video"}},
        Command{"results", {"import", "mot", ">results", ">recording"}},
        Command{"replay", {"replay", ">recording", "--config", ">config", "--camera", ">camera"}},
        Command{"evaluate",
                {"evaluate", ">recording", "--config", ">config", "--camera", ">camera"}},
        Command{"evaluateFused", {"evaluate", ">recording", ">fused"}},
        Command{"export", {"export", ">recording", ">fused", ">fused2", "--to", "csv"}},
        Command{"check", {"check", ">document", "--as", "camera"}},
        Command{"report",
                {"report", ">recording", ">fused", ">fused2", "--explain", ">why", "--explain2",
                 ">why2"}}),
    [](const auto& instance) { return std::string(instance.param.name); });

TEST_F(Overwriting, OfARecordingByExplanationsIsRefused) {
    fs::copy(dataFile("tiny.jsonl"), directory / "tiny.jsonl");
    const std::string path = directory / "tiny.jsonl";
    expectRefused(veskar({"replay", path, "-o", directory / "fused", "--explain", path}), path,
                  path);
    EXPECT_EQ(slurp(path), slurp(dataFile("tiny.jsonl")));
    EXPECT_THAT(directory.names(), testing::ElementsAre("tiny.jsonl"));
}

TEST_F(Overwriting, OneOutputByAnotherIsRefused) {
    const auto expectClash = [&](const std::string& tracks, const std::string& explanations) {
        expectRefused(
            veskar({"replay", dataFile("tiny.jsonl"), "-o", tracks, "--explain", explanations}),
            explanations, tracks);
    };
    const std::string path = directory / "new";
    expectClash(path, path);
    expectClash(path, directory / "./new");
    fs::create_symlink("new", directory / "nowhere");
    expectClash(path, directory / "nowhere");
    fs::create_directory_symlink(".", directory / "here");
    expectClash(directory / "here/new", path);
    EXPECT_FALSE(fs::exists(path));
    spill(directory / "old", "precious");
    for (const std::string& name : namesOf("old")) {
        expectClash(directory / "old", name);
    }
    EXPECT_EQ(slurp(directory / "old"), "precious");
}

TEST_F(Overwriting, IsRefusedThroughStandardStreams) {
    const std::string path = directory / "p.jsonl";
    const std::string text = slurp(dataFile("tiny.jsonl"));
    spill(path, text);
    expectRefused(shell("\"$0\" replay - -o \"$1\" <\"$1\"", path), path, "<stdin>");
    expectRefused(shell("\"$0\" replay \"$1\" >>\"$1\"", path), "<stdout>", path);
    expectRefused(shell("\"$0\" replay \"$1\" -o /dev/stdout >>\"$1\"", path), "/dev/stdout", path);
    expectRefused(shell("\"$0\" replay - <\"$1\" >>\"$1\"", path), "<stdout>", "<stdin>");
    expectRefused(shell("\"$0\" evaluate \"$1\" >>\"$1\"", path), "<stdout>", path);
    EXPECT_EQ(slurp(path), text);
    const std::string summarised = directory / "both";
    expectRefused(shell("\"$0\" replay " + dataFile("tiny.jsonl") + " -o \"$1\" --summary >>\"$1\"",
                        summarised),
                  "<stdout>", summarised);
}

TEST_F(Overwriting, DevicesAndPipesMayBeNamedTwice) {
    const std::string path = dataFile("tiny.jsonl");
    const Outcome nowhere = veskar({"replay", path, "-o", "/dev/null", "--explain", "/dev/null"});
    EXPECT_EQ(nowhere.status, 0) << nowhere.errors;
    const Outcome piped = shell(
        "\"$0\" replay \"$1\" -o /dev/stdout --explain /dev/stdout --summary | wc -l; "
        "echo ${PIPESTATUS[0]}",
        path);
    EXPECT_THAT(piped.output, testing::EndsWith("\n0\n"));
    EXPECT_THAT(piped.errors, IsEmpty());
}

TEST_F(Overwriting, AnEarlierOutputIsReplacedAsBefore) {
    spill(directory / "out", "earlier");
    EXPECT_EQ(veskar({"replay", dataFile("tiny.jsonl"), "-o", directory / "out"}).status, 0);
    EXPECT_THAT(slurp(directory / "out"), StartsWith("{\"format\":\"veskar-fused\""));
}

TEST_F(Overwriting, AnInputThatIsMissingIsSaidToBeMissing) {
    EXPECT_EQ(veskar({"replay", directory / "no", "-o", directory / "no"}).errors,
              "veskar: " + directory / "no" + ": No such file or directory\n");
}
