// SPDX-License-Identifier: Apache-2.0
// TrackAssociator: whole associations, one rule per test.
#include <veskar/TrackAssociator.h>

#include "assignment/LiteralSolver.h"
#include "association/LineTracks.h"
#include "association/Scene.h"
#include "support/AllocationCounter.h"
#include "support/Constants.h"
#include "support/SyslogCapture.h"
#include "support/TrackFactory.h"

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace VeskarTest;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Veskar::Config;
using Veskar::Source;
using Veskar::SystemTrack;
using Veskar::Track;
using Veskar::TrackAssociator;

namespace {

using VeskarTest::nan;

class Association : public testing::Test {
protected:
    Association() {
        config.module.useJVA = true;
        config.module.gatingDistance = 1.5;
    }

    Pairs sensorToSystem(Source source) {
        TrackAssociator associator(config);
        return associator.sensorToSystemAssociation(sensors, systems, source, removedIds);
    }
    Pairs systemToSystem() {
        TrackAssociator associator(config);
        return associator.systemToSystemAssociation(systems, excludedIds);
    }

    Config config;
    SensorTracks sensors;
    SystemTracks systems;
    std::unordered_set<int> removedIds;
    std::unordered_set<int> excludedIds;
};

class OptimalSensorToSystem : public Association {};

TEST_F(OptimalSensorToSystem, ServesAllInsteadOfTheNearest) {
    // The nearest pair is (0, 0); assigning it would leave system track 1 unassigned.
    systems = {systemAt(0.0, Source::VideoObject, 1), systemAt(1.5, Source::VideoObject, 2)};
    sensors = {trackAt(0.1, Source::Radar, 7), trackAt(-1.5, Source::Radar, 8)};
    EXPECT_EQ(sensorToSystem(Source::Radar), (Pairs{{0, 1}, {1, 0}}));
}

TEST_F(OptimalSensorToSystem, HasNothingToDoWithoutSensorTracks) {
    systems = {systemAt(0.0, Source::VideoObject, 1)};
    EXPECT_THAT(sensorToSystem(Source::Radar), IsEmpty());
}

TEST_F(OptimalSensorToSystem, RefusesNoSystemTracks) {
    sensors = {trackAt(0.1, Source::Radar, 7)};
    EXPECT_THROW(sensorToSystem(Source::Radar), std::out_of_range);
}

TEST_F(OptimalSensorToSystem, LeavesTheResultEmptyWhenTheProblemIsTooBig) {
    config.module.removeClassMismatches = true;
    systems = {systemAt(0.0, Source::VideoObject, 1)};
    sensors = {trackAt(0.0, Source::Radar, 7)};
    TrackAssociator associator(config);
    EXPECT_EQ(associator.sensorToSystemAssociation(sensors, systems, Source::Radar, removedIds),
              (Pairs{{0, 0}}));
    sensors.resize(513, trackAt(0.0, Source::Radar, 8, "car"));
    try {
        associator.sensorToSystemAssociation(sensors, systems, Source::Radar, removedIds);
        FAIL();
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "One of the JVA costMatrix dimensions was too big (>512)");
    }
    EXPECT_THAT(associator.getAssociations(), IsEmpty());
    // The class rule is applied before the solver.
    EXPECT_THAT(removedIds, UnorderedElementsAre(8));
}

TEST_F(OptimalSensorToSystem, RefusesTooManySystemTracksEvenWithoutWork) {
    systems.assign(513, systemAt(0.0, Source::Radar, 1));
    EXPECT_THROW(sensorToSystem(Source::Radar), std::runtime_error);
    systems.resize(512);
    EXPECT_THAT(sensorToSystem(Source::Radar), IsEmpty());
}

TEST_F(OptimalSensorToSystem, KeepsClassesApartWhereAMatchIsInside) {
    systems = {systemAt(0.0, Source::VideoObject, 1)};
    sensors = {trackAt(0.1, Source::Radar, 7, "car"), trackAt(0.5, Source::Radar, 8)};
    EXPECT_EQ(sensorToSystem(Source::Radar), (Pairs{{0, 1}}));
    EXPECT_THAT(removedIds, IsEmpty());
    config.module.removeClassMismatches = true;
    EXPECT_EQ(sensorToSystem(Source::Radar), (Pairs{{0, 1}}));
    EXPECT_THAT(removedIds, UnorderedElementsAre(7));
}

