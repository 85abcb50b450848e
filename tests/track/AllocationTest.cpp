// SPDX-License-Identifier: Apache-2.0
// The per-frame operations of tracks do not allocate.
#include <veskar/SystemTrack.h>

#include "support/AllocationCounter.h"
#include "support/TrackFactory.h"
#include "track/ClassLabel.h"

#include <cstdint>

#include <gtest/gtest.h>

namespace {

using Veskar::Source;
using Veskar::SystemTrack;
using VeskarTest::AllocationScope;
using VeskarTest::makeSystemTrack;
using VeskarTest::makeTrack;
using VeskarTest::RandomEstimates;

template <typename Call>
std::uint64_t allocationsOf(Call call) {
    const AllocationScope scope;
    call();
    return scope.count();
}

class TrackAllocations : public testing::Test {
protected:
    TrackAllocations() {
        system = makeSystemTrack(makeTrack(Source::Radar, 1, random.estimate()));
        system->updateState(makeTrack(Source::VideoObject, 1, random.estimate()));
    }

    RandomEstimates random{801};
    std::shared_ptr<SystemTrack> system;
};

TEST_F(TrackAllocations, AreCounted) {
    EXPECT_EQ(allocationsOf([] { makeTrack(Source::Radar, 1); }), 1U);
}

TEST_F(TrackAllocations, AreNotNeededForARepeatedReport) {
    const auto report = makeTrack(Source::Radar, 1, random.estimate());
    EXPECT_EQ(allocationsOf([&] { system->updateState(report); }), 0U);
}

TEST_F(TrackAllocations, AreTheMapNodesForANewReport) {
    const auto known = makeTrack(Source::Radar, 2, random.estimate());
    EXPECT_EQ(allocationsOf([&] { system->updateState(known); }), 1U);
    const auto unseen = makeTrack(Source::VideoVura, 2, random.estimate());
    EXPECT_EQ(allocationsOf([&] { system->updateState(unseen); }), 2U);
}

TEST_F(TrackAllocations, AreNotNeededToTakeTracksOut) {
    system->updateState(makeTrack(Source::Radar, 2, random.estimate()));
    const auto& tracks = system->getSensorTracks(Source::Radar);
    EXPECT_EQ(allocationsOf([&] { system->applyDefusion(*tracks.at(2)); }), 0U);
    EXPECT_EQ(allocationsOf([&] { system->pruneSensorTracksByIdx(Source::Radar, 2); }), 0U);
    tracks.at(1)->coastingTime = 1.0;
    EXPECT_EQ(allocationsOf([&] { system->prune(); }), 0U);
    EXPECT_FALSE(system->hasTracks(Source::Radar));
}

TEST_F(TrackAllocations, AreNotNeededToTakeTheLabelsOfTheNextReport) {
    const auto report = makeTrack(Source::VideoObject, 1, random.estimate());
    report->className = "motorcycle_bicycle";  // longer than what a string keeps inside itself
    report->colorName = "a colour with a long name";
    const auto take = [&] {
        system->updateClass(*report);
        system->updateColor(*report);
    };
    take();
    EXPECT_EQ(allocationsOf(take), 0U);
    EXPECT_EQ(system->className, report->className);
    EXPECT_EQ(system->colorName, report->colorName);
}

TEST_F(TrackAllocations, AreNotNeededToPredict) {
    EXPECT_EQ(allocationsOf([&] { system->predict(10.1); }), 0U);
}

TEST_F(TrackAllocations, AreNotNeededToCompare) {
    const auto other = makeTrack(Source::Radar, 2, random.estimate());
    double sum = 0.0;
    EXPECT_EQ(allocationsOf([&] {
                  sum += system->statisticalDistance(*other);
                  sum += system->positionStatisticalDistance(*other);
                  sum += system->logPdf(*other);
                  sum += system->velocitySimilarity(*other, 0.1).second;
                  sum += system->getTravelledDistanceInImagePlane();
              }),
              0U);
    EXPECT_NE(sum, 0.0);
}

TEST_F(TrackAllocations, AreNotNeededForProbabilityConfidenceAndCoasting) {
    EXPECT_EQ(allocationsOf([&] {
                  system->updateTrackProbability(2.0);
                  system->updateIsConfident();
                  system->setCoastingTimeTracks(0.1);
                  EXPECT_TRUE(system->hasCoastingTracks(Source::Radar));
                  EXPECT_FALSE(system->hasCoastingTracksTooLong(Source::VideoVura, 0.1));
              }),
              0U);
}

TEST_F(TrackAllocations, AreNotNeededToLookAtAClass) {
    const std::string longName = "a class name that does not fit into a short string";
    const auto radar = makeTrack(Source::Radar, 0);
    radar->className = longName;
    system->updateState(radar);
    EXPECT_EQ(allocationsOf([&] {
                  EXPECT_TRUE(Veskar::ClassLabel(*radar).text() == longName);
                  EXPECT_TRUE(Veskar::ClassLabel(*system).text() == longName);
              }),
              0U);
}

}  // namespace
