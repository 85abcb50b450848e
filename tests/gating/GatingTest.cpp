// SPDX-License-Identifier: Apache-2.0
// TrackAssociator: the gate and the class predicates.
#include <veskar/TrackAssociator.h>

#include "support/Constants.h"
#include "support/SyslogCapture.h"
#include "support/TrackFactory.h"

#include <cmath>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace VeskarTest;
using testing::ElementsAre;
using testing::IsEmpty;
using Veskar::Config;
using Veskar::GatingResult;
using Veskar::Source;
using Veskar::Track;
using Veskar::TrackAssociator;

namespace {

using VeskarTest::infinite;
using VeskarTest::nan;

double justAbove(double x) {
    return std::nextafter(x, infinite);
}
double justBelow(double x) {
    return std::nextafter(x, -infinite);
}

/// Two well-conditioned tracks inside every gate, unless a test changes something.
class Gating : public testing::Test {
protected:
    Gating() {
        RandomEstimates random(51);
        system = *makeTrack(Source::VideoObject, 1, random.estimate());
        sensor = *makeTrack(Source::Radar, 2, random.estimate());
        config.module.gatingDistance = 1e3;
        config.module.positionGatingDistance = 1e3;
        config.module.velocityGatingSimilarity = -2.0;
        config.module.velocityMinGatingLimit = 0.0;
        config.module.stationaryBlockingMinSpeed = 1e3;
    }

    GatingResult check() { return TrackAssociator(config).checkGating(system, sensor); }
    bool passes() { return check().passed; }

    Config config;
    Track system = Track(1);
    Track sensor = Track(2);
};

class CombinedGating : public Gating {};

TEST_F(CombinedGating, ReportsTheStatisticalDistance) {
    EXPECT_EQ(check().distance, system.statisticalDistance(sensor));
    EXPECT_TRUE(passes());
}

TEST_F(CombinedGating, PassesBelowTheLimitOnly) {
    const double distance = system.statisticalDistance(sensor);
    config.module.gatingDistance = justAbove(distance);
    EXPECT_TRUE(passes());
    config.module.gatingDistance = distance;
    EXPECT_FALSE(passes());
    EXPECT_EQ(check().distance, distance);
}

TEST_F(CombinedGating, FailsWithoutADistance) {
    sensor.state[3] = nan;
    EXPECT_FALSE(passes());
    EXPECT_TRUE(std::isnan(check().distance));
    config.module.gatingDistance = infinite;
    EXPECT_FALSE(passes());
}

TEST_F(CombinedGating, TellsTheDistanceOfPairsFarOutside) {
    sensor.state[0] = 1e6;
    config.module.gatingDistance = 1.0;
    EXPECT_FALSE(passes());
    EXPECT_EQ(check().distance, system.statisticalDistance(sensor));
}

TEST_F(CombinedGating, HasNoStationaryVeto) {
    config.module.stationaryBlockingMinSpeed = -1.0;
    config.module.stationaryBlockingMaxUVSpeed = 1e3;
    config.module.stationaryBlockingMinVideoAge = -2.0;
    config.detectionPriority.vodHeightFractionLimit = -1.0;
    sensor.speed = 10.0;
    EXPECT_TRUE(passes());
}

TEST_F(Gating, RefusesUnsupportedClassesInBothDirections) {
    for (const bool split : {false, true}) {
        config.module.splitGating = split;
        for (const char* name : {"human_face", "Human", "", "dog"}) {
            system.className = name;
            EXPECT_EQ(check().distance, 9999.0);
            EXPECT_FALSE(passes());
            system.className = "human";
            sensor.className = name;
            EXPECT_EQ(check().distance, 9999.0);
            EXPECT_FALSE(passes());
            sensor.className = "human";
            EXPECT_TRUE(passes());
        }
    }
}

TEST_F(Gating, KnowsTheSupportedClasses) {
    const TrackAssociator associator(config);
    for (const char* name : {"human", "vehicle", "car", "truck", "bus", "motorcycle_bicycle",
                             "vehicle_other", "bike", "animal", "unknown"}) {
        system.className = name;
        EXPECT_TRUE(associator.isSupportedClass(system)) << name;
    }
    for (const char* name :
         {"human_head", "human_face", "hat_other", "missing_hardhat", "license_plate", "Car", ""}) {
        system.className = name;
        EXPECT_FALSE(associator.isSupportedClass(system)) << name;
    }
}

class SplitGating : public Gating {
protected:
    SplitGating() {
        config.module.splitGating = true;
        similarity = system.velocitySimilarity(sensor, 0.0).second;
        position = system.positionStatisticalDistance(sensor);
    }

