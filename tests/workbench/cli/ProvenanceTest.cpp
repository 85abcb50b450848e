// SPDX-License-Identifier: Apache-2.0
// Files state what they were made from, and are rejected together with others.
#include "Process.h"

#include <array>
#include <functional>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <xxhash.h>

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using VeskarTest::dataFile;
using VeskarTest::Outcome;
using VeskarTest::slurp;
using VeskarTest::spill;
using VeskarTest::veskar;

namespace {

/// The digest computed at once, in the library's canonical form.
std::string digestOf(const std::string& text) {
    XXH128_canonical_t canonical{};
    XXH128_canonicalFromHash(&canonical, XXH3_128bits(text.data(), text.size()));
    std::ostringstream digits;
    for (const unsigned char byte : canonical.digest) {
        digits << "0123456789abcdef"[byte >> 4] << "0123456789abcdef"[byte & 15];
    }
    return digits.str();
}

/// @param recording text of a recording
/// @return its digest as the documentation defines it
std::string recordingDigestOf(const std::string& recording) {
    std::istringstream lines(recording);
    std::string line;
    std::string counted;
    while (std::getline(lines, line)) {
        if (line.find("\"source\":\"truth\"") == std::string::npos) {
            counted += line + "\n";
        }
    }
    return digestOf(counted);
}

/// @param text text of a run's file
/// @return the contents of its last line
nlohmann::json digestsIn(const std::string& text) {
    const std::size_t end = text.rfind('\n');
    const std::size_t begin = text.rfind('\n', end - 1) + 1;
    return nlohmann::json::parse(text.substr(begin, end - begin)).at("digests");
}

class Provenance : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(veskar({"simulate", dataFile("tiny.scenario.json"), "-o", recording}).status, 0);
        ASSERT_EQ(veskar({"replay", recording, "-o", fused, "--explain", why}).status, 0);
    }

    /// @param path a file
    /// @param old text in the file
    /// @param replacement new text for its last occurrence
    static void change(const std::string& path, const std::string& old,
                       const std::string& replacement) {
        std::string text = slurp(path);
        const std::size_t place = text.rfind(old);
        ASSERT_NE(place, std::string::npos) << old;
        text.replace(place, old.size(), replacement);
        spill(path, text);
    }

    Outcome evaluate(std::vector<std::string> words = {}) {
        words.insert(words.begin(), {"evaluate", recording, fused});
        return veskar(words);
    }

    /// @return the message when the files are rejected together
    std::string refusal() {
        const Outcome outcome = evaluate({"-o", directory / "report"});
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(directory.names(), Not(testing::Contains("report")));
        EXPECT_EQ(evaluate().output, "") << "nothing is written before the refusal";
        return outcome.errors;
    }

    VeskarTest::TemporaryDirectory directory;
    std::string recording = directory / "tiny.jsonl";
    std::string fused = directory / "fused.jsonl";
    std::string why = directory / "why.jsonl";
};

}  // namespace

TEST_F(Provenance, ARunStatesDigestsThatAnybodyCanRecompute) {
    const std::string text = slurp(fused);
    const auto stated = digestsIn(text);
    EXPECT_EQ(stated.size(), 4U);
    EXPECT_EQ(stated["recording"], recordingDigestOf(slurp(recording)));
    const auto header = nlohmann::json::parse(text.substr(0, text.find('\n')));
    EXPECT_EQ(stated["camera"], digestOf(header["camera"].dump()));
    EXPECT_EQ(stated["configuration"], digestOf(header["configuration"].dump()));
    EXPECT_EQ(stated["host"], digestOf(header["veskarHost"].dump()));
    EXPECT_EQ(digestsIn(slurp(why)), stated);
    EXPECT_THAT(veskar({"replay", recording, "--format", "csv"}).output, Not(HasSubstr("digests")));
}

TEST_F(Provenance, LineEndsAndBlankLinesAreNoContent) {
    std::string text = slurp(recording);
    const auto digestOfText = [&] {
        const Outcome outcome = veskar({"replay", "-"}, text);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return digestsIn(outcome.output)["recording"];
    };
    const std::string expected = recordingDigestOf(text);
    EXPECT_EQ(digestOfText(), expected);
    text.pop_back();
    EXPECT_EQ(digestOfText(), expected) << "no line end at the end";
    for (std::size_t place = 0; (place = text.find('\n', place)) != std::string::npos; place += 2) {
        text.replace(place, 1, "\r\n");
    }
    text += "\r\n \r\n\n";
    EXPECT_EQ(digestOfText(), expected);
}

