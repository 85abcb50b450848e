// SPDX-License-Identifier: Apache-2.0
// TrackAssociator: cost matrices, the class rule on them and their solution.
#include <veskar/TrackAssociator.h>

#include "assignment/LiteralSolver.h"
#include "association/LineTracks.h"
#include "support/Constants.h"
#include "support/TrackFactory.h"

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace VeskarTest;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Veskar::Config;
using Veskar::Source;
using Veskar::SystemTrack;
using Veskar::Track;
using Veskar::TrackAssociator;

namespace {

using VeskarTest::F;

Config lineConfig() {
    Config config;
    config.module.useJVA = true;
    config.module.gatingDistance = 1.5;
    return config;
}

class SensorMatrix : public testing::Test {
protected:
    void fill(Source source) {
        TrackAssociator(config).sensorToSystemCostMatrix(sensors, systems, cost, allowed,
                                                         classMatch, source);
    }

    Config config = lineConfig();
    std::vector<std::shared_ptr<Track>> sensors;
    std::vector<std::shared_ptr<SystemTrack>> systems;
    Costs cost;
    Allowed allowed;
    std::vector<std::vector<int>> classMatch;
};

TEST_F(SensorMatrix, IsEmptyWithoutSystemTracks) {
    sensors = {trackAt(0.0, Source::Radar, 1)};
    fill(Source::Radar);
    EXPECT_THAT(cost, IsEmpty());
    EXPECT_THAT(allowed, IsEmpty());
    EXPECT_THAT(classMatch, IsEmpty());
}

TEST_F(SensorMatrix, HasEmptyRowsWithoutSensorTracks) {
    systems = {systemAt(0.0, Source::Radar, 1), systemAt(0.0, Source::VideoObject, 2)};
    fill(Source::Radar);
    EXPECT_THAT(cost, ElementsAre(IsEmpty(), IsEmpty()));
    EXPECT_THAT(allowed, ElementsAre(IsEmpty(), IsEmpty()));
    EXPECT_THAT(classMatch, ElementsAre(IsEmpty(), IsEmpty()));
}

TEST_F(SensorMatrix, AppendsToWhatIsThere) {
    cost = {{1.0}};
    allowed = {{true}};
    classMatch = {{0}};
    systems = {systemAt(0.0, Source::VideoObject, 1)};
    fill(Source::Radar);
    EXPECT_THAT(cost, ElementsAre(ElementsAre(1.0), IsEmpty()));
    EXPECT_THAT(allowed, ElementsAre(ElementsAre(true), IsEmpty()));
    EXPECT_THAT(classMatch, ElementsAre(ElementsAre(0), IsEmpty()));
}

TEST_F(SensorMatrix, HoldsTheGateDistancesOfPairsInside) {
    systems = {systemAt(0.0, Source::VideoObject, 1), systemAt(1.0, Source::VideoObject, 2)};
    sensors = {trackAt(2.0, Source::Radar, 7), trackAt(3.0, Source::Radar, 8)};
    fill(Source::Radar);
    const double one = systems[1]->statisticalDistance(*sensors[0]);
    EXPECT_EQ(cost, (Costs{{2.0 * one, F}, {one, 2.0 * one}}));
    EXPECT_EQ(allowed, (Allowed{{true, false}, {true, true}}));
}

TEST_F(SensorMatrix, ForbidsASecondTrackOfASource) {
    systems = {systemAt(0.0, Source::VideoObject, 1), systemAt(0.0, Source::Radar, 2),
               systemAt(0.0, Source::VideoVura, 3)};
    sensors = {trackAt(0.0, Source::VideoObject, 7)};
    fill(Source::VideoObject);
    EXPECT_EQ(cost, (Costs{{F}, {0.0}, {0.0}}));
    sensors = {trackAt(0.0, Source::Radar, 7)};
    fill(Source::Radar);
    EXPECT_EQ(cost, (Costs{{F}, {0.0}, {0.0}, {0.0}, {F}, {0.0}}));
}

TEST_F(SensorMatrix, ForbidsHeldTracksInEveryRow) {
    systems = {systemAt(0.0, Source::Radar, 1), systemAt(0.0, Source::VideoObject, 2)};
    sensors = {trackAt(0.0, Source::Radar, 1), trackAt(0.0, Source::Radar, 9)};
    fill(Source::Radar);
    EXPECT_EQ(allowed, (Allowed{{false, false}, {false, true}}));
    EXPECT_EQ(cost, (Costs{{F, F}, {F, 0.0}}));
}

TEST_F(SensorMatrix, LeavesHeldRadarTracksToOthersWhenTheyMayBeShared) {
    config.module.allowRadarToMultiple = true;
    systems = {systemAt(0.0, Source::Radar, 1), systemAt(0.0, Source::VideoObject, 2)};
    sensors = {trackAt(0.0, Source::Radar, 1)};
    fill(Source::Radar);
    EXPECT_EQ(allowed, (Allowed{{false}, {true}}));
    sensors = {trackAt(0.0, Source::VideoObject, 2)};
    fill(Source::VideoObject);
    EXPECT_EQ(allowed, (Allowed{{false}, {true}, {false}, {false}}));
}

TEST_F(SensorMatrix, ComparesClassesWithTheOtherSensorsSide) {
    systems = {systemAt(0.0, Source::VideoObject, 1, "car"), systemAt(0.0, Source::Radar, 2),
               systemAt(0.0, Source::VideoVura, 3, "car")};
    sensors = {trackAt(0.0, Source::Radar, 7), trackAt(0.0, Source::Radar, 8, "bus")};
    fill(Source::Radar);
    EXPECT_EQ(classMatch, (std::vector<std::vector<int>>{{0, 1}, {1, 1}, {1, 1}}));
    classMatch.clear();
    sensors = {trackAt(0.0, Source::VideoObject, 7), trackAt(0.0, Source::VideoObject, 8, "bus")};
    fill(Source::VideoObject);
    EXPECT_EQ(classMatch, (std::vector<std::vector<int>>{{1, 1}, {1, 0}, {1, 1}}));
}

TEST_F(SensorMatrix, ComparesNoClassesForOtherSources) {
    systems = {systemAt(0.0, Source::VideoObject, 1, "car")};
    systems[0]->setCoastingTimeTracks(0.0);
    systems[0]->sensorTracks[Source::VideoVura];
    sensors = {trackAt(0.0, Source::VideoVura, 7)};
    fill(Source::VideoVura);
    EXPECT_EQ(classMatch, (std::vector<std::vector<int>>{{1}}));
    EXPECT_EQ(allowed, (Allowed{{true}}));
}

class SystemMatrix : public testing::Test {
protected:
    SystemMatrix() {
        systems = {systemAt(0.0, Source::VideoObject, 1), systemAt(0.0, Source::Radar, 2)};
        systems[0]->startTime = 1.0;
        systems[1]->startTime = 2.0;
    }