TEST_F(OptimalSensorToSystem, TakesAnotherClassWithoutAMatchInside) {
    config.module.removeClassMismatches = true;
    systems = {systemAt(0.0, Source::VideoObject, 1)};
    sensors = {trackAt(0.1, Source::Radar, 7, "car"), trackAt(9.0, Source::Radar, 8)};
    EXPECT_EQ(sensorToSystem(Source::Radar), (Pairs{{0, 0}}));
    EXPECT_THAT(removedIds, IsEmpty());
}

TEST_F(OptimalSensorToSystem, CountsAHeldTrackAsAMatch) {
    systems = {systemAt(0.0, Source::VideoObject, 1), systemAt(0.2, Source::Radar, 8)};
    sensors = {trackAt(0.1, Source::Radar, 7, "car"), trackAt(0.2, Source::Radar, 8)};
    EXPECT_THAT(sensorToSystem(Source::Radar), IsEmpty());
}

// Every sensor track is held; nevertheless one is inside the gate of a system track of another
// class.
TEST_F(OptimalSensorToSystem, ReportsMismatchesAmongHeldTracks) {
    config.module.removeClassMismatches = true;
    systems = {systemAt(0.0, Source::VideoObject, 1), systemAt(0.2, Source::Radar, 7, "car")};
    systems[0]->updateState(trackAt(0.1, Source::Radar, 8));
    sensors = {trackAt(0.2, Source::Radar, 7, "car"), trackAt(0.1, Source::Radar, 8)};
    EXPECT_THAT(sensorToSystem(Source::Radar), IsEmpty());
    EXPECT_THAT(removedIds, UnorderedElementsAre(7));
}

TEST_F(OptimalSensorToSystem, SharesRadarTracks) {
    systems = {systemAt(0.0, Source::VideoObject, 1), systemAt(0.2, Source::VideoObject, 2),
               systemAt(0.4, Source::Radar, 3)};
    sensors = {trackAt(0.19, Source::Radar, 7)};
    EXPECT_EQ(sensorToSystem(Source::Radar), (Pairs{{1, 0}}));
    config.module.allowRadarToMultiple = true;
    EXPECT_EQ(sensorToSystem(Source::Radar), (Pairs{{0, 0}, {1, 0}}));
}

TEST_F(OptimalSensorToSystem, SharesTheFirstAllowedRadarTrack) {
    config.module.allowRadarToMultiple = true;
    systems = {systemAt(0.0, Source::VideoObject, 1), systemAt(0.0, Source::VideoObject, 2),
               systemAt(0.0, Source::VideoObject, 3)};
    sensors = {trackAt(9.0, Source::Radar, 6), trackAt(0.9, Source::Radar, 7),
               trackAt(0.1, Source::Radar, 8)};
    const Pairs pairs = sensorToSystem(Source::Radar);
    ASSERT_EQ(pairs.size(), 3u);
    EXPECT_EQ(std::count_if(pairs.begin(), pairs.end(), [](auto p) { return p.second == 1; }), 2);
}

TEST_F(OptimalSensorToSystem, DoesNotShareVideoTracks) {
    config.module.allowRadarToMultiple = true;
    systems = {systemAt(0.0, Source::Radar, 1), systemAt(0.2, Source::Radar, 2)};
    sensors = {trackAt(0.19, Source::VideoObject, 7)};
    EXPECT_EQ(sensorToSystem(Source::VideoObject), (Pairs{{1, 0}}));
}

// The position gate ignores an invalid velocity: an allowed pair with an invalid cost.
TEST_F(OptimalSensorToSystem, TakesAnAllowedPairWithoutACostOnlyAsTheLastResort) {
    config.module.splitGating = true;
    config.module.positionGatingDistance = 1.5;
    config.module.velocityMinGatingLimit = 1.0;
    systems = {systemAt(0.0, Source::VideoObject, 1)};
    sensors = {trackAt(0.1, Source::Radar, 7)};
    sensors[0]->state[1] = nan;
    EXPECT_EQ(sensorToSystem(Source::Radar), (Pairs{{0, 0}}));
    sensors.push_back(trackAt(0.9, Source::Radar, 8));
    EXPECT_EQ(sensorToSystem(Source::Radar), (Pairs{{0, 1}}));
}

