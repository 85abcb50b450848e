// SPDX-License-Identifier: Apache-2.0
// The sensor tracks of a system track.
#include <veskar/SystemTrack.h>

#include "support/Constants.h"
#include "support/EigenMatchers.h"
#include "support/TrackFactory.h"

#include <cmath>
#include <limits>
#include <stdexcept>
#include <type_traits>

#include <gtest/gtest.h>

namespace {

using VeskarTest::nan;

using testing::ElementsAre;
using testing::Key;
using Veskar::Source;
using Veskar::SystemTrack;
using Veskar::Track;
using VeskarTest::IsApprox;
using VeskarTest::makeSystemTrack;
using VeskarTest::makeTrack;
using VeskarTest::RandomEstimates;

static_assert(std::is_base_of_v<Track, SystemTrack>);
static_assert(alignof(SystemTrack) == 16);
static_assert(std::is_same_v<decltype(SystemTrack::sensorTracks),
                             std::map<Source, std::map<std::int32_t, std::shared_ptr<Track>>>>);

std::shared_ptr<Track> randomTrack(RandomEstimates& random, Source source, int id) {
    return makeTrack(source, id, random.estimate());
}

const std::shared_ptr<Track>& held(const SystemTrack& system, Source source, int id) {
    return system.getSensorTracks(source).at(id);
}

/// Whether the call changes the estimate.
template <typename Call>
bool changesEstimate(SystemTrack& system, Call call) {
    const Veskar::StateVector x = system.state;
    const Veskar::StateMatrix P = system.covariance;
    call();
    return system.state != x || system.covariance != P;
}

TEST(SystemTrack, TakesOverItsFirstTrack) {
    RandomEstimates random(501);
    const auto video = randomTrack(random, Source::VideoObject, 7);
    video->startTime = 8.0;
    video->boundingBox << 0.1, 0.2, 0.3, 0.4;
    video->startPosition << -0.5, 0.5;
    video->className = "human";
    video->classProbability = 0.75;
    video->colorName = "red";
    video->isConfident = false;
    video->coastingTime = 0.25;
    video->probability = 3.0;
    video->coordinateSystem = Veskar::CoordinateSystem::GroundPlane;
    const SystemTrack system(video, 42);

    EXPECT_EQ(system.id, 42);
    EXPECT_EQ(system.source, Source::System);
    EXPECT_EQ(system.coordinateSystem, Veskar::CoordinateSystem::ImagePlaneRange);
    EXPECT_EQ(system.state, video->state);
    EXPECT_EQ(system.covariance, video->covariance);
    EXPECT_EQ(system.time, 10.0);
    EXPECT_EQ(system.startTime, 8.0);
    EXPECT_EQ(system.systemStartTime, 8.0);
    EXPECT_EQ(system.boundingBox, video->boundingBox);
    EXPECT_EQ(system.startPosition, video->startPosition);
    EXPECT_EQ(system.className, "human");
    EXPECT_EQ(system.classProbability, 0.75);
    EXPECT_TRUE(system.classVoted);

    EXPECT_EQ(system.colorName, "unknown");
    EXPECT_FALSE(system.colorVoted);
    EXPECT_FALSE(system.upperClothingColorVoted);
    EXPECT_FALSE(system.lowerClothingColorVoted);
    EXPECT_TRUE(system.isConfident);
    EXPECT_EQ(system.coastingTime, 0.0);
    EXPECT_EQ(system.probability, 0.0);
    EXPECT_FALSE(system.speed.has_value());
    EXPECT_THAT(system.trackProbabilityHistory, ElementsAre(0.5, 0.5, 0.5, 0.5, 0.5));
    EXPECT_EQ(held(system, Source::VideoObject, 7), video);
}

TEST(SystemTrack, StartsWithoutAnnotationsAndUnconfirmed) {
    const SystemTrack system(makeTrack(Source::Radar, 1), 42);
    EXPECT_THAT(system.reasonLatches, ElementsAre(false, false, false, false, false, false));
    EXPECT_EQ(system.framesWithoutVideo, 0);
    EXPECT_EQ(system.annotationLabel, "");
    EXPECT_TRUE(system.annotatedRadarIds.empty());
    EXPECT_FALSE(system.isConfirmed);
}

TEST(SystemTrack, AlwaysHasMapsForRadarAndVideoObjects) {
    const SystemTrack system(makeTrack(Source::VideoVura, 1), 42);
    EXPECT_THAT(system.sensorTracks,
                ElementsAre(Key(Source::VideoObject), Key(Source::VideoVura), Key(Source::Radar)));
    EXPECT_TRUE(system.hasSource(Source::VideoObject));
    EXPECT_FALSE(system.hasTracks(Source::VideoObject));
    EXPECT_TRUE(system.hasSource(Source::Radar));
    EXPECT_FALSE(system.hasTracks(Source::Radar));
    EXPECT_TRUE(system.hasTracks(Source::VideoVura));

    const SystemTrack radarOnly(makeTrack(Source::Radar, 1), 42);
    EXPECT_FALSE(radarOnly.hasSource(Source::VideoVura));
    EXPECT_FALSE(radarOnly.hasTracks(Source::VideoVura));
    EXPECT_TRUE(radarOnly.hasTracks(Source::Radar));
}

TEST(SystemTrack, RefusesToAnswerForASourceItNeverHad) {
    const SystemTrack system(makeTrack(Source::Radar, 1), 42);
    EXPECT_THAT([&] { system.getSensorTracks(Source::VideoVura); },
                testing::ThrowsMessage<std::out_of_range>("map::at"));
    EXPECT_TRUE(system.getSensorTracks(Source::VideoObject).empty());
    EXPECT_EQ(&system.getSensorTracks(Source::Radar), &system.sensorTracks.at(Source::Radar));
}

TEST(SystemTrack, CopiesShareTheSensorTracks) {
    SystemTrack original(makeTrack(Source::Radar, 1), 42);
    const SystemTrack copy = original;
    original.setCoastingTimeTracks(0.2);
    EXPECT_EQ(held(copy, Source::Radar, 1)->coastingTime, 0.2);
}

TEST(SystemTrackGetters, TakeTheAgeFromTheFirstVideoObject) {
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
    EXPECT_EQ(system->getAge(), -1.0);
    for (const int id : {9, 4}) {
        const auto video = makeTrack(Source::VideoObject, id);
        video->startTime = 10.0 - id;
        system->updateState(video);
    }
    EXPECT_EQ(system->getAge(), 4.0);
}

TEST(SystemTrackGetters, TakeMotionAndPlaceFromTheFirstRadarTrack) {
    const auto system = makeSystemTrack(makeTrack(Source::VideoObject, 1));
    for (const int id : {9, 4, 6}) {
        const auto radar = makeTrack(Source::Radar, id);
        radar->speed = id;
        radar->direction = Eigen::Vector2d(id, -id);
        radar->location = SphericalCoordinate{10.0 * id, 1.0, 2.0};
        radar->geoLocation = Dbus::GeoLocation::Position{0.0, 0.0, 1.0 * id, true};
        system->updateState(radar);
    }
    EXPECT_EQ(system->getSpeed(), 4.0);
    EXPECT_EQ(system->getDirection(), Eigen::Vector2d(4.0, -4.0));
    EXPECT_EQ(system->getLocation()->range, 40.0);
    EXPECT_EQ(system->getGeoLocation()->altitude, 4.0);
}

TEST(SystemTrackGetters, HaveNoMotionAndPlaceWithoutRadar) {
    const auto video = makeTrack(Source::VideoObject, 1);
    video->speed = 3.0;
    video->direction = Eigen::Vector2d(1.0, 0.0);
    video->location = SphericalCoordinate{};
    video->geoLocation = Dbus::GeoLocation::Position{};
    const auto system = makeSystemTrack(video);
    system->speed = 5.0;
    EXPECT_FALSE(system->getSpeed().has_value());
    EXPECT_FALSE(system->getDirection().has_value());
    EXPECT_FALSE(system->getLocation().has_value());
    EXPECT_FALSE(system->getGeoLocation().has_value());
}

TEST(SystemTrackCoasting, AddsToEveryTrackOfEverySource) {
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
    for (const Source source :
         {Source::Radar, Source::VideoVura, Source::VideoObject, Source::System}) {
        system->updateState(makeTrack(source, 5));
    }
    held(*system, Source::Radar, 5)->coastingTime = 1.0;
    system->setCoastingTimeTracks(0.25);
    system->setCoastingTimeTracks(0.5);
    EXPECT_EQ(held(*system, Source::Radar, 1)->coastingTime, 0.75);
    EXPECT_EQ(held(*system, Source::Radar, 5)->coastingTime, 1.75);
    EXPECT_EQ(held(*system, Source::VideoVura, 5)->coastingTime, 0.75);
    EXPECT_EQ(held(*system, Source::VideoObject, 5)->coastingTime, 0.75);
    EXPECT_EQ(held(*system, Source::System, 5)->coastingTime, 0.75);
    EXPECT_EQ(system->coastingTime, 0.0);
}

TEST(SystemTrackCoasting, BeginsAboveZero) {
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
    system->updateState(makeTrack(Source::Radar, 2));
    EXPECT_FALSE(system->hasCoastingTracks(Source::Radar));
    EXPECT_FALSE(system->hasCoastingTracks(Source::VideoObject));
    EXPECT_FALSE(system->hasCoastingTracks(Source::VideoVura));
    held(*system, Source::Radar, 2)->coastingTime = std::numeric_limits<double>::denorm_min();
    EXPECT_TRUE(system->hasCoastingTracks(Source::Radar));
    EXPECT_FALSE(system->hasCoastingTracks(Source::VideoObject));
}

TEST(SystemTrackCoasting, IsTooLongAboveTheLimitOnly) {
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
    system->updateState(makeTrack(Source::Radar, 2));
    held(*system, Source::Radar, 2)->coastingTime = 0.3;
    EXPECT_FALSE(system->hasCoastingTracksTooLong(Source::Radar, 0.3));
    EXPECT_TRUE(system->hasCoastingTracksTooLong(Source::Radar, std::nextafter(0.3, 0.0)));
    EXPECT_FALSE(system->hasCoastingTracksTooLong(Source::VideoObject, -1.0));
    EXPECT_FALSE(system->hasCoastingTracksTooLong(Source::VideoVura, -1.0));
    held(*system, Source::Radar, 2)->coastingTime = nan;
    EXPECT_FALSE(system->hasCoastingTracksTooLong(Source::Radar, 0.3));
}

TEST(SystemTrackPruning, ByIdTakesTheContributionOut) {
    RandomEstimates random(502);
    const auto first = randomTrack(random, Source::Radar, 1);
    const auto system = makeSystemTrack(first);
    system->updateState(randomTrack(random, Source::VideoObject, 2));
    system->pruneSensorTracksByIdx(Source::VideoObject, 2);
    EXPECT_FALSE(system->hasTracks(Source::VideoObject));
    EXPECT_TRUE(system->hasSource(Source::VideoObject));
    EXPECT_THAT(system->state, IsApprox(first->state, 1e-12));
    EXPECT_THAT(system->covariance, IsApprox(first->covariance, 1e-12));
}

TEST(SystemTrackPruning, ByIdReleasesTheTrack) {
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
    const auto video = makeTrack(Source::VideoObject, 2);
    system->updateState(video);
    EXPECT_EQ(video.use_count(), 2);
    system->pruneSensorTracksByIdx(Source::VideoObject, 2);
    EXPECT_EQ(video.use_count(), 1);
}

TEST(SystemTrackPruning, ByIdOfATrackNotHeldDoesNothing) {
    RandomEstimates random(503);
    const auto system = makeSystemTrack(randomTrack(random, Source::Radar, 1));
    system->updateState(randomTrack(random, Source::VideoObject, 2));
    EXPECT_FALSE(changesEstimate(*system, [&] {
        system->pruneSensorTracksByIdx(Source::Radar, 2);
        system->pruneSensorTracksByIdx(Source::VideoObject, 1);
        system->pruneSensorTracksByIdx(Source::VideoVura, 1);
    }));
    EXPECT_TRUE(system->hasTracks(Source::Radar));
    EXPECT_TRUE(system->hasTracks(Source::VideoObject));
    EXPECT_FALSE(system->hasSource(Source::VideoVura));
}

TEST(SystemTrackPruning, OfTheLastSupportKeepsTheEstimate) {
    RandomEstimates random(504);
    const auto system = makeSystemTrack(randomTrack(random, Source::Radar, 1));
    EXPECT_FALSE(
        changesEstimate(*system, [&] { system->pruneSensorTracksByIdx(Source::Radar, 1); }));
    EXPECT_FALSE(system->hasTracks(Source::Radar));
}

TEST(SystemTrackPruning, OfTwoRadarTracksCountsBoth) {
    RandomEstimates random(505);
    const auto system = makeSystemTrack(randomTrack(random, Source::Radar, 1));
    system->updateState(randomTrack(random, Source::Radar, 2));
    EXPECT_TRUE(
        changesEstimate(*system, [&] { system->pruneSensorTracksByIdx(Source::Radar, 1); }));
}

TEST(SystemTrackPruning, WorksWithTheSourceOfTheTrackThatLeaves) {
    RandomEstimates random(506);
    const auto system = makeSystemTrack(randomTrack(random, Source::Radar, 1));
    system->updateState(randomTrack(random, Source::VideoObject, 2));
    system->updateState(randomTrack(random, Source::VideoObject, 3));
    held(*system, Source::Radar, 1)->boundingBox << 0.5, 0.5, 0.5, 0.5;
    for (const int id : {2, 3}) {
        held(*system, Source::VideoObject, id)->coastingTime = 1.0;
    }
    // The reference becomes invalid with the first pruned track.
    system->pruneSensorTracksByCoastingTime(held(*system, Source::VideoObject, 2)->source);
    EXPECT_FALSE(system->hasTracks(Source::VideoObject));
    EXPECT_EQ(system->boundingBox, Eigen::Vector4d::Constant(0.5));

    system->updateState(randomTrack(random, Source::VideoObject, 4));
    system->boundingBox.setZero();
    const Track& leaving = *held(*system, Source::VideoObject, 4);
    system->pruneSensorTracksByIdx(leaving.source, leaving.id);
    EXPECT_FALSE(system->hasTracks(Source::VideoObject));
    EXPECT_EQ(system->boundingBox, Eigen::Vector4d::Constant(0.5));
}

TEST(SystemTrackPruning, OfAVideoObjectFallsBackToTheFirstRadarBox) {
    const auto system = makeSystemTrack(makeTrack(Source::VideoObject, 1));
    for (const int id : {8, 3}) {
        const auto radar = makeTrack(Source::Radar, id);
        radar->boundingBox.setConstant(id);
        system->updateState(radar);
    }
    system->boundingBox.setConstant(1.0);
    system->pruneSensorTracksByIdx(Source::VideoObject, 1);
    EXPECT_EQ(system->boundingBox, Eigen::Vector4d::Constant(3.0));
}

TEST(SystemTrackPruning, OfOneOfTwoVideoObjectsFallsBackToRadarToo) {
    const auto radar = makeTrack(Source::Radar, 3);
    radar->boundingBox.setConstant(3.0);
    const auto system = makeSystemTrack(radar);
    for (const int id : {1, 2}) {
        const auto video = makeTrack(Source::VideoObject, id);
        video->boundingBox.setConstant(id);
        system->updateState(video);
    }
    ASSERT_EQ(system->boundingBox, Eigen::Vector4d::Constant(2.0));
    system->pruneSensorTracksByIdx(Source::VideoObject, 1);
    EXPECT_EQ(system->boundingBox, Eigen::Vector4d::Constant(3.0));
}

TEST(SystemTrackPruning, OfOtherSourcesKeepsTheBox) {
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
    system->updateState(makeTrack(Source::Radar, 2));
    system->updateState(makeTrack(Source::VideoVura, 1));
    system->boundingBox.setConstant(1.0);
    system->pruneSensorTracksByIdx(Source::Radar, 2);
    system->pruneSensorTracksByIdx(Source::VideoVura, 1);
    EXPECT_EQ(system->boundingBox, Eigen::Vector4d::Constant(1.0));
}

TEST(SystemTrackPruning, OfTheOnlyVideoObjectWithoutRadarKeepsTheBox) {
    const auto video = makeTrack(Source::VideoObject, 1);
    video->boundingBox.setConstant(1.0);
    const auto system = makeSystemTrack(video);
    system->pruneSensorTracksByIdx(Source::VideoObject, 1);
    EXPECT_EQ(system->boundingBox, Eigen::Vector4d::Constant(1.0));
}

TEST(SystemTrackPruning, BeginsAtHalfASecondOfCoasting) {
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
    for (const int id : {2, 3, 4}) {
        system->updateState(makeTrack(Source::Radar, id));
    }
    held(*system, Source::Radar, 1)->coastingTime = 0.4999;
    held(*system, Source::Radar, 2)->coastingTime = std::nextafter(0.5, 0.0);
    held(*system, Source::Radar, 3)->coastingTime = 0.5;
    held(*system, Source::Radar, 4)->coastingTime = 7.0;
    system->updateState(makeTrack(Source::Radar, 5));
    held(*system, Source::Radar, 5)->coastingTime = std::numeric_limits<double>::quiet_NaN();
    system->pruneSensorTracksByCoastingTime(Source::Radar);
    EXPECT_THAT(system->getSensorTracks(Source::Radar), ElementsAre(Key(1), Key(2), Key(5)));
}

TEST(SystemTrackPruning, ByCoastingTakesEachContributionOutInTurn) {
    RandomEstimates random(507);
    const auto remaining = randomTrack(random, Source::Radar, 1);
    const auto system = makeSystemTrack(remaining);
    for (const int id : {2, 3}) {
        const auto video = randomTrack(random, Source::VideoObject, id);
        video->coastingTime = 0.5;
        system->updateState(video);
    }
    remaining->boundingBox.setConstant(0.25);
    system->pruneSensorTracksByCoastingTime(Source::VideoObject);
    EXPECT_THAT(system->state, IsApprox(remaining->state, 1e-12));
    EXPECT_THAT(system->covariance, IsApprox(remaining->covariance, 1e-12));
    EXPECT_EQ(system->boundingBox, Eigen::Vector4d::Constant(0.25));
}

TEST(SystemTrackPruning, OfAllSupportsLeavesTheContributionOfTheLast) {
    RandomEstimates random(508);
    const auto system = makeSystemTrack(randomTrack(random, Source::Radar, 1));
    const auto last = randomTrack(random, Source::VideoObject, 5);
    system->updateState(last);
    system->setCoastingTimeTracks(0.5);
    system->prune();  // radar first
    EXPECT_FALSE(system->hasTracks(Source::Radar));
    EXPECT_FALSE(system->hasTracks(Source::VideoObject));
    EXPECT_THAT(system->state, IsApprox(last->state, 1e-12));
    EXPECT_THAT(system->covariance, IsApprox(last->covariance, 1e-12));
}

TEST(SystemTrackPruning, OfASourceNeverHeldMakesItsMap) {
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
    system->pruneSensorTracksByCoastingTime(Source::VideoVura);
    EXPECT_TRUE(system->hasSource(Source::VideoVura));
    EXPECT_FALSE(system->hasTracks(Source::VideoVura));
}

TEST(SystemTrackPruning, NeverTakesMotionBasedVideoTracksByCoasting) {
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
    system->updateState(makeTrack(Source::VideoVura, 2));
    system->updateState(makeTrack(Source::VideoObject, 3));
    system->setCoastingTimeTracks(100.0);
    system->prune();
    EXPECT_FALSE(system->hasTracks(Source::Radar));
    EXPECT_FALSE(system->hasTracks(Source::VideoObject));
    EXPECT_TRUE(system->hasTracks(Source::VideoVura));
}

TEST(SystemTrackDeathTest, StopsAtSensorTracksThatAreNotThere) {
    EXPECT_DEATH(SystemTrack(nullptr, 1), "get\\(\\) != nullptr");
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
    EXPECT_DEATH(system->updateState(nullptr), "get\\(\\) != nullptr");
    system->sensorTracks[Source::Radar][0] = nullptr;
    EXPECT_DEATH(system->setCoastingTimeTracks(0.1), "get\\(\\) != nullptr");
    EXPECT_DEATH(system->predict(11.0), "get\\(\\) != nullptr");
    EXPECT_DEATH(system->prune(), "get\\(\\) != nullptr");
    EXPECT_DEATH(system->pruneSensorTracksByIdx(Source::Radar, 0), "get\\(\\) != nullptr");
    EXPECT_DEATH(system->hasCoastingTracks(Source::Radar), "get\\(\\) != nullptr");
    EXPECT_DEATH(system->getSpeed(), "get\\(\\) != nullptr");
    EXPECT_DEATH(system->getClassName(), "get\\(\\) != nullptr");
}

}  // namespace