    double similarity;
    double position;
};

TEST_F(SplitGating, PassesBelowThePositionLimitOnly) {
    config.module.positionGatingDistance = justAbove(position);
    EXPECT_TRUE(passes());
    config.module.positionGatingDistance = position;
    EXPECT_FALSE(passes());
}

TEST_F(SplitGating, PassesAboveTheSimilarityOnly) {
    config.module.velocityGatingSimilarity = justBelow(similarity);
    EXPECT_TRUE(passes());
    config.module.velocityGatingSimilarity = similarity;
    EXPECT_FALSE(passes());
}

TEST_F(SplitGating, IgnoresTheVelocitiesOfSlowTracks) {
    const double speedSum =
        std::hypot(system.state[1], system.state[3]) + std::hypot(sensor.state[1], sensor.state[3]);
    config.module.velocityGatingSimilarity = 0.999999;
    config.module.velocityMinGatingLimit = 0.999 * speedSum;
    EXPECT_FALSE(passes());
    config.module.velocityMinGatingLimit = 1.001 * speedSum;
    EXPECT_TRUE(passes());
}

TEST_F(SplitGating, CombinesPositionAndVelocityInTheDistance) {
    config.module.positionGatingDistance = 4.0;
    config.module.velocityGatingSimilarity = 0.25;
    EXPECT_DOUBLE_EQ(check().distance, position / 4.0 + (1.0 - similarity) / 0.75);
    // Also when the velocity does not affect the verdict, and when the verdict is negative.
    config.module.velocityMinGatingLimit = 1e6;
    EXPECT_DOUBLE_EQ(check().distance, position / 4.0 + (1.0 - similarity) / 0.75);
    config.module.positionGatingDistance = 1e-3;
    EXPECT_DOUBLE_EQ(check().distance, position / 1e-3 + (1.0 - similarity) / 0.75);
    EXPECT_FALSE(passes());
}

TEST_F(SplitGating, DividesByZeroAtASimilarityLimitOfOne) {
    config.module.velocityGatingSimilarity = 1.0;
    config.module.velocityMinGatingLimit = 1e6;
    EXPECT_EQ(check().distance, infinite);
    EXPECT_TRUE(passes());
    sensor.state[1] = sensor.state[3] = nan;
    EXPECT_TRUE(std::isnan(check().distance));
    EXPECT_TRUE(passes());
}

/// A fast radar track and a large video track that has been stationary for long.
class StationaryVeto : public Gating {
protected:
    StationaryVeto() {
        config.module.splitGating = true;
        config.module.stationaryBlockingMinSpeed = 2.5;
        config.module.stationaryBlockingMaxUVSpeed = 0.25;
        config.module.stationaryBlockingMinVideoAge = 3.0;
        config.detectionPriority.vodHeightFractionLimit = 0.125;
        sensor.speed = justAbove(2.5);
        system.state[1] = 0.15;
        system.state[3] = justBelow(0.2);  // speed 0.25
        system.startTime = 0.0;
        system.time = justAbove(3.0);
        system.boundingBox[3] = justAbove(0.25);
    }
};

TEST_F(StationaryVeto, BlocksWhenAllConditionsHold) {
    EXPECT_FALSE(passes());
    EXPECT_EQ(check().distance, system.positionStatisticalDistance(sensor) / 1e3 +
                                    (1.0 - system.velocitySimilarity(sensor, 0.0).second) / 3.0);
}

TEST_F(StationaryVeto, NeedsTheSpeed) {
    sensor.speed = 2.5;
    EXPECT_TRUE(passes());
    sensor.speed = nan;
    EXPECT_TRUE(passes());
    sensor.speed.reset();
    EXPECT_TRUE(passes());
}

TEST_F(StationaryVeto, NeedsTheAge) {
    system.time = 3.0;
    EXPECT_TRUE(passes());
    system.time = 100.0;
    EXPECT_FALSE(passes());
    system.source = Source::VideoVura;  // has no age
    EXPECT_TRUE(passes());
}

TEST_F(StationaryVeto, NeedsAStandingTrack) {
    system.state[3] = justAbove(0.2);
    EXPECT_TRUE(passes());
}

TEST_F(StationaryVeto, NeedsALargeBox) {
    system.boundingBox[3] = 0.25;
    EXPECT_TRUE(passes());
}

TEST_F(StationaryVeto, ActsWhateverTheVelocityGateSays) {
    config.module.velocityMinGatingLimit = 1e6;
    EXPECT_FALSE(passes());
}

TEST_F(StationaryVeto, LooksAtTheSensorTrackWhereTheSystemTrackHasTheSpeed) {
    std::swap(system, sensor);
    EXPECT_FALSE(passes());
    // The speed of the sensor track and the age of the system track are then irrelevant.
    sensor.speed = 0.0;
    EXPECT_FALSE(passes());
    system.speed = 0.0;
    sensor.speed = 100.0;
    EXPECT_TRUE(passes());
}

TEST_F(StationaryVeto, AsksASystemTrackThroughItsSensorTracks) {
    auto video = std::make_shared<Track>(system);
    const auto fused = makeSystemTrack(video);
    TrackAssociator associator(config);
    EXPECT_FALSE(associator.checkGating(*fused, sensor).passed);
    video->time = video->startTime + 1.0;  // the age of a system track is its video track's
    EXPECT_TRUE(associator.checkGating(*fused, sensor).passed);
}

class ClassAgreement : public testing::Test {
protected:
    static std::shared_ptr<Track> make(Source source, int id, const char* name) {
        Report report;
        report.source = source;
        report.id = id;
        report.className = name;
        return makeTrack(report);
    }