TEST_F(OptimalSensorToSystem, ThrowsWhereASystemTrackDoesNotKnowTheSource) {
    systems = {systemAt(0.0, Source::VideoObject, 1)};
    sensors = {trackAt(0.1, Source::VideoVura, 7)};
    EXPECT_THROW(sensorToSystem(Source::VideoVura), std::out_of_range);
    systems[0]->sensorTracks[Source::VideoVura];
    EXPECT_EQ(sensorToSystem(Source::VideoVura), (Pairs{{0, 0}}));
}

TEST_F(OptimalSensorToSystem, AsksWhoHoldsATrackAlsoWhereTracksAreShared) {
    config.module.allowRadarToMultiple = true;
    systems = {systemAt(0.0, Source::VideoObject, 1)};
    sensors = {trackAt(0.1, Source::VideoVura, 7)};
    EXPECT_THROW(sensorToSystem(Source::Radar), std::out_of_range);
}

class GreedySensorToSystem : public Association {
protected:
    GreedySensorToSystem() { config.module.useJVA = false; }
};

TEST_F(GreedySensorToSystem, ServesTheEarlierSensorTrackFirst) {
    systems = {systemAt(0.0, Source::VideoObject, 1), systemAt(1.0, Source::VideoObject, 2)};
    sensors = {trackAt(0.2, Source::Radar, 7), trackAt(0.1, Source::Radar, 8),
               trackAt(0.3, Source::Radar, 9)};
    EXPECT_EQ(sensorToSystem(Source::Radar), (Pairs{{0, 0}, {1, 1}}));
}

TEST_F(GreedySensorToSystem, TakesTheFirstOfEqualDistances) {
    systems = {systemAt(1.0, Source::VideoObject, 1), systemAt(-1.0, Source::VideoObject, 2),
               systemAt(1.0, Source::VideoObject, 3)};
    sensors = {trackAt(0.0, Source::Radar, 7)};
    EXPECT_EQ(sensorToSystem(Source::Radar), (Pairs{{0, 0}}));
}

TEST_F(GreedySensorToSystem, HasNothingToDoWithoutTracks) {
    EXPECT_THAT(sensorToSystem(Source::Radar), IsEmpty());
    systems = {systemAt(0.0, Source::VideoObject, 1)};
    EXPECT_THAT(sensorToSystem(Source::Radar), IsEmpty());
}

TEST_F(GreedySensorToSystem, LeavesHeldTracksAndSystemTracksOfThatSourceAlone) {
    systems = {systemAt(0.0, Source::Radar, 1), systemAt(0.0, Source::VideoObject, 2)};
    sensors = {trackAt(0.0, Source::Radar, 1)};
    EXPECT_THAT(sensorToSystem(Source::Radar), IsEmpty());
    sensors = {trackAt(0.0, Source::Radar, 5)};
    EXPECT_EQ(sensorToSystem(Source::Radar), (Pairs{{1, 0}}));
}

TEST_F(GreedySensorToSystem, GivesASharedRadarTrackToEverybodyInside) {
    config.module.allowRadarToMultiple = true;
    systems = {systemAt(0.5, Source::VideoObject, 1), systemAt(9.0, Source::VideoObject, 2),
               systemAt(0.1, Source::VideoObject, 3), systemAt(0.0, Source::Radar, 4)};
    sensors = {trackAt(0.0, Source::Radar, 4), trackAt(0.0, Source::Radar, 5),
               trackAt(9.0, Source::Radar, 6)};
    EXPECT_EQ(sensorToSystem(Source::Radar), (Pairs{{0, 0}, {2, 0}, {1, 2}}));
}

TEST_F(GreedySensorToSystem, GivesVideoToTheNearestAlsoWhenRadarIsShared) {
    config.module.allowRadarToMultiple = true;
    systems = {systemAt(0.5, Source::Radar, 1), systemAt(0.1, Source::Radar, 2)};
    sensors = {trackAt(0.0, Source::VideoObject, 5)};
    EXPECT_EQ(sensorToSystem(Source::VideoObject), (Pairs{{1, 0}}));
}

