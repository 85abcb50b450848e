// SPDX-License-Identifier: Apache-2.0
// Whole scenes, evaluated by the fused result.
#include "fusion/FusionFixture.h"
#include "support/RandomEstimates.h"

#include <cmath>

namespace VeskarTest {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Veskar::Radar;
using Veskar::VideoObject;

/// Ten video and ten radar frames a second, radar half a period later; the noise of reports has
/// their stated variance.
class FusionScenario : public FusionTest {
protected:
    static constexpr double period = 0.1;

    /// @return a position with the error of a report
    double noisy(double u) {
        // Sum of 12 uniform numbers: approximately normal, variance 1.
        double normal = -6.0;
        for (int i = 0; i < 12; ++i) {
            normal += random.uniform(0.0, 1.0);
        }
        return u + std::sqrt(usualVariance) * normal;
    }

    Seen see(double u, double velocity = 0.0) { return {noisy(u), velocity, 2.0}; }

    RandomEstimates random{42};
};

TEST_F(FusionScenario, OnePersonSeenByBothIsOneConfirmedTrackWithinFourFrames) {
    config.module.systemTrackConfirmationLimitLower = 0.6;
    int frames = 0;
    for (int i = 0; i < 20; ++i) {
        const double time = 10.0 + period * i;
        const double u = 0.3 + 0.05 * time;
        showVideo(time, {video(4, time, see(u, 0.05))});
        const double later = time + period / 2.0;
        showRadar(later, {radar(9, later, see(u + 0.05 * period / 2.0, 0.05))});
        ASSERT_THAT(systemIds(), ElementsAre(1));
        frames += systemTrack(0).isConfirmed ? 0 : 2;
    }
    EXPECT_LE(frames, 4);
    EXPECT_TRUE(systemTrack(0).isConfident);
    EXPECT_NEAR(systemTrack(0).state[0], 0.3 + 0.05 * systemTrack(0).time, 0.25);
}

TEST_F(FusionScenario, TwoCrossingPeopleKeepTheirIds) {
    for (int i = 0; i <= 60; ++i) {
        const double time = 10.0 + period * i;
        const double u = -0.9 + 0.03 * i;
        const auto report = [&](auto make, double at, double shift) {
            return Tracks{make(1, at, see(u + shift, 0.3)), make(2, at, see(-u - shift, -0.3))};
        };
        showVideo(time, report(&video, time, 0.0));
        showRadar(time + 0.05, report(&radar, time + 0.05, 0.015));
        ASSERT_THAT(systemIds(), ElementsAre(1, 2)) << "frame " << i;
    }
    for (const std::size_t person : {0U, 1U}) {
        EXPECT_THAT(heldIds(person, VideoObject), ElementsAre(person + 1));
        EXPECT_THAT(heldIds(person, Radar), ElementsAre(person + 1));
        EXPECT_TRUE(systemTrack(person).isConfirmed);
    }
    EXPECT_GT(systemTrack(0).state[0], 0.6);
    EXPECT_LT(systemTrack(1).state[0], -0.6);
}

TEST_F(FusionScenario, RadarAndVideoTracksOfOneObjectMergeWhenTheyMeet) {
    for (const bool useJVA : {true, false}) {
        restart();
        config.module.useJVA = useJVA;
        // Radar starts later, with a decreasing bias.
        for (int i = 0; i < 20; ++i) {
            const double time = 10.0 + period * i;
            showVideo(time, {video(1, time, see(0.0))});
            if (i >= 2) {
                showRadar(time + 0.05, {radar(1, time + 0.05, see(std::max(0.0, 1.2 - 0.1 * i)))});
            }
            if (i == 3) {
                ASSERT_THAT(systemIds(), ElementsAre(testing::_, testing::_)) << "still two";
            }
        }
        ASSERT_THAT(module().systemTracks, SizeIs(1));
        EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(1));
        EXPECT_THAT(heldIds(0, Radar), ElementsAre(1));
        EXPECT_TRUE(systemTrack(0).isConfirmed);
    }
}