    bool match(const Veskar::SystemTrack& system, const Track& track, Source source) const {
        return associator.haveMatchingClasses(system, track, source);
    }

    SyslogCapture log;
    TrackAssociator associator{Config()};
};

TEST_F(ClassAgreement, ComparesGroupsOfRadarAndVideo) {
    const auto video = makeSystemTrack(make(Source::VideoObject, 1, "car"));
    EXPECT_TRUE(match(*video, *make(Source::Radar, 5, "truck"), Source::Radar));
    EXPECT_FALSE(match(*video, *make(Source::Radar, 5, "human"), Source::Radar));
    const auto radar = makeSystemTrack(make(Source::Radar, 1, "human"));
    EXPECT_TRUE(match(*radar, *make(Source::VideoObject, 5, "human_face"), Source::VideoObject));
    EXPECT_FALSE(match(*radar, *make(Source::VideoObject, 5, "human_head"), Source::VideoObject));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ClassAgreement, FailsForClassesWithoutAGroup) {
    const auto video = makeSystemTrack(make(Source::VideoObject, 1, "bike"));
    EXPECT_FALSE(match(*video, *make(Source::Radar, 5, "bike"), Source::Radar));
    const auto other = makeSystemTrack(make(Source::VideoObject, 1, "dog"));
    EXPECT_FALSE(match(*other, *make(Source::Radar, 5, "dog"), Source::Radar));
}

TEST_F(ClassAgreement, AsksTheTrackWithTheSmallestId) {
    const auto system = makeSystemTrack(make(Source::VideoObject, 7, "car"));
    system->updateState(make(Source::VideoObject, 3, "human"));
    EXPECT_TRUE(match(*system, *make(Source::Radar, 5, "human"), Source::Radar));
    EXPECT_FALSE(match(*system, *make(Source::Radar, 5, "car"), Source::Radar));
}

TEST_F(ClassAgreement, ComparesOtherSourcesWithTheRadarSide) {
    const auto system = makeSystemTrack(make(Source::VideoObject, 1, "car"));
    system->updateState(make(Source::Radar, 2, "human"));
    EXPECT_TRUE(match(*system, *make(Source::VideoVura, 5, "human"), Source::VideoVura));
    EXPECT_FALSE(match(*system, *make(Source::VideoVura, 5, "car"), Source::VideoVura));
    EXPECT_TRUE(match(*system, *make(Source::System, 5, "human"), Source::System));
}

TEST_F(ClassAgreement, ReportsAMissingSide) {
    const auto video = makeSystemTrack(make(Source::VideoObject, 1, "car"));
    EXPECT_FALSE(match(*video, *make(Source::VideoObject, 5, "car"), Source::VideoObject));
    EXPECT_FALSE(match(*video, *make(Source::VideoVura, 5, "car"), Source::VideoVura));
    const auto radar = makeSystemTrack(make(Source::Radar, 1, "car"));
    EXPECT_FALSE(match(*radar, *make(Source::Radar, 5, "car"), Source::Radar));
    EXPECT_THAT(log.errors(),
                ElementsAre("System track did not have sensor track from sensor 0\n",
                            "System track did not have sensor track from sensor 1\n",
                            "System track did not have sensor track from sensor 2\n"));
}

class Occupied : public testing::Test {
protected:
    TrackAssociator associator{Config()};
    std::vector<std::shared_ptr<Veskar::SystemTrack>> systems = {
        makeSystemTrack(makeTrack(Source::VideoObject, 1)),
        makeSystemTrack(makeTrack(Source::VideoVura, 2)),
        makeSystemTrack(makeTrack(Source::Radar, 3))};
};

TEST_F(Occupied, IsATrackOfThatSourceAndId) {
    EXPECT_TRUE(associator.isOccupied(*makeTrack(Source::VideoObject, 1), systems));
    EXPECT_TRUE(associator.isOccupied(*makeTrack(Source::Radar, 3), systems));
    EXPECT_FALSE(associator.isOccupied(*makeTrack(Source::VideoObject, 3), systems));
    EXPECT_FALSE(associator.isOccupied(*makeTrack(Source::Radar, 1), systems));
    EXPECT_FALSE(associator.isOccupied(*makeTrack(Source::Radar, 3), {}));
}

using OccupiedDeathTest = Occupied;

TEST_F(OccupiedDeathTest, StopsAtANullSystemTrack) {
    EXPECT_DEATH((void)associator.isOccupied(*makeTrack(Source::Radar, 3), {nullptr}),
                 "get\\(\\) != nullptr");
}

TEST_F(Occupied, NeedsAMapForTheSourceUntilItsHolderIsFound) {
    const auto vura = makeTrack(Source::VideoVura, 2);
    EXPECT_THROW((void)associator.isOccupied(*vura, systems), std::out_of_range);
    std::swap(systems[0], systems[1]);
    EXPECT_TRUE(associator.isOccupied(*vura, systems));
    EXPECT_FALSE(associator.isOccupied(*vura, {}));
}

}  // namespace