TEST_F(GreedySensorToSystem, GivesOtherSourcesToNobodyWhenRadarIsShared) {
    systems = {systemAt(0.0, Source::VideoObject, 1)};
    systems[0]->sensorTracks[Source::VideoVura];
    sensors = {trackAt(0.0, Source::VideoVura, 5)};
    EXPECT_EQ(sensorToSystem(Source::VideoVura), (Pairs{{0, 0}}));
    config.module.allowRadarToMultiple = true;
    EXPECT_THAT(sensorToSystem(Source::VideoVura), IsEmpty());
}

TEST_F(GreedySensorToSystem, ReportsNoMismatches) {
    config.module.removeClassMismatches = true;
    systems = {systemAt(0.0, Source::VideoObject, 1)};
    sensors = {trackAt(0.0, Source::Radar, 5, "car"), trackAt(0.1, Source::Radar, 6)};
    EXPECT_EQ(sensorToSystem(Source::Radar), (Pairs{{0, 0}}));
    EXPECT_THAT(removedIds, IsEmpty());
}

TEST_F(GreedySensorToSystem, HasNoLimitOfSize) {
    systems.assign(600, systemAt(0.0, Source::VideoObject, 1));
    sensors = {trackAt(0.0, Source::Radar, 5)};
    EXPECT_EQ(sensorToSystem(Source::Radar), (Pairs{{0, 0}}));
}

class OptimalSystemToSystem : public Association {
protected:
    /// @return a system track with a start time
    static std::shared_ptr<SystemTrack> startedAt(double time, double u, Source source, int id) {
        auto system = systemAt(u, source, id);
        system->startTime = time;
        return system;
    }
};

TEST_F(OptimalSystemToSystem, PairsTheOlderWithTheYounger) {
    systems = {startedAt(5.0, 0.0, Source::Radar, 1), startedAt(4.0, 0.1, Source::VideoObject, 2)};
    EXPECT_EQ(systemToSystem(), (Pairs{{1, 0}}));
    systems[1]->startTime = 6.0;
    EXPECT_EQ(systemToSystem(), (Pairs{{0, 1}}));
    systems[1]->startTime = 5.0;
    EXPECT_THAT(systemToSystem(), IsEmpty());
}

TEST_F(OptimalSystemToSystem, HasNothingForASingleTrack) {
    systems = {startedAt(5.0, 0.0, Source::Radar, 1)};
    EXPECT_THAT(systemToSystem(), IsEmpty());
}

TEST_F(OptimalSystemToSystem, RefusesNoTracksAndTooMany) {
    EXPECT_THROW(systemToSystem(), std::out_of_range);
    systems.assign(513, startedAt(5.0, 0.0, Source::Radar, 1));
    EXPECT_THROW(systemToSystem(), std::runtime_error);
    systems.resize(512);
    EXPECT_THAT(systemToSystem(), IsEmpty());
}

TEST_F(OptimalSystemToSystem, OrdersThePairsByCost) {
    systems = {startedAt(1.0, 0.0, Source::VideoObject, 1), startedAt(2.0, 0.9, Source::Radar, 2),
               startedAt(1.0, 50.0, Source::VideoObject, 3),
               startedAt(2.0, 50.3, Source::Radar, 4)};
    EXPECT_EQ(systemToSystem(), (Pairs{{2, 3}, {0, 1}}));
}

TEST_F(OptimalSystemToSystem, KeepsTheLaterOfTwoPairsOfOneCost) {
    systems = {startedAt(1.0, 0.0, Source::VideoObject, 1), startedAt(2.0, 0.5, Source::Radar, 2),
               startedAt(1.0, 50.0, Source::VideoObject, 3),
               startedAt(2.0, 50.5, Source::Radar, 4)};
    EXPECT_EQ(systemToSystem(), (Pairs{{2, 3}}));
}

// The solver may use a track as row of one pair and as column of another; the cheaper pair is kept.
TEST_F(OptimalSystemToSystem, KeepsTheLaterOfTwoPairsWithoutACost) {
    // No speed reaches the limit above which velocity matters for the gate; where the velocity is
    // NaN or the distance infinite, the pair has no valid cost.
    config.module.splitGating = true;
    config.module.positionGatingDistance = 2.0;
    config.module.velocityMinGatingLimit = 1e6;
    config.module.velocityGatingSimilarity = 1.0;
    systems = {startedAt(2.0, 0.1, Source::Radar, 1), startedAt(1.0, 0.0, Source::VideoObject, 2),
               startedAt(2.0, 50.3, Source::Radar, 3),
               startedAt(1.0, 50.0, Source::VideoObject, 4)};
    systems[1]->state[1] = nan;
    EXPECT_EQ(systemToSystem(), (Pairs{{3, 2}}));
}

