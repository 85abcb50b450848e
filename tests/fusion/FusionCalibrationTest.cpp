// SPDX-License-Identifier: Apache-2.0
// When the cycle passes on calibration samples, inside the host application.
#include "fusion/CalibrationScene.h"
#include "fusion/FusionFixture.h"
#include "support/DatagramReceiver.h"

#include <stdexcept>

namespace VeskarTest {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class FusionCalibration : public FusionTest {
protected:
    FusionCalibration() : path("/tmp/autocalibration.sock"), receiver(path.get()) {
        config.module.autocalibrationAgeLimit = 1.0;
        config.module.autocalibrationVideoCoastingLimit = 0.25;
        config.module.autocalibrationEdgeLimit = 0.99;
        config.module.autocalibrationVideoNearLimit = 0.25;
        config.module.autocalibrationAspectLimits = {{"human", {0.3, 0.65}}};
    }

    static std::shared_ptr<Veskar::Track> person(int id, double time, double u = 0.0) {
        auto track = video(id, time, {u});
        track->boundingBox << u - 0.045, 0.09, -0.16, 0.32;
        return track;
    }

    /// A person seen by both sensors for 2 s, last at 12 s.
    void watchPerson() {
        for (const double time : {10.0, 10.4, 10.8, 11.2, 11.6, 12.0}) {
            showVideo(time, {person(1, time)});
            showRadar(time, {radar(3, time)});
        }
        ASSERT_THAT(systemIds(), ElementsAre(1));
        receiver.receive();
    }

    SocketPath path;
    DatagramReceiver receiver;
};

TEST_F(FusionCalibration, FollowsRadarFramesOnly) {
    watchPerson();
    showVideo(12.0, {person(1, 12.0)});
    EXPECT_THAT(receiver.receive(), IsEmpty()) << "though radar has not coasted";
    showVideo(12.25, {person(1, 12.25)});
    showRadar(12.25, {radar(3, 12.25)});
    EXPECT_THAT(receiver.receive(),
                ElementsAre(R"({"radarTimestamp_ns":12250000000,"data":[)"
                            R"({"u_video":0,"v_video":0,"id_radar":3,"r_radar":20}]})"));
    for (const Veskar::Source other : {Veskar::VideoObject, Veskar::VideoVura, Veskar::System}) {
        module().handleAutocalibration(other, 12.25);
        EXPECT_THAT(receiver.receive(), IsEmpty()) << other;
    }
}

TEST_F(FusionCalibration, NeedsNoVideoFrame) {
    module().systemTracks = {makeCalibrationTrack(7)};
    module().handleAutocalibration(Veskar::Radar, 1.5);
    EXPECT_THAT(receiver.receive(),
                ElementsAre(R"({"radarTimestamp_ns":1500000000,"data":[)"
                            R"({"u_video":0,"v_video":0,"id_radar":7,"r_radar":0}]})"));
}

TEST_F(FusionCalibration, TruncatesTheTimeToNanoseconds) {
    watchPerson();
    module().handleAutocalibration(Veskar::Radar, 1.9999999999);
    EXPECT_THAT(receiver.receive(),
                ElementsAre(testing::StartsWith(R"({"radarTimestamp_ns":1999999999,)")));
    module().handleAutocalibration(Veskar::Radar, -1.9999999999);
    EXPECT_THAT(receiver.receive(),
                ElementsAre(testing::StartsWith(R"({"radarTimestamp_ns":-1999999999,)")));
    module().handleAutocalibration(Veskar::Radar, 1e12);
    EXPECT_THAT(receiver.receive(),
                ElementsAre(testing::StartsWith(R"({"radarTimestamp_ns":9223372036854775807,)")));
}

TEST_F(FusionCalibration, SaturatesFromTheFirstTimeThatDoesNotFit) {
    const double seconds = 9223372036.854775808;
    ASSERT_EQ(seconds * 1e9, 0x1p63);
    watchPerson();
    module().handleAutocalibration(Veskar::Radar, seconds);
    EXPECT_THAT(receiver.receive(),
                ElementsAre(testing::StartsWith(R"({"radarTimestamp_ns":9223372036854775807,)")));
}

TEST_F(FusionCalibration, ComesAfterTracksAreManaged) {
    config.module.autocalibrationVideoCoastingLimit = 5.0;
    watchPerson();
    fuseRadar(12.4, {radar(3, 12.4)});
    EXPECT_EQ(receiver.receive().size(), 1U);
    fuseRadar(12.5, {radar(3, 12.5)});
    EXPECT_THAT(receiver.receive(), IsEmpty()) << "the video track has just been dropped";
}

TEST_F(FusionCalibration, KeepsAwayFromNeighboursInTheLastVideoFrame) {
    watchPerson();
    showVideo(12.1, {person(1, 12.1), person(2, 12.1, 0.2)});
    showRadar(12.1, {radar(3, 12.1)});
    EXPECT_THAT(receiver.receive(), IsEmpty());
    showVideo(12.2, {person(1, 12.2)});
    showRadar(12.2, {radar(3, 12.2)});
    EXPECT_EQ(receiver.receive().size(), 1U) << "the neighbour is not in the last frame";
}

TEST_F(FusionCalibration, IsLeftOutOfAFrameThatFails) {
    watchPerson();
    Tracks crowd = {radar(3, 12.05)};
    for (int id = 1000; id < 1600; ++id) {
        crowd.push_back(radar(id, 12.05, {1.0 * id}));
    }
    EXPECT_THROW(fuseRadar(12.05, crowd), std::runtime_error);
    EXPECT_THAT(receiver.receive(), IsEmpty());
    fuseRadar(12.05, {radar(3, 12.05)});
    EXPECT_EQ(receiver.receive().size(), 1U);
}

}  // namespace
}  // namespace VeskarTest
