// SPDX-License-Identifier: Apache-2.0
#include <veskar/AutocalibrationHandler.h>
#include <veskar/HostApplication.h>

#include "fusion/CalibrationScene.h"
#include "support/CommaLocale.h"
#include "support/DatagramReceiver.h"
#include "support/ExecutableLink.h"
#include "support/SocketCounter.h"
#include "support/SyslogCapture.h"

#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace VeskarTest;
using testing::IsEmpty;
using testing::SizeIs;
using Veskar::AutocalibrationHandler;
using Veskar::CalibrationPayload;
using Veskar::Source;
using Veskar::SystemTrack;

namespace {

class Autocalibration : public testing::Test {
protected:
    /// @return the samples of one system track
    std::vector<Veskar::CalibrationSample> samplesOf(const SystemTrack& track) const {
        CalibrationPayload payload{{}, 0};
        handler.handleSystemTrack(track, videoTracks, payload);
        return payload.data;
    }

    bool isTaken(const std::function<void(SystemTrack&)>& change) const {
        const auto track = makeCalibrationTrack();
        change(*track);
        return samplesOf(*track).size() == 1;
    }

    bool isTakenWithBox(const Eigen::Vector4d& box) const {
        return isTaken([&](SystemTrack& track) { videoOf(track).boundingBox = box; });
    }

    bool isTakenBeside(double u, double v, int id = 99) const {
        CalibrationPayload payload{{}, 0};
        const auto neighbour = makeTrack(Source::VideoObject, id);
        neighbour->state(0) = u;
        neighbour->state(2) = v;
        const auto track = makeCalibrationTrack();
        handler.handleSystemTrack(*track, {neighbour}, payload);
        return payload.data.size() == 1;
    }

    AutocalibrationHandler handler{makeCalibrationConfig()};
    std::vector<std::shared_ptr<Veskar::Track>> videoTracks;
};

}  // namespace

TEST_F(Autocalibration, TakesWhatBothSensorsSeeWell) {
    const auto track = makeCalibrationTrack();
    videoOf(*track).state(0) = 0.25;
    videoOf(*track).state(2) = -0.1;
    radarOf(*track).state(4) = 12.34567;
    track->state.fill(77.0);
    const auto samples = samplesOf(*track);
    ASSERT_THAT(samples, SizeIs(1));
    EXPECT_EQ(samples[0].u_video, 0.25);
    EXPECT_EQ(samples[0].v_video, -0.1);
    EXPECT_EQ(samples[0].id_radar, radarOf(*track).id);
    EXPECT_EQ(samples[0].r_radar, 12.34567);
}

TEST_F(Autocalibration, UsesTheFirstTrackOfEachSensor) {
    const auto track = makeCalibrationTrack();
    // With greater ids, a box at the edge does not matter.
    const auto laterVideo = makeTrack(Source::VideoObject, videoOf(*track).id + 1);
    laterVideo->boundingBox = Eigen::Vector4d(-1.0, 2.0, -1.0, 2.0);
    track->sensorTracks[Source::VideoObject][laterVideo->id] = laterVideo;
    const int laterRadar = radarOf(*track).id + 1;
    track->sensorTracks[Source::Radar][laterRadar] = makeTrack(Source::Radar, laterRadar);
    const auto samples = samplesOf(*track);
    ASSERT_THAT(samples, SizeIs(1));
    EXPECT_EQ(samples[0].id_radar, laterRadar - 1);
}

TEST_F(Autocalibration, NeedsBothSensors) {
    EXPECT_FALSE(
        isTaken([](SystemTrack& track) { track.sensorTracks[Source::VideoObject].clear(); }));
    EXPECT_FALSE(isTaken([](SystemTrack& track) { track.sensorTracks[Source::Radar].clear(); }));
    EXPECT_FALSE(isTaken([](SystemTrack& track) { track.sensorTracks.clear(); }));
}

TEST_F(Autocalibration, NeedsTheAgeOfTheSystemTrack) {
    const auto atAge = [this](double age) {
        return isTaken([=](SystemTrack& track) { track.systemStartTime = track.time - age; });
    };
    EXPECT_TRUE(atAge(1.0)) << "exactly at the limit";
    EXPECT_TRUE(atAge(1.5));
    EXPECT_FALSE(atAge(0.9999999));
    EXPECT_FALSE(atAge(std::numeric_limits<double>::quiet_NaN()));
    // The age of the video track is irrelevant.
    EXPECT_TRUE(isTaken([](SystemTrack& track) { videoOf(track).startTime = track.time; }));
}