TEST_F(OptimalSystemToSystem, UsesEveryTrackOnce) {
    systems = {startedAt(1.0, 0.0, Source::VideoObject, 1), startedAt(2.0, 0.5, Source::Radar, 2),
               startedAt(3.0, 0.7, Source::VideoObject, 3)};
    EXPECT_EQ(systemToSystem(), (Pairs{{1, 2}}));
}

TEST_F(OptimalSystemToSystem, LeavesExcludedIdsOut) {
    systems = {startedAt(5.0, 0.0, Source::Radar, 1), startedAt(4.0, 0.1, Source::VideoObject, 2)};
    for (const int id : {1, 2}) {
        excludedIds = {id};
        EXPECT_THAT(systemToSystem(), IsEmpty());
    }
}

class GreedySystemToSystem : public OptimalSystemToSystem {
protected:
    GreedySystemToSystem() { config.module.useJVA = false; }
};

TEST_F(GreedySystemToSystem, ReturnsBothOrientations) {
    systems = {startedAt(1.0, 0.0, Source::VideoObject, 1), startedAt(2.0, 0.5, Source::Radar, 2)};
    EXPECT_EQ(systemToSystem(), (Pairs{{1, 0}, {0, 1}}));
}

TEST_F(GreedySystemToSystem, NeedsTheYoungerRadarTrack) {
    systems = {startedAt(2.0, 0.0, Source::VideoObject, 1), startedAt(2.0, 0.5, Source::Radar, 2)};
    EXPECT_THAT(systemToSystem(), IsEmpty());
    systems[1]->startTime = 1.0;
    EXPECT_THAT(systemToSystem(), IsEmpty());
}

// When the nearest track cannot be paired, the next one is not tried, and the nearest stays free
// for others.
TEST_F(GreedySystemToSystem, DoesNotLookBeyondTheNearest) {
    systems = {startedAt(1.0, 0.5, Source::VideoObject, 1),
               startedAt(9.0, 0.0, Source::VideoObject, 2), startedAt(5.0, 0.0, Source::Radar, 3),
               startedAt(10.0, 0.1, Source::Radar, 4)};
    EXPECT_EQ(systemToSystem(), (Pairs{{3, 1}, {1, 3}}));
    systems[1] = startedAt(0.0, 0.0, Source::VideoVura, 2);
    EXPECT_THAT(systemToSystem(), IsEmpty());
    systems = {startedAt(1.0, 0.5, Source::VideoObject, 1),
               startedAt(0.0, 0.0, Source::VideoObject, 2), startedAt(5.0, 0.0, Source::Radar, 3)};
    excludedIds = {2};
    EXPECT_THAT(systemToSystem(), IsEmpty());
}

TEST_F(GreedySystemToSystem, LetsTheEarlierRadarTrackChoose) {
    systems = {startedAt(1.0, 0.0, Source::VideoObject, 1), startedAt(2.0, 0.5, Source::Radar, 2),
               startedAt(2.0, 0.1, Source::Radar, 3), startedAt(1.0, 1.0, Source::VideoObject, 4)};
    EXPECT_EQ(systemToSystem(), (Pairs{{1, 0}, {0, 1}, {2, 3}, {3, 2}}));
}

TEST_F(GreedySystemToSystem, LeavesExcludedIdsAndFusedTracksOut) {
    systems = {startedAt(1.0, 0.0, Source::VideoObject, 1), startedAt(2.0, 0.5, Source::Radar, 2)};
    for (const int id : {1, 2}) {
        excludedIds = {id};
        EXPECT_THAT(systemToSystem(), IsEmpty());
    }
    excludedIds.clear();
    systems[1]->updateState(trackAt(0.5, Source::VideoObject, 9));
    EXPECT_THAT(systemToSystem(), IsEmpty());
}

