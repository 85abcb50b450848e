// SPDX-License-Identifier: Apache-2.0
// Compares the module with the literal transcription of its rules, call by call.
#include <veskar/FusionModule.h>

#include "fusion/Differences.h"
#include "fusion/LatticeScenario.h"
#include "fusion/LiteralFusion.h"
#include "fusion/RandomScenario.h"
#include "support/SyslogCapture.h"

#include <map>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <syslog.h>

namespace VeskarTest {
namespace {

constexpr int framesPerScenario = 200;

Literal::Tracks literal(const Step& step) {
    Literal::Tracks tracks;
    for (const auto& track : step.tracks) {
        tracks.push_back(Literal::literal(*track));
    }
    return tracks;
}

Switches switchesOf(int combination) {
    return {(combination & 1) != 0, (combination & 2) != 0, (combination & 4) != 0,
            (combination & 8) != 0};
}

/// Module and transcription at the same step of the same scene.
class Pair {
public:
    explicit Pair(const Veskar::Config& config)
        : module_(config, [this] { return now_; }), oracle_(config) {}

    void cycle(const Step& step) {
        const Literal::Tracks tracks = literal(step);
        now_ = step.now;
        module_.cycle(step.source, step.timestamp, step.tracks);
        oracle_.cycle(step.source, step.timestamp, tracks, step.now.count());
    }

    void clear() {
        module_.clear();
        oracle_.clear();
        Veskar::ObjectIdGenerator::instance->lastId = oracle_.lastId;
    }

    bool takeDoubt() { return oracle_.takeDoubt(); }
    std::string firstDifference() const {
        return VeskarTest::firstDifference(module_.systemTracks, oracle_.systemTracks);
    }

private:
    std::chrono::nanoseconds now_{};
    Veskar::FusionModule module_;
    Literal::Fusion oracle_;
};

/// @return number of frames after which both were compared
template <typename Scenario>
int compareOver(Scenario scenario, bool isExact) {
    const SyslogCapture log;
    Pair both(scenario.getConfig());
    int compared = 0;
    for (int frame = 0; frame < framesPerScenario; ++frame) {
        both.cycle(scenario.next());
        if (both.takeDoubt() && !isExact) {
            both.clear();  // rounding may have led to different decisions: restart both
            continue;
        }
        const std::string difference = both.firstDifference();
        if (!difference.empty()) {
            ADD_FAILURE() << "frame " << frame << ": " << difference;
            break;
        }
        ++compared;
    }
    // The transcription does not model rejected input, so there must be none.
    EXPECT_THAT(log.texts(LOG_ERR), testing::IsEmpty());
    return compared;
}

/// Every combination of the switches.
class FusionOracle : public testing::TestWithParam<int> {
protected:
    /// @return share of the frames that were compared
    template <typename Scenario>
    static double compareScenarios(int count, bool isExact) {
        int compared = 0;
        for (int i = 0; i < count && !HasFailure(); ++i) {
            const auto seed = static_cast<unsigned>(1000 * GetParam() + i);
            SCOPED_TRACE("seed " + std::to_string(seed));
            compared += compareOver(Scenario(seed, switchesOf(GetParam())), isExact);
        }
        return static_cast<double>(compared) / (count * framesPerScenario);
    }
};

TEST_P(FusionOracle, AgreesCallByCall) {
    EXPECT_GT(compareScenarios<RandomScenario>(32, false), 0.95);
}

TEST_P(FusionOracle, AgreesOnExactTies) {
    EXPECT_EQ(compareScenarios<LatticeScenario>(8, true), 1.0);
}

/// The comparison is meaningful only if the scenes contain all relevant events.
TEST(FusionOracleScenes, ContainAllThatTheRulesTellApart) {
    std::map<std::string, int> events;
    for (int combination = 0; combination < 16; ++combination) {
        RandomScenario scenario(static_cast<unsigned>(1000 * combination), switchesOf(combination));
        Literal::Fusion oracle(scenario.getConfig());
        for (int frame = 0; frame < 4 * framesPerScenario; ++frame) {
            const Step step = scenario.next();
            oracle.cycle(step.source, step.timestamp, literal(step), step.now.count());
        }
        for (const auto& [event, count] : oracle.events) {
            events[event] += count;
        }
    }
    EXPECT_EQ(events.size(), 11U);
    for (const auto& [event, count] : events) {
        EXPECT_GE(count, 5) << event;
    }
}

INSTANTIATE_TEST_SUITE_P(Switches, FusionOracle, testing::Range(0, 16));

}  // namespace
}  // namespace VeskarTest