TEST_F(Provenance, ARunThatBreaksOffStatesNone) {
    const std::string text = slurp(recording);
    const Outcome outcome = veskar({"replay", "-"}, text.substr(0, text.size() / 2));
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.output, Not(HasSubstr("digests")));
}

TEST_F(Provenance, WhatBelongsTogetherIsTakenWithoutAWord) {
    const Outcome outcome = evaluate();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.errors, IsEmpty());
    EXPECT_EQ(evaluate({"--force"}).output, outcome.output);
}

TEST_F(Provenance, AnotherSeedIsAnotherRecording) {
    ASSERT_EQ(
        veskar({"simulate", dataFile("tiny.scenario.json"), "--seed", "2", "-o", recording}).status,
        0);
    EXPECT_EQ(refusal(), "veskar: " + fused + ": these tracks were not made from " + recording +
                             ", but from another recording or an earlier state of it; replay " +
                             recording + " again, or take it as it is with --force\n");
}

TEST_F(Provenance, OneByteOfASensorFrameCounts) {
    change(recording, "\"range\":1", "\"range\":2");
    EXPECT_THAT(refusal(), HasSubstr("these tracks were not made from " + recording));
}

TEST_F(Provenance, TheHeaderCounts) {
    change(recording, "\"licence\":\"", "\"licence\":\"not ");
    EXPECT_THAT(refusal(), HasSubstr("these tracks were not made from " + recording));
}

TEST_F(Provenance, TruthMayBeCorrectedLater) {
    const std::string before = evaluate().output;
    change(recording, "\"objects\":[{\"id\":", "\"objects\":[{\"id\":7");
    const Outcome outcome = evaluate();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.errors, IsEmpty());
    EXPECT_NE(outcome.output, before);
}

TEST_F(Provenance, WhatTheHeaderOfARunSaysCannotBeChangedLater) {
    change(fused, "\"systemTrackConfirmationLimitUpper\":0",
           "\"systemTrackConfirmationLimitUpper\":1");
    EXPECT_THAT(refusal(), HasSubstr(fused +
                                     ":1: configuration: this is not the one with which "
                                     "these tracks were made from " +
                                     recording));
    ASSERT_EQ(veskar({"replay", recording, "-o", fused}).status, 0);
    change(fused, "\"pitch\":20.0", "\"pitch\":21.0");
    EXPECT_THAT(refusal(), HasSubstr(fused +
                                     ":1: camera: this is not the one with which these "
                                     "tracks were made from " +
                                     recording));
}

TEST_F(Provenance, ConstantsOfTheHostCountWhenTheyAreNotTheDefaults) {
    ASSERT_EQ(veskar({"replay", recording, "-o", fused, "--set", "radarGain=1.5"}).status, 0);
    const std::string text = slurp(fused);
    const auto header = nlohmann::json::parse(text.substr(0, text.find('\n')));
    EXPECT_EQ(digestsIn(text)["host"], digestOf(header["veskarHost"].dump()));
    EXPECT_EQ(evaluate().status, 0);
    change(fused, "\"radarGain\":1.5", "\"radarGain\":2.5");
    EXPECT_THAT(refusal(), HasSubstr(fused + ":1: veskarHost: this is not the one with which"));
}

TEST_F(Provenance, ForceTakesItWithAWarning) {
    change(recording, "\"range\":1", "\"range\":2");
    const Outcome outcome = evaluate({"--force"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, HasSubstr("GOSPA"));
    EXPECT_EQ(outcome.errors, "veskar: warning: " + fused + ": these tracks were not made from " +
                                  recording +
                                  ", but from another recording or an earlier state of it\n");
    change(fused, "\"name\":\"tiny\"", "\"name\":\"tall\"");
    EXPECT_THAT(refusal(), HasSubstr("not of \"tiny\" (" + recording + "); replay that one, or "));
    EXPECT_EQ(evaluate({"--force"}).status, 0);
    EXPECT_EQ(veskar({"evaluate", recording, "--force"}).status, 2) << "there is nothing to force";
}

TEST_F(Provenance, FilesWithoutDigestsAreTakenWithAWarning) {
    const std::string before = evaluate().output;
    const std::string text = slurp(fused);
    spill(fused, text.substr(0, text.rfind("{\"digests\"")));
    const Outcome outcome = evaluate();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, before);
    EXPECT_EQ(outcome.errors,
              "veskar: warning: " + fused +
                  ": it does not state what it was made from (it was cut off, or an earlier "
                  "version wrote it): whether it belongs to " +
                  recording + " is not known\n");
}