TEST_F(FusionScenario, AClassMismatchIsCutWhenConfiguredSo) {
    for (const bool removes : {true, false}) {
        restart();
        config.module.removeClassMismatches = removes;
        for (int i = 0; i < 10; ++i) {
            const double time = 10.0 + period * i;
            // The video tracker switches from the person to a passing car; a new track continues
            // the person.
            const std::string className = i < 5 ? "human" : "car";
            Tracks frame = {video(1, time, {0.0, 0.0, 2.0, className})};
            if (i >= 5) {
                frame.push_back(video(2, time, {0.02}));
            }
            showVideo(time, frame);
            showRadar(time + 0.05, {radar(1, time + 0.05)});
        }
        EXPECT_THAT(heldIds(0, Radar), ElementsAre(1));
        EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(removes ? 2 : 1));
        EXPECT_EQ(systemTrack(0).getClassName(), removes ? "human" : "car");
    }
}

TEST_F(FusionScenario, ASilentSensorIsDroppedAfterHalfASecondWithItsContribution) {
    makeFusedTrack({0.0});
    double last = 0.0;
    for (int i = 1; i <= 8; ++i) {
        const double time = 10.0 + period * i;
        showVideo(time, {video(1, time, {0.2})});
        if (!systemTrack(0).hasTracks(Radar)) {
            EXPECT_NEAR(systemTrack(0).state[0], 0.2, 1e-9) << "video alone remains";
            EXPECT_NEAR(systemTrack(0).covariance(0, 0), usualVariance, 1e-9);
        } else {
            last = time;
            EXPECT_LT(systemTrack(0).state[0], 0.19) << "radar at 0 still pulls";
            EXPECT_LT(systemTrack(0).covariance(0, 0), 0.9 * usualVariance);
        }
    }
    EXPECT_NEAR(last, 10.4, 1e-9);
}

TEST_F(FusionScenario, AJumpOfTheRadarReportCostsTheRadarTrackOnly) {
    makeFusedTrack();
    for (int i = 1; i <= 5; ++i) {
        const double time = 10.0 + period * i;
        showVideo(time, {video(1, time)});
        showRadar(time + 0.05, {radar(1, time + 0.05, {i < 4 ? 0.0 : 3.0})});
        if (i == 4) {
            ASSERT_THAT(systemIds(), ElementsAre(1, 2)) << "the jumped report starts a track";
            EXPECT_THAT(heldIds(0, Radar), IsEmpty());
            EXPECT_NEAR(systemTrack(0).state[0], 0.0, 1e-6);
        }
    }
    EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(1));
    EXPECT_THAT(heldIds(1, Radar), ElementsAre(1));
    EXPECT_TRUE(systemTrack(0).isConfirmed) << "it was confirmed while both saw it";
}

TEST_F(FusionScenario, TwoPeopleMayShareOneRadarTrack) {
    config.module.allowRadarToMultiple = true;
    config.module.useJVA = false;
    // Radar first reports one track for two people that only video resolves.
    fuseRadar(10.0, {radar(1, 10.0)});
    showVideo(10.05, {video(1, 10.05, {0.9 * gateWidth}), video(2, 10.05, {-2.0})});
    ASSERT_THAT(systemIds(), ElementsAre(1, 2)) << "radar and the first; the second is far";
    showVideo(10.1, {video(1, 10.1, {0.2}), video(2, 10.1, {-0.2})});
    fuseRadar(10.15, {radar(1, 10.15)});
    ASSERT_THAT(systemIds(), ElementsAre(1, 2));
    EXPECT_THAT(heldIds(0, Radar), ElementsAre(1));
    EXPECT_THAT(heldIds(1, Radar), ElementsAre(1));
}

TEST_F(FusionScenario, ARadarOnlyCopyOfASharedRadarTrackIsRemoved) {
    config.module.useJVA = false;
    for (const bool isShared : {true, false}) {
        restart();
        config.module.allowRadarToMultiple = isShared;
        fuseRadar(10.0, {radar(1, 10.0)});
        showVideo(10.05, {video(1, 10.05, {3.0})});
        showVideo(10.1, {video(1, 10.1, {0.1})});
        fuseRadar(10.15, {radar(1, 10.15)});
        if (isShared) {
            ASSERT_THAT(systemIds(), ElementsAre(2)) << "video's track has taken radar along";
            EXPECT_THAT(heldIds(0, Radar), ElementsAre(1));
        } else {
            EXPECT_THAT(systemIds(), ElementsAre(1, 2)) << "radar belongs to the first";
        }
    }
}

}  // namespace
}  // namespace VeskarTest