    Allowed fill() {
        cost.clear();
        Allowed allowed;
        TrackAssociator(lineConfig()).systemToSystemCostMatrix(systems, cost, allowed, excludedIds);
        return allowed;
    }

    std::vector<std::shared_ptr<SystemTrack>> systems;
    std::unordered_set<int> excludedIds;
    Costs cost;
};

TEST_F(SystemMatrix, IsEmptyWithoutSystemTracks) {
    systems.clear();
    EXPECT_THAT(fill(), IsEmpty());
}

TEST_F(SystemMatrix, AllowsTheOlderTrackToTakeTheYounger) {
    EXPECT_EQ(fill(), (Allowed{{false, true}, {false, false}}));
    EXPECT_EQ(cost, (Costs{{F, 0.0}, {F, F}}));
    std::swap(systems[0]->startTime, systems[1]->startTime);
    EXPECT_EQ(fill(), (Allowed{{false, false}, {true, false}}));
}

TEST_F(SystemMatrix, ForbidsTracksThatStartedTogether) {
    systems[1]->startTime = 1.0;
    EXPECT_EQ(fill(), (Allowed{{false, false}, {false, false}}));
}

TEST_F(SystemMatrix, ForbidsPairsOutsideTheGate) {
    systems[1]->state[0] = 3.0;
    EXPECT_EQ(fill(), (Allowed{{false, false}, {false, false}}));
    EXPECT_EQ(cost, (Costs{{F, F}, {F, F}}));
}

TEST_F(SystemMatrix, ForbidsExcludedIds) {
    for (const int id : {1, 2}) {
        excludedIds = {id};
        EXPECT_EQ(fill(), (Allowed{{false, false}, {false, false}}));
    }
    excludedIds = {3};
    EXPECT_EQ(fill(), (Allowed{{false, true}, {false, false}}));
}

TEST_F(SystemMatrix, ForbidsPairsThatShareASource) {
    for (const Source source : {Source::VideoObject, Source::Radar}) {
        systems = {systemAt(0.0, source, 1), systemAt(0.0, source, 2)};
        systems[1]->startTime = 20.0;
        EXPECT_EQ(fill(), (Allowed{{false, false}, {false, false}}));
    }
}

TEST_F(SystemMatrix, ForbidsFusedTracks) {
    for (const std::size_t fused : {0u, 1u}) {
        systems = {systemAt(0.0, Source::VideoVura, 1), systemAt(0.0, Source::VideoVura, 2)};
        systems[1]->startTime = 20.0;
        EXPECT_EQ(fill(), (Allowed{{false, true}, {false, false}}));
        systems[fused]->updateState(trackAt(0.0, Source::Radar, 5));
        EXPECT_EQ(fill(), (Allowed{{false, true}, {false, false}}));
        systems[fused]->updateState(trackAt(0.0, Source::VideoObject, 6));
        EXPECT_EQ(fill(), (Allowed{{false, false}, {false, false}}));
    }
}

/// One video-only system track of a human, and radar tracks of a human and of a car.
class ClassRule : public testing::Test {
protected:
    void apply() {
        TrackAssociator(config).handleClassMatching(sensors, systems, cost, allowed, classMatch,
                                                    mismatches);
    }