TEST_F(Autocalibration, NeedsARadarReportOfThisFrame) {
    EXPECT_FALSE(isTaken([](SystemTrack& track) { radarOf(track).coastingTime = 1e-9; }));
    EXPECT_FALSE(isTaken([](SystemTrack& track) {
        // Also when a radar track other than the first one coasts.
        const auto other = makeTrack(Source::Radar, radarOf(track).id + 1);
        other->coastingTime = 0.1;
        track.sensorTracks[Source::Radar][other->id] = other;
    }));
}

TEST_F(Autocalibration, NeedsARecentVideoReport) {
    EXPECT_TRUE(isTaken([](SystemTrack& track) { videoOf(track).coastingTime = 0.1; }));
    EXPECT_FALSE(isTaken(
        [](SystemTrack& track) { videoOf(track).coastingTime = std::nextafter(0.1, 1.0); }));
}

TEST_F(Autocalibration, KeepsAwayFromTheEdges) {
    // At most half an image wide: width / height / 0.5625 stays at 0.5.
    const double height = 0.32;
    const double width = 0.5 * 0.5625 * height;
    const double edge = 0.99;
    const double beyond = 1e-9;
    EXPECT_TRUE(isTakenWithBox({-edge, width, 0.0, height}));
    EXPECT_FALSE(isTakenWithBox({-edge - beyond, width, 0.0, height}));
    EXPECT_TRUE(isTakenWithBox({edge - width - beyond, width, 0.0, height}));
    EXPECT_FALSE(isTakenWithBox({edge - width + beyond, width, 0.0, height}));
    EXPECT_TRUE(isTakenWithBox({0.0, width, -edge, height}));
    EXPECT_FALSE(isTakenWithBox({0.0, width, -edge - beyond, height}));
    EXPECT_TRUE(isTakenWithBox({0.0, width, edge - height - beyond, height}));
    EXPECT_FALSE(isTakenWithBox({0.0, width, edge - height + beyond, height}));
}

TEST_F(Autocalibration, TakesABoxThatEndsExactlyAtTheEdge) {
    // Binary fractions keep the sums exact.
    Veskar::Config config = makeCalibrationConfig();
    config.module.autocalibrationEdgeLimit = 0.75;
    config.module.autocalibrationAspectLimits = {{"human", {0.0, 10.0}}};
    handler = AutocalibrationHandler(config);
    EXPECT_TRUE(isTakenWithBox({-0.75, 0.25, 0.0, 0.25}));
    EXPECT_TRUE(isTakenWithBox({0.5, 0.25, 0.0, 0.25}));
    EXPECT_TRUE(isTakenWithBox({0.0, 0.25, -0.75, 0.25}));
    EXPECT_TRUE(isTakenWithBox({0.0, 0.25, 0.5, 0.25}));
}

TEST_F(Autocalibration, JudgesTheVideoTracksBoxAndNotTheSystemTracks) {
    EXPECT_TRUE(isTaken(
        [](SystemTrack& track) { track.boundingBox = Eigen::Vector4d(-1.0, 2.0, -1.0, 2.0); }));
}

TEST_F(Autocalibration, NeedsAClassWithKnownShape) {
    const auto ofClass = [this](const std::string& className) {
        return isTaken([&](SystemTrack& track) {
            track.className = className;
            track.classVoted = true;
        });
    };
    EXPECT_TRUE(ofClass("human"));
    EXPECT_FALSE(ofClass("car"));
    EXPECT_FALSE(ofClass("unknown"));
    EXPECT_FALSE(ofClass("human_head"));
    // The system track's class: radar's while video has not voted.
    EXPECT_FALSE(isTaken([](SystemTrack& track) {
        track.classVoted = false;
        radarOf(track).className = "car";
    }));
    EXPECT_TRUE(isTaken([](SystemTrack& track) {
        track.className = "car";
        track.classVoted = false;
        radarOf(track).className = "human";
    }));
}

TEST_F(Autocalibration, NeedsAHumanShapeWithBothEndsIncluded) {
    // Powers of two keep the quotients exact: width / 0.25 / 0.5625.
    Veskar::Config config = makeCalibrationConfig();
    config.module.autocalibrationAspectLimits = {{"human", {0.25, 0.5}}};
    handler = AutocalibrationHandler(config);
    const double height = 0.25;
    const double unit = height * 0.5625;
    EXPECT_TRUE(isTakenWithBox({0.0, 0.25 * unit, 0.0, height}));
    EXPECT_FALSE(isTakenWithBox({0.0, std::nextafter(0.25, 0.0) * unit, 0.0, height}));
    EXPECT_TRUE(isTakenWithBox({0.0, 0.5 * unit, 0.0, height}));
    EXPECT_FALSE(isTakenWithBox({0.0, 0.5000001 * unit, 0.0, height}));
    EXPECT_FALSE(isTakenWithBox({0.0, 0.0, 0.0, 0.0})) << "no shape at all";
}

