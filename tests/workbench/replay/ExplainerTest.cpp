// SPDX-License-Identifier: Apache-2.0
// The explanation of every kind of decision.
#include "replay/Explainer.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

using Observer = Veskar::FusionObserver;
using GateVerdict = Observer::GateVerdict;
using ClassVerdict = Observer::ClassVerdict;
using DeletionReason = Observer::DeletionReason;

constexpr double uptime = 100.0;

class ExplainerTest : public testing::Test {
protected:
    ExplainerTest() { explainer.onFrame({Veskar::Radar, uptime + 2.5, 3, 4}); }

    /// @return the explained frame
    nlohmann::json explained() {
        explainer.finish();
        EXPECT_EQ(lines.size(), 1U);
        EXPECT_EQ(lines.front().back(), '\n');
        return nlohmann::json::parse(lines.front());
    }

    static Observer::Gate gate(GateVerdict verdict = GateVerdict::Passed) {
        Observer::Gate result;
        result.distance = 1.25;
        result.limit = 2.5;
        result.verdict = verdict;
        return result;
    }

    static Observer::Candidate candidate(int track, int id,
                                         GateVerdict verdict = GateVerdict::Passed) {
        Observer::Candidate result;
        result.systemTrackId = track;
        result.source = Veskar::Radar;
        result.sensorTrackId = id;
        result.gate = gate(verdict);
        result.allowed = verdict == GateVerdict::Passed;
        return result;
    }

    std::vector<std::string> lines;
    Explainer explainer{[this](const std::string& line) { lines.push_back(line); }, uptime};
};

TEST_F(ExplainerTest, TellsOfTheFrameOnTheRecordingsClock) {
    EXPECT_EQ(explained(), nlohmann::json::parse(R"({"source":"radar","time":2.5,"sensorTracks":3,
                                           "systemTracks":4})"));
}

TEST_F(ExplainerTest, WritesOneLinePerFrame) {
    explainer.onStart({7, Veskar::Radar, 1});
    explainer.onFrame({Veskar::VideoObject, uptime + 2.625, 0, 1});
    ASSERT_EQ(lines.size(), 1U) << "complete when the next frame begins";
    explainer.finish();
    explainer.finish();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(nlohmann::json::parse(lines[0])["starts"].size(), 1U);
    EXPECT_EQ(nlohmann::json::parse(lines[1])["source"], "video");
    EXPECT_FALSE(nlohmann::json::parse(lines[1]).contains("starts"));
}

TEST_F(ExplainerTest, TellsDistanceAndLimitOfEveryCandidate) {
    Observer::Candidate pair = candidate(7, 3);
    pair.gate.velocitySimilarity = -0.5;
    pair.gate.similarityLimit = 0.25;
    explainer.onCandidate(pair);
    explainer.onCandidate(candidate(8, 3));
    const nlohmann::json frame = explained();
    EXPECT_EQ(
        frame["candidates"][0],
        nlohmann::json::parse(R"({"track":7,"sensor":"radar","id":3,"distance":1.25,"limit":2.5,
                              "velocitySimilarity":-0.5,"similarityLimit":0.25,"gate":"passed",
                              "class":"not compared","outcome":"other pairs cost less"})"));
    EXPECT_FALSE(frame["candidates"][1].contains("velocitySimilarity"));
}

TEST_F(ExplainerTest, WordsEveryVerdictOfTheGate) {
    const std::pair<GateVerdict, const char*> words[] = {
        {GateVerdict::Passed, "passed"},
        {GateVerdict::TooFar, "too far"},
        {GateVerdict::VelocityDiffers, "velocity differs"},
        {GateVerdict::StandsStill, "stands still in video"},
        {GateVerdict::ClassNotSupported, "class not supported"}};
    for (const auto& [verdict, word] : words) {
        explainer.onCandidate(candidate(7, 3, verdict));
    }
    const nlohmann::json frame = explained();
    for (std::size_t i = 0; i < std::size(words); ++i) {
        EXPECT_EQ(frame["candidates"][i]["gate"], words[i].second);
        EXPECT_EQ(frame["candidates"][i]["outcome"],
                  i == 0 ? "other pairs cost less" : "outside the gate");
    }
}

TEST_F(ExplainerTest, WordsEveryVerdictOfTheClasses) {
    Observer::Candidate pair = candidate(7, 3);
    for (const ClassVerdict verdict :
         {ClassVerdict::NotCompared, ClassVerdict::Match, ClassVerdict::Mismatch}) {
        pair.classVerdict = verdict;
        explainer.onCandidate(pair);
    }
    pair.allowed = false;
    explainer.onCandidate(pair);
    const nlohmann::json candidates = explained()["candidates"];
    EXPECT_EQ(candidates[0]["class"], "not compared");
    EXPECT_EQ(candidates[1]["class"], "match");
    EXPECT_EQ(candidates[2]["class"], "mismatch");
    EXPECT_EQ(candidates[2]["outcome"], "other pairs cost less");
    EXPECT_EQ(candidates[3]["outcome"], "a candidate of the right class is there");
}