TEST_F(GreedySystemToSystem, TakesTheIdOfThePairedRadarTrackToo) {
    // The other video track has the same id as the radar track that is paired first.
    systems = {startedAt(5.0, 0.0, Source::Radar, 7), startedAt(1.0, 0.1, Source::VideoObject, 2),
               startedAt(5.0, 0.6, Source::Radar, 3), startedAt(1.0, 0.7, Source::VideoObject, 7)};
    EXPECT_EQ(systemToSystem(), (Pairs{{0, 1}, {1, 0}}));
    systems[3]->id = 8;
    EXPECT_EQ(systemToSystem(), (Pairs{{0, 1}, {1, 0}, {2, 3}, {3, 2}}));
}

TEST_F(GreedySystemToSystem, HasNothingToDoWithoutTracks) {
    EXPECT_THAT(systemToSystem(), IsEmpty());
}

TEST_F(Association, AsksAUsersOwnSubclassForItsClass) {
    class Labelled : public Track {
    public:
        using Track::Track;
        std::string getClassName() const override { return "human_face"; }
    };
    systems = {systemAt(0.0, Source::VideoObject, 1)};
    sensors = {std::make_shared<Labelled>(7)};
    sensors[0]->covariance.setIdentity();
    sensors[0]->source = Source::Radar;
    EXPECT_THAT(sensorToSystem(Source::Radar), IsEmpty());  // not supported
    sensors[0] = trackAt(0.0, Source::Radar, 7);
    EXPECT_EQ(sensorToSystem(Source::Radar), (Pairs{{0, 0}}));
}

TEST_F(Association, KeepsItsResultWhenMoved) {
    systems = {systemAt(0.0, Source::VideoObject, 1)};
    sensors = {trackAt(0.0, Source::Radar, 7)};
    TrackAssociator first(config);
    first.sensorToSystemAssociation(sensors, systems, Source::Radar, removedIds);
    TrackAssociator second(std::move(first));
    EXPECT_EQ(second.getAssociations(), (Pairs{{0, 0}}));
    TrackAssociator third((Config()));
    third = std::move(second);
    EXPECT_EQ(third.getAssociations(), (Pairs{{0, 0}}));
    EXPECT_EQ(third.sensorToSystemAssociation(sensors, systems, Source::Radar, removedIds),
              (Pairs{{0, 0}}));
}

TEST_F(Association, ClearsTheResultBefore) {
    systems = {systemAt(0.0, Source::VideoObject, 1)};
    sensors = {trackAt(0.0, Source::Radar, 7)};
    for (const bool optimal : {true, false}) {
        config.module.useJVA = optimal;
        TrackAssociator associator(config);
        for (int k = 0; k < 2; ++k) {
            EXPECT_EQ(
                associator.sensorToSystemAssociation(sensors, systems, Source::Radar, removedIds),
                (Pairs{{0, 0}}));
        }
        EXPECT_THAT(associator.systemToSystemAssociation(systems, excludedIds), IsEmpty());
    }
}

/// Every combination of the four switches, by its bits.
class WarmAssociation : public testing::TestWithParam<int> {};

TEST_P(WarmAssociation, DoesNotAllocate) {
    RandomEstimates random(71);
    Config config = makeSceneConfig(random);
    config.module.splitGating = (GetParam() & 1) != 0;
    config.module.useJVA = (GetParam() & 2) != 0;
    config.module.allowRadarToMultiple = (GetParam() & 4) != 0;
    config.module.removeClassMismatches = (GetParam() & 8) != 0;
    for (const bool onGrid : {false, true}) {
        SceneSettings settings;
        settings.systems = 40;
        settings.sensors = 40;
        settings.onGrid = onGrid;
        settings.spread = 6.0;
        const Scene scene = makeScene(settings, random);
        TrackAssociator associator(config);
        std::unordered_set<int> removedIds;
        const auto associate = [&] {
            const std::size_t pairs = associator
                                          .sensorToSystemAssociation(scene.sensors, scene.systems,
                                                                     scene.source, removedIds)
                                          .size();
            return pairs +
                   associator.systemToSystemAssociation(scene.systems, scene.excludedIds).size();
        };
        EXPECT_GT(associate(), 0u);
        const AllocationScope allocations;
        associate();
        EXPECT_EQ(allocations.count(), 0u);
    }
}

INSTANTIATE_TEST_SUITE_P(AllSwitches, WarmAssociation, testing::Range(0, 16));

}  // namespace