TEST_F(Autocalibration, NeedsToBeAlone) {
    EXPECT_TRUE(isTakenBeside(0.25, 0.0)) << "exactly at the limit";
    EXPECT_FALSE(isTakenBeside(std::nextafter(0.25, 0.0), 0.0));
    EXPECT_FALSE(isTakenBeside(0.0, -0.2));
    EXPECT_TRUE(isTakenBeside(0.2, 0.2)) << "the distance counts, not the coordinates";
    EXPECT_FALSE(isTakenBeside(0.1, 0.1));
    EXPECT_TRUE(isTakenBeside(0.0, 0.0, calibrationVideoId)) << "it is no neighbour of its own";
}

TEST_F(Autocalibration, LooksAtAllNeighbours) {
    const auto track = makeCalibrationTrack();
    const auto far = makeTrack(Source::VideoObject, 50);
    far->state(0) = 0.9;
    const auto near = makeTrack(Source::VideoObject, 51);
    near->state(0) = 0.1;
    videoTracks = {far};
    EXPECT_THAT(samplesOf(*track), SizeIs(1));
    videoTracks = {far, near};
    EXPECT_THAT(samplesOf(*track), IsEmpty());
    videoTracks = {near, far};
    EXPECT_THAT(samplesOf(*track), IsEmpty());
}

TEST_F(Autocalibration, AppendsToWhatIsThere) {
    CalibrationPayload payload{{{1.0, 2.0, 3, 4.0}}, 5};
    handler.handleSystemTrack(*makeCalibrationTrack(), {}, payload);
    EXPECT_THAT(payload.data, SizeIs(2));
    EXPECT_EQ(payload.data[0].id_radar, 3);
    EXPECT_EQ(payload.timestamp, 5);
}

TEST_F(Autocalibration, FormatsCompactJson) {
    EXPECT_EQ(handler.formatPayload({{{0.25, -0.1, 7, 12.34567}}, 1500000000}),
              R"({"radarTimestamp_ns":1500000000,"data":[)"
              R"({"u_video":0.25,"v_video":-0.1,"id_radar":7,"r_radar":12.3457}]})");
    EXPECT_EQ(handler.formatPayload({{{0.0, 1.0, -1, 1e-7}, {-0.123456789, 1.5, 2147483647, 1e6}},
                                     std::numeric_limits<std::int64_t>::min()}),
              R"({"radarTimestamp_ns":-9223372036854775808,"data":[)"
              R"({"u_video":0,"v_video":1,"id_radar":-1,"r_radar":1e-07},)"
              R"({"u_video":-0.123457,"v_video":1.5,"id_radar":2147483647,"r_radar":1e+06}]})");
    EXPECT_EQ(handler.formatPayload({{}, 0}), R"({"radarTimestamp_ns":0,"data":[]})");
}

TEST_F(Autocalibration, IgnoresTheHostsLocale) {
    const CommaLocale locale;
    EXPECT_EQ(handler.formatPayload({{{0.25, -0.1, 7000, 1234.5}}, 1500000000}),
              R"({"radarTimestamp_ns":1500000000,"data":[)"
              R"({"u_video":0.25,"v_video":-0.1,"id_radar":7000,"r_radar":1234.5}]})");
}

TEST_F(Autocalibration, OpensNoSocketOutsideTheHostApplication) {
    const SyslogCapture log;
    const SocketPath path("/tmp/autocalibration.sock");
    DatagramReceiver receiver(path.get());
    const int before = openedSockets();
    handler.handleUpdate({makeCalibrationTrack()}, {}, 1);
    EXPECT_EQ(openedSockets(), before);
    EXPECT_THAT(receiver.receive(), IsEmpty());
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(Autocalibration, AsksOnceWhereItRuns) {
    const SocketPath path("/tmp/autocalibration.sock");
    DatagramReceiver receiver(path.get());
    std::unique_ptr<AutocalibrationHandler> hosted;
    {
        const ExecutableLink host("/usr/bin/quandrelwatcher");
        hosted = std::make_unique<AutocalibrationHandler>(makeCalibrationConfig());
        handler.handleUpdate({makeCalibrationTrack()}, {}, 1);
        EXPECT_THAT(receiver.receive(), IsEmpty());
    }
    hosted->handleUpdate({makeCalibrationTrack()}, {}, 1);
    EXPECT_THAT(receiver.receive(), SizeIs(1));
}

TEST_F(Autocalibration, RunsInAHostOfAnotherNameThatSaysSo) {
    const SocketPath path("/tmp/autocalibration.sock");
    DatagramReceiver receiver(path.get());
    Veskar::setCalledFromHostApplication(true);
    AutocalibrationHandler hosted(makeCalibrationConfig());
    Veskar::setCalledFromHostApplication(std::nullopt);
    hosted.handleUpdate({makeCalibrationTrack()}, {}, 1);
    EXPECT_THAT(receiver.receive(), SizeIs(1));
}