TEST_F(ExplainerTest, TellsWhichCandidateWasAssigned) {
    explainer.onCandidate(candidate(7, 3));
    explainer.onCandidate(candidate(7, 4));
    explainer.onCandidate(candidate(8, 3));
    explainer.onAssignment({7, Veskar::Radar, 4});
    const nlohmann::json candidates = explained()["candidates"];
    EXPECT_EQ(candidates[0]["outcome"], "other pairs cost less");
    EXPECT_EQ(candidates[1]["outcome"], "assigned");
    EXPECT_EQ(candidates[2]["outcome"], "other pairs cost less");
}

TEST_F(ExplainerTest, TellsOfContinuationsAndRefusals) {
    Observer::Continuation report;
    report.systemTrackId = 7;
    report.source = Veskar::Radar;
    report.sensorTrackId = 3;
    report.gate = gate();
    report.classVerdict = ClassVerdict::Match;
    explainer.onContinuation(report);
    report.gate = gate(GateVerdict::TooFar);
    report.refused = true;
    report.refusal = Observer::Refusal::OutsideGate;
    explainer.onContinuation(report);
    const nlohmann::json continuations = explained()["continuations"];
    EXPECT_EQ(
        continuations[0],
        nlohmann::json::parse(R"({"track":7,"sensor":"radar","id":3,"distance":1.25,"limit":2.5,
                              "gate":"passed","class":"match","outcome":"fused"})"));
    EXPECT_EQ(continuations[1]["gate"], "too far");
    EXPECT_EQ(continuations[1]["outcome"], "fused, then refused");
}

TEST_F(ExplainerTest, SaysWhichRuleRefusesAReport) {
    const std::pair<Observer::Refusal, const char*> words[] = {
        {Observer::Refusal::None, "fused"},
        {Observer::Refusal::OutsideGate, "fused, then refused"},
        {Observer::Refusal::ClassMismatch, "fused, then refused"},
        {Observer::Refusal::PairTooFar, "fused, then refused: too far from its partner"},
        {Observer::Refusal::PairDisagrees, "fused, then refused: disagrees with its partner"}};
    for (const auto& [refusal, word] : words) {
        Observer::Continuation report;
        report.gate = gate();
        report.refused = refusal != Observer::Refusal::None;
        report.refusal = refusal;
        explainer.onContinuation(report);
    }
    Observer::Continuation report;
    report.gate = gate();
    report.pairDistance = 2.25;
    explainer.onContinuation(report);
    const nlohmann::json continuations = explained()["continuations"];
    for (std::size_t i = 0; i < std::size(words); ++i) {
        EXPECT_EQ(continuations[i]["outcome"], words[i].second);
        EXPECT_FALSE(continuations[i].contains("pairDistance"));
    }
    EXPECT_EQ(continuations[5]["pairDistance"], 2.25);
}

TEST_F(ExplainerTest, SaysWhichRuleHindersACandidate) {
    Observer::Candidate pair = candidate(7, 3);
    pair.allowed = false;
    pair.hindrance = Observer::Hindrance::ReportCoasts;
    explainer.onCandidate(pair);
    pair.hindrance = Observer::Hindrance::SeenBesideHeld;
    explainer.onCandidate(pair);
    pair.gate = gate(GateVerdict::TooFar);
    explainer.onCandidate(pair);
    const nlohmann::json candidates = explained()["candidates"];
    EXPECT_EQ(candidates[0]["outcome"], "the report coasts");
    EXPECT_EQ(candidates[1]["outcome"], "its sensor sees it beside the held track");
    EXPECT_EQ(candidates[2]["outcome"], "outside the gate");
}

TEST_F(ExplainerTest, SaysWhichRuleHindersAMerge) {
    const std::pair<Observer::MergeHindrance, const char*> words[] = {
        {Observer::MergeHindrance::None, "other pairs cost less"},
        {Observer::MergeHindrance::SameStart, "both started at the same time"},
        {Observer::MergeHindrance::PairUnknown, "nothing is remembered of the pair"},
        {Observer::MergeHindrance::PairDisagrees, "the pair disagrees"}};
    for (const auto& [hindrance, word] : words) {
        Observer::MergeCandidate pair;
        pair.gate = gate();
        pair.hindrance = hindrance;
        if (hindrance == Observer::MergeHindrance::PairDisagrees) {
            pair.memory = Observer::PairMemory{4.5, 1.25, true};
        }
        explainer.onMergeCandidate(pair);
    }
    const nlohmann::json merges = explained()["mergeCandidates"];
    for (std::size_t i = 0; i < std::size(words); ++i) {
        EXPECT_EQ(merges[i]["outcome"], words[i].second);
    }
    EXPECT_FALSE(merges[2].contains("rivals"));
    EXPECT_EQ(merges[3]["meanSquaredDistance"], 4.5);
    EXPECT_EQ(merges[3]["rivals"], 1.25);
}

