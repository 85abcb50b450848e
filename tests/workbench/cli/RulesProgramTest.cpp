// SPDX-License-Identifier: Apache-2.0
// What each shipped rule is worth in a simulated scene. The rules that few reports can show are in
// tests/host/pipeline/RulesTest.cpp.
#include "Process.h"
#include "SourceDirectory.h"

#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using VeskarTest::slurp;
using VeskarTest::spill;
using VeskarTest::veskar;

namespace {

class RulesProgram : public testing::Test {
protected:
    void simulate(const std::string& scenario, const std::vector<std::string>& options = {}) {
        std::vector<std::string> arguments{
            "simulate", VESKAR_SOURCE_DIR "/config/scenarios/" + scenario + ".json",
            "--seed",   "1",
            "-o",       recording};
        arguments.insert(arguments.end(), options.begin(), options.end());
        ASSERT_EQ(veskar(arguments).status, 0);
    }
    /// The figures of the fusion with the shipped configuration, or with one setting changed.
    nlohmann::json figures(const std::string& change = "") const {
        std::vector<std::string> arguments{"evaluate", recording, "--format", "json"};
        if (!change.empty()) {
            arguments.insert(arguments.end(), {"--set", change});
        }
        return nlohmann::json::parse(veskar(arguments).output)["parts"]["all"]["fusion"];
    }
    /// How many times larger a figure is when one setting is changed.
    double growth(const std::string& figure, const std::string& change) {
        if (shipped.is_null()) {
            shipped = figures();
        }
        return figures(change)[figure].get<double>() / shipped[figure].get<double>();
    }

    VeskarTest::TemporaryDirectory directory;
    const std::string recording = directory / "scene.jsonl";
    nlohmann::json shipped;  ///< the figures with the shipped configuration
};

class RulesInACrowd : public RulesProgram {
protected:
    void SetUp() override { simulate("crowd", {"--duration", "15"}); }
};

class RulesInFog : public RulesProgram {
protected:
    void SetUp() override { simulate("night-fog"); }
};

TEST_F(RulesInACrowd, RadarKeepsTheSystemTrack) {
    EXPECT_GT(growth("IDSW", "veskarRules.radarKeepsSystemTrack=false"), 1.3);
}

TEST_F(RulesInACrowd, ThePairGateKeepsFalseTracksAway) {
    EXPECT_GT(growth("false_per_instant", "veskarRules.pairGate=0.0"), 1.3);
}

TEST_F(RulesInACrowd, ThePairMemoryFindsWrongPairs) {
    EXPECT_GT(growth("GOSPA", "veskarRules.pairMemory=false"), 1.04);
}

TEST_F(RulesInFog, AnObjectThatIsFoundAgainKeepsItsTrack) {
    EXPECT_GT(growth("GOSPA", "veskarRules.takeOver=false"), 1.2);
    EXPECT_GT(growth("IDSW", "veskarRules.takeOver=false"), 3.0);
}

TEST_F(RulesInFog, PredictionsStartNothing) {
    EXPECT_GT(growth("GOSPA", "veskarRules.freshReportsOnly=false"), 1.2);
    EXPECT_GT(growth("IDSW", "veskarRules.freshReportsOnly=false"), 3.0);
}

/// The header states a camera that looks a degree farther down than it does: as if the ground rose.
TEST_F(RulesProgram, SlopingGroundIsAllowedFor) {
    simulate("perimeter", {"--duration", "30"});
    std::string text = slurp(recording);
    const std::size_t end = text.find('\n');
    auto header = nlohmann::json::parse(text.substr(0, end));
    auto& pitch = header["camera"]["rotation"]["pitch"];
    pitch = pitch.get<double>() + 1.0;
    spill(recording, header.dump() + text.substr(end));
    EXPECT_GT(growth("GOSPA", "groundSlopeStd=0"), 1.15);
}

}  // namespace