    Config config = lineConfig();
    std::vector<std::shared_ptr<SystemTrack>> systems = {systemAt(0.0, Source::VideoObject, 1)};
    std::vector<std::shared_ptr<Track>> sensors = {trackAt(0.5, Source::Radar, 7, "car"),
                                                   trackAt(1.0, Source::Radar, 8)};
    Costs cost = {{0.3, 0.7}};
    Allowed allowed = {{true, true}};
    std::vector<std::vector<int>> classMatch = {{0, 1}};
    std::unordered_set<int> mismatches = {42};
};

TEST_F(ClassRule, ForbidsMismatchesBesideAMatchInsideTheGate) {
    apply();
    EXPECT_EQ(cost, (Costs{{F, 0.7}}));
    EXPECT_EQ(allowed, (Allowed{{false, true}}));
    EXPECT_THAT(mismatches, UnorderedElementsAre(42));
}

TEST_F(ClassRule, KeepsMismatchesWithoutAMatchInsideTheGate) {
    sensors[1]->state[0] = 10.0;
    apply();
    EXPECT_EQ(cost, (Costs{{0.3, 0.7}}));
    EXPECT_EQ(allowed, (Allowed{{true, true}}));
}

TEST_F(ClassRule, CountsAMatchThatIsNotAllowed) {
    allowed = {{true, false}};
    apply();
    EXPECT_EQ(allowed, (Allowed{{false, false}}));
}

TEST_F(ClassRule, ReportsMismatchesInsideTheGateWhenTheyAreToBeRemoved) {
    config.module.removeClassMismatches = true;
    sensors.push_back(trackAt(10.0, Source::Radar, 9, "car"));
    cost[0].push_back(F);
    allowed[0].push_back(false);
    classMatch[0].push_back(0);
    apply();
    EXPECT_THAT(mismatches, UnorderedElementsAre(42, 0));
}

TEST_F(ClassRule, RefusesMatricesThatDoNotFit) {
    classMatch = {{0}};
    EXPECT_THROW(apply(), std::out_of_range);
    classMatch = {{0, 1}};
    sensors.resize(1);
    EXPECT_THROW(apply(), std::out_of_range);
}

class RunJva : public testing::Test {
protected:
    Pairs run(int rows, int cols, Costs cost, Allowed allowed) {
        TrackAssociator associator((Config()));
        associator.runJVA(rows, cols, cost, allowed);
        return associator.getAssociations();
    }
    Pairs run(const Costs& cost) {
        const int cols = static_cast<int>(cost[0].size());
        return run(static_cast<int>(cost.size()), cols, cost,
                   Allowed(cost.size(), std::vector<bool>(cols, true)));
    }
};

TEST_F(RunJva, PairsTheOnlyPairWhenItIsAllowed) {
    EXPECT_EQ(run({{0.5}}), (Pairs{{0, 0}}));
    EXPECT_EQ(run(1, 1, {{0.5}}, {{false}}), Pairs());
    EXPECT_EQ(run({{F}}), (Pairs{{0, 0}}));
    EXPECT_EQ(run({{20000.0}}), (Pairs{{0, 0}}));
}

TEST_F(RunJva, PadsRectangles) {
    EXPECT_EQ(
        run({{9.0, 9.0, 9.0, 1.0, 9.0}, {9.0, 1.0, 9.0, 9.0, 9.0}, {9.0, 9.0, 9.0, 9.0, 1.0}}),
        (Pairs{{0, 3}, {1, 1}, {2, 4}}));
    EXPECT_EQ(run({{5.0}, {1.0}, {3.0}}), (Pairs{{1, 0}}));
}

TEST_F(RunJva, DropsWhatIsNotAllowed) {
    EXPECT_EQ(run(2, 2, {{1.0, F}, {F, F}}, {{true, false}, {false, false}}), (Pairs{{0, 0}}));
    EXPECT_EQ(run(2, 2, {{1.0, 2.0}, {2.0, 1.0}}, {{false, true}, {true, true}}), (Pairs{{1, 1}}));
}

TEST_F(RunJva, LooksAtTheGivenBlockOnly) {
    const Costs cost = {{9.0, 1.0, 0.0}, {9.0, 9.0, 0.0}, {0.0, 0.0, 0.0}};
    const Allowed allowed(3, std::vector<bool>(3, true));
    EXPECT_EQ(run(2, 2, cost, allowed), runLiterally(2, 2, cost, allowed));
    EXPECT_EQ(run(1, 2, cost, allowed), (Pairs{{0, 1}}));
    EXPECT_EQ(run(0, 3, cost, allowed), Pairs());
    EXPECT_EQ(run(3, 0, cost, allowed), Pairs());
}

TEST_F(RunJva, AppendsToTheResult) {
    TrackAssociator associator((Config()));
    Costs cost = {{0.5}};
    Allowed allowed = {{true}};
    associator.runJVA(1, 1, cost, allowed);
    associator.runJVA(1, 1, cost, allowed);
    EXPECT_EQ(associator.getAssociations(), (Pairs{{0, 0}, {0, 0}}));
}

TEST_F(RunJva, AgreesWithTheLiteralRulesOnBlocks) {
    RandomEstimates random(61);
    for (int k = 0; k < 200; ++k) {
        const int height = random.integer(1, 14);
        const int width = random.integer(1, 14);
        Costs cost(height, std::vector<double>(width));
        Allowed allowed(height, std::vector<bool>(width));
        for (int i = 0; i < height; ++i) {
            for (int j = 0; j < width; ++j) {
                cost[i][j] = random.integer(0, 3) == 0 ? random.uniform(0.0, 5.0) : F;
                allowed[i][j] = random.integer(0, 3) != 0;
            }
        }
        const int rows = random.integer(0, height);
        const int cols = random.integer(0, width);
        ASSERT_EQ(run(rows, cols, cost, allowed), runLiterally(rows, cols, cost, allowed)) << k;
    }
}

TEST_F(RunJva, RefusesNoRows) {
    EXPECT_THROW(run(0, 0, {}, {}), std::out_of_range);
}

TEST_F(RunJva, RefusesMoreThan512) {
    const auto textOf = [this](std::size_t height, std::size_t width) {
        try {
            run(1, 1, Costs(height, std::vector<double>(width, F)),
                Allowed(height, std::vector<bool>(width, false)));
        } catch (const std::runtime_error& e) {
            return std::string(e.what());
        }
        return std::string();
    };
    const std::string refusal = "One of the JVA costMatrix dimensions was too big (>512)";
    EXPECT_EQ(textOf(1, 513), refusal);
    EXPECT_EQ(textOf(513, 1), refusal);
    EXPECT_EQ(textOf(2, 512), "");
    EXPECT_EQ(textOf(512, 2), "");
}

TEST_F(RunJva, RefusesAllowedMatricesThatAreTooSmall) {
    EXPECT_THROW(run(2, 2, {{1.0, 2.0}, {2.0, 1.0}}, {{true, true}}), std::out_of_range);
    EXPECT_THROW(run(2, 2, {{2.0, 1.0}, {1.0, 2.0}}, {{true}, {true}}), std::out_of_range);
}

using RunJvaDeathTest = RunJva;

TEST_F(RunJvaDeathTest, StopsTheProcessBeyondTheMatrix) {
    const Allowed allowed(3, std::vector<bool>(3, true));
    EXPECT_DEATH(run(3, 1, {{1.0}, {1.0}}, allowed), "");
    EXPECT_DEATH(run(1, 3, {{1.0, 1.0}}, allowed), "");
}

}  // namespace
