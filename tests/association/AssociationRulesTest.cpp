// SPDX-License-Identifier: Apache-2.0
#include "association/AssociationRules.h"
#include "association/LineTracks.h"
#include "support/Constants.h"

#include <cmath>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

namespace VeskarTest {
namespace {

using Veskar::AssociationRules;
using Veskar::Config;
using Veskar::Source;
using Veskar::SystemTrack;
using Tracks = std::vector<std::shared_ptr<Veskar::Track>>;

Config gateOf(double distance) {
    Config config;
    config.module.positionGatingDistance = distance;
    return config;
}

class AssociationRulesTest : public testing::Test {
protected:
    /// Shows a radar and a video track that are this far apart, and another video track between
    /// them that makes it a crowd, often enough to be remembered.
    void remember(double distance) {
        for (int frame = 0; frame < 50; ++frame) {
            const double time = 10.0 + 0.1 * frame;
            const Tracks videoTracks{trackAt(distance * unit, Source::VideoObject, 1),
                                     trackAt(0.5 * unit, Source::VideoObject, 2)};
            rules.observe(Source::VideoObject, time, videoTracks, {});
            rules.observe(Source::Radar, time, {trackAt(0.0, Source::Radar, 1)}, videoTracks);
        }
    }

    const double unit = std::sqrt(2.0);  ///< a distance of 1
    Config config = gateOf(3.0);
    AssociationRules rules{config};
    std::shared_ptr<SystemTrack> radar = systemAt(0.0, Source::Radar, 1);
    std::shared_ptr<SystemTrack> video = systemAt(0.0, Source::VideoObject, 1);
};

TEST_F(AssociationRulesTest, TakeNoReportForFreshWhoseCoastingIsNotANumber) {
    const auto report = trackAt(0.0, Source::Radar, 1);
    report->coastingTime = nan;
    EXPECT_TRUE(rules.isFresh(*report));
    config.rules.freshReportsOnly = true;
    EXPECT_FALSE(rules.isFresh(*report));
}

TEST_F(AssociationRulesTest, OpenASystemTrackWhenAllItsTracksOfTheSourceCoast) {
    video->getSensorTracks(Source::VideoObject).begin()->second->coastingTime = 0.05;
    EXPECT_FALSE(rules.isOpen(*video, Source::VideoObject));
    config.rules.takeOver = true;
    EXPECT_TRUE(rules.isOpen(*video, Source::VideoObject));
    video->updateState(trackAt(0.0, Source::VideoObject, 8));
    EXPECT_FALSE(rules.isOpen(*video, Source::VideoObject)) << "one of two is fresh";
}

TEST_F(AssociationRulesTest, SeparateAtThePairGateExactly) {
    config.rules.pairGate = 0.5;
    const auto origin = trackAt(0.0, Source::Radar, 1);
    const auto at = [&](double distance) {
        return trackAt(distance * unit, Source::VideoObject, 1);
    };
    const double exact = origin->positionStatisticalDistance(*at(1.5));
    EXPECT_FALSE(rules.areApart(*origin, *at(1.5 - 1e-9)));
    Config exactConfig = gateOf(2.0 * exact);
    exactConfig.rules.pairGate = 0.5;
    const AssociationRules limited(exactConfig);
    EXPECT_TRUE(limited.areApart(*origin, *at(1.5))) << "the limit itself is apart";
    EXPECT_TRUE(rules.areApart(*origin, *at(nan)));
}

TEST_F(AssociationRulesTest, OrderByStartAndThenById) {
    radar->startTime = video->startTime = 5.0;
    video->id = 7;
    EXPECT_FALSE(rules.isOlder(*radar, *video));
    config.rules.orderedMerging = true;
    EXPECT_TRUE(rules.isOlder(*radar, *video));
    EXPECT_FALSE(rules.isOlder(*video, *radar));
    video->startTime = 4.0;
    EXPECT_TRUE(rules.isOlder(*video, *radar));
    EXPECT_FALSE(rules.isOlder(*radar, *video));
}

TEST_F(AssociationRulesTest, LetTheSystemTrackWithRadarSurviveUnlessOnlyTheOtherIsConfirmed) {
    EXPECT_FALSE(rules.survivesInstead(*video, *radar));
    config.rules.orderedMerging = true;
    struct Case {
        bool isVideoConfirmed;
        bool isRadarConfirmed;
        bool isSwapped;
    };
    for (const Case& c : {Case{false, false, true}, Case{false, true, true}, Case{true, true, true},
                          Case{true, false, false}}) {
        video->isConfirmed = c.isVideoConfirmed;
        radar->isConfirmed = c.isRadarConfirmed;
        EXPECT_EQ(rules.survivesInstead(*video, *radar), c.isSwapped);
        EXPECT_FALSE(rules.survivesInstead(*radar, *video));
    }
}

TEST_F(AssociationRulesTest, MergeByTheCostOfTheGateWithoutMemory) {
    EXPECT_EQ(rules.mergeCost(0.25, *radar, *video), 0.25);
    EXPECT_EQ(rules.pairOf(*radar, *video), nullptr);
}

TEST_F(AssociationRulesTest, MergeByTheRememberedDistanceInsteadOfThatOfTheFrame) {
    config.rules.pairMemory = true;
    remember(1.0);
    const auto* pair = rules.pairOf(*radar, *video);
    ASSERT_NE(pair, nullptr);
    EXPECT_EQ(rules.pairOf(*video, *radar), pair) << "in any order";
    EXPECT_FALSE(rules.disagrees(*pair));
    video->state[0] = 2.0 * unit;
    const auto cost = rules.mergeCost(0.25, *radar, *video);
    ASSERT_TRUE(cost);
    EXPECT_NEAR(*cost, 0.25 + (std::sqrt(pair->squaredDistance) - 2.0) / 3.0, 1e-9);
}

TEST_F(AssociationRulesTest, MergeNoPairThatIsUnknownOrDisagrees) {
    config.rules.pairMemory = true;
    EXPECT_FALSE(rules.mergeCost(0.25, *radar, *video));
    remember(1.9);
    ASSERT_NE(rules.pairOf(*radar, *video), nullptr);
    EXPECT_TRUE(rules.disagrees(*rules.pairOf(*radar, *video)));
    EXPECT_FALSE(rules.mergeCost(0.25, *radar, *video));
}

TEST_F(AssociationRulesTest, ForgetWhenCleared) {
    config.rules.pairMemory = true;
    config.rules.takeOver = true;
    remember(1.0);
    const auto second = trackAt(0.0, Source::VideoObject, 2);
    EXPECT_FALSE(rules.mayReplaceHeld(*video, *second));
    rules.clear();
    EXPECT_EQ(rules.pairOf(*radar, *video), nullptr);
    EXPECT_TRUE(rules.mayReplaceHeld(*video, *second));
}

TEST_F(AssociationRulesTest, CompareNoVideoTracksThatAreOld) {
    config.rules.pairMemory = true;
    const Tracks videoTracks{trackAt(0.0, Source::VideoObject, 1)};
    const auto hearAt = [&](double time) {
        rules.observe(Source::Radar, time, {trackAt(0.0, Source::Radar, 1)}, videoTracks);
        return rules.pairOf(*radar, *video) != nullptr;
    };
    EXPECT_FALSE(hearAt(9.0)) << "no video frame yet";
    rules.observe(Source::VideoObject, 10.0, videoTracks, {});
    EXPECT_FALSE(hearAt(10.151));
    EXPECT_TRUE(hearAt(10.149));
}

}  // namespace
}  // namespace VeskarTest