TEST_F(ExplainerTest, SaysWhyASensorTrackLeaves) {
    const std::pair<Observer::PruningReason, const char*> words[] = {
        {Observer::PruningReason::Coasted, "coasted"},
        {Observer::PruningReason::Refused, "its report was refused"},
        {Observer::PruningReason::PartnerRefused, "the report of its radar partner was refused"},
        {Observer::PruningReason::TakenOver, "another track of its sensor took its place"}};
    for (const auto& [reason, word] : words) {
        explainer.onPruning({9, Veskar::Radar, 4, 0.0, reason});
    }
    const nlohmann::json prunings = explained()["prunings"];
    for (std::size_t i = 0; i < std::size(words); ++i) {
        EXPECT_EQ(prunings[i]["reason"], words[i].second);
    }
}

TEST_F(ExplainerTest, TellsOfMerges) {
    for (const int younger : {8, 9, 10, 11}) {
        Observer::MergeCandidate pair;
        pair.olderId = 7;
        pair.youngerId = younger;
        pair.gate = gate(younger == 10 ? GateVerdict::TooFar : GateVerdict::Passed);
        pair.excluded = younger == 11;
        explainer.onMergeCandidate(pair);
    }
    explainer.onMerge(8, 7);  // whichever survives
    const nlohmann::json merges = explained()["mergeCandidates"];
    EXPECT_EQ(merges[0], nlohmann::json::parse(R"({"track":7,"other":8,"distance":1.25,"limit":2.5,
                                         "gate":"passed","outcome":"merged"})"));
    EXPECT_EQ(merges[1]["outcome"], "other pairs cost less");
    EXPECT_EQ(merges[2]["outcome"], "outside the gate");
    EXPECT_EQ(merges[3]["outcome"], "a report was refused in this frame");
}

TEST_F(ExplainerTest, TellsTheLifeOfSystemTracks) {
    explainer.onStart({7, Veskar::VideoObject, 3});
    explainer.onStartWithheld(Veskar::Radar, 5, 0.25);
    explainer.onConfirmation(8, 0.96, 0.95);
    explainer.onConfirmationWithheld(8, 4.5, 3.0);
    explainer.onPruning({9, Veskar::Radar, 4, 0.75});
    explainer.onDeletion(9, DeletionReason::NoSensorTracks);
    explainer.onDeletion(10, DeletionReason::Merged);
    explainer.onDeletion(11, DeletionReason::RadarCopy);
    const nlohmann::json frame = explained();
    EXPECT_EQ(frame["starts"], nlohmann::json::parse(R"([{"track":7,"sensor":"video","id":3}])"));
    EXPECT_EQ(frame["withheldStarts"],
              nlohmann::json::parse(R"([{"sensor":"radar","id":5,"coasting":0.25}])"));
    EXPECT_EQ(frame["confirmations"],
              nlohmann::json::parse(R"([{"track":8,"probability":0.96,"limit":0.95}])"));
    EXPECT_EQ(frame["prunings"],
              nlohmann::json::parse(
                  R"([{"track":9,"sensor":"radar","id":4,"coasting":0.75,"reason":"coasted"}])"));
    EXPECT_EQ(frame["withheldConfirmations"],
              nlohmann::json::parse(R"([{"track":8,"rangeStd":4.5,"limit":3.0}])"));
    EXPECT_EQ(frame["deletions"],
              nlohmann::json::parse(R"([{"track":9,"reason":"no sensor tracks left"},
                              {"track":10,"reason":"merged"},
                              {"track":11,"reason":"copy of a shared radar track"}])"));
}

TEST_F(ExplainerTest, WritesWhatIsNotFiniteAsNull) {
    Observer::Candidate pair = candidate(7, 3);
    pair.gate.distance = std::numeric_limits<double>::infinity();
    pair.gate.velocitySimilarity = std::numeric_limits<double>::quiet_NaN();
    explainer.onCandidate(pair);
    const nlohmann::json frame = explained();
    EXPECT_TRUE(frame["candidates"][0]["distance"].is_null());
    EXPECT_TRUE(frame["candidates"][0]["velocitySimilarity"].is_null());
}

}  // namespace
}  // namespace Workbench
