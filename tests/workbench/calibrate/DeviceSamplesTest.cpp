// SPDX-License-Identifier: Apache-2.0
// What the samples of a device tell of its installation.
#include <veskar-host/InputError.h>
#include <veskar-host/Projection.h>

#include "SamplingHost.h"
#include "calibrate/DeviceSamples.h"
#include "calibrate/SampleSocket.h"
#include "support/DatagramReceiver.h"

#include <chrono>
#include <cmath>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Workbench;
using testing::HasSubstr;
using testing::ThrowsMessage;
using VeskarTest::errorOf;
using VeskarTest::KnownErrors;
using VeskarTest::simulated;

namespace {

using Payloads = std::vector<Veskar::CalibrationPayload>;

/// @return what the fusion of a device sends
Payloads sentBy(const KnownErrors& recording) {
    const VeskarTest::SocketPath path("/tmp/autocalibration.sock");
    SampleSocket socket(path.get());
    std::thread host([&] { fuseAndSendSamples(recording); });
    Payloads payloads;
    // The last one is followed by silence.
    while (const auto datagram =
               socket.receive(std::chrono::steady_clock::now() + std::chrono::seconds(5))) {
        payloads.push_back(parseSamples(*datagram));
    }
    host.join();
    return payloads;
}

}  // namespace

TEST(DeviceSamples, TellPitchAndRoll) {
    const KnownErrors recording = simulated("perimeter", 300.0, [](Scenario& scenario) {
        scenario.video.mountingError.pitch = 0.8;
        scenario.video.mountingError.roll = 1.5;
    });
    const CalibrationResult result =
        calibrate(sentBy(recording), recording.header, toldBySamples());
    EXPECT_LT(errorOf(result, MountingParameter::CameraPitch, radians(0.8)), radians(0.3));
    EXPECT_LT(errorOf(result, MountingParameter::CameraRoll, radians(1.5)), radians(0.5));
    EXPECT_LT(errorOf(result, MountingParameter::CameraHeight, 0.0), 0.15);
    EXPECT_EQ(result.of(MountingParameter::CameraPitch).verdict, Verdict::Corrected);
    EXPECT_EQ(result.of(MountingParameter::CameraRoll).verdict, Verdict::Corrected);
    for (const MountingParameter parameter : allParameters()) {
        const bool isTold = toldBySamples()[static_cast<std::size_t>(parameter)];
        EXPECT_EQ(result.of(parameter).verdict == Verdict::NotAsked, !isTold)
            << traitsOf(parameter).name;
    }
    EXPECT_TRUE(std::isnan(result.before.bearing)) << "taken from the columns";
    EXPECT_LT(result.after.depression, 0.7 * result.before.depression);
}

TEST(DeviceSamples, TellTheHeight) {
    const KnownErrors recording = simulated("perimeter", 300.0, [](Scenario& scenario) {
        scenario.video.mountingError.position[2] = -0.4;
    });
    const CalibrationResult result =
        calibrate(sentBy(recording), recording.header, toldBySamples());
    EXPECT_LT(errorOf(result, MountingParameter::CameraPitch, 0.0), radians(0.25));
    EXPECT_LT(errorOf(result, MountingParameter::CameraRoll, 0.0), radians(0.5));
    EXPECT_LT(errorOf(result, MountingParameter::CameraHeight, -0.4), 0.12);
    EXPECT_EQ(result.of(MountingParameter::CameraHeight).verdict, Verdict::Corrected);
}

TEST(DeviceSamples, LeaveACorrectInstallationAlone) {
    const KnownErrors recording = simulated("perimeter", 300.0, [](Scenario&) {});
    const CalibrationResult result =
        calibrate(sentBy(recording), recording.header, toldBySamples());
    EXPECT_TRUE(result.isTold());
    EXPECT_FALSE(result.corrects());
}

TEST(DeviceSamples, TooFewTellNothing) {
    const CalibrationResult none =
        calibrate(Payloads{}, VeskarTest::perimeterInstallation(), toldBySamples());
    EXPECT_FALSE(none.isTold());
    EXPECT_EQ(none.samples, 0u);
}

TEST(DeviceSamples, LieInTheirColumnAtTheirRange) {
    const Installation stated = VeskarTest::perimeterInstallation();
    const Projection projection(stated.camera.build());
    const Eigen::Vector3d person(15.0, 4.0, 0.0);
    const Eigen::Vector2d seen = projection.position(person);
    const double range = (person - projection.origin()).norm();
    const CalibrationScene scene =
        sceneOf({{{{seen[0], seen[1], 7, range}}, 1'500'000'000}}, stated, Placement::Zero());
    EXPECT_FALSE(scene.hasBearings);
    ASSERT_EQ(scene.sightings.radar().size(), 1u);
    const RadarSighting& heard = scene.sightings.radar()[0].sightings.at(0);
    EXPECT_EQ(heard.time, 1.5);
    EXPECT_DOUBLE_EQ(heard.range, range);
    const Eigen::Vector3d offset = person - projection.origin();
    EXPECT_NEAR(heard.azimuth, std::atan2(offset[1], offset[0]), 1e-9);
    ASSERT_EQ(scene.sightings.video().size(), 1u);
    const Eigen::Vector4d& box = scene.sightings.video()[0].sightings.at(0).box;
    EXPECT_DOUBLE_EQ(box[0], seen[0]);
    EXPECT_DOUBLE_EQ(box[1], seen[1]);
    EXPECT_EQ(scene.sightings.video()[0].className(), "human");
}

TEST(DeviceSamples, AreReferredToTheStatedHeight) {
    const Installation stated = VeskarTest::perimeterInstallation();
    const Projection projection(stated.camera.build());
    Placement lowered = Placement::Zero();
    lowered[indexOf(MountingParameter::CameraHeight)] = -0.5;
    // The device, which assumes the stated height, states this range of what is 20 m away.
    const double range = std::hypot(20.0, projection.origin()[2]);
    const auto scene = sceneOf({{{{0.0, 0.0, 7, range}}, 0}}, stated, lowered);
    ASSERT_EQ(scene.sightings.radar().size(), 1u);
    EXPECT_NEAR(scene.sightings.radar()[0].sightings.at(0).azimuth, 0.0, 1e-9);
    ASSERT_EQ(scene.sightings.video().size(), 1u);
}

TEST(DeviceSamples, WithoutAPlaceOnTheGroundAreLeftOut) {
    const Installation stated = VeskarTest::perimeterInstallation();
    const double height = stated.camera.mounting.position[2];
    const double nan = std::nan("");
    for (const Veskar::CalibrationSample& sample :
         {Veskar::CalibrationSample{0.0, 0.0, 1, height},
          Veskar::CalibrationSample{0.0, 0.0, 1, -20.0},
          Veskar::CalibrationSample{0.0, 0.0, 1, nan}, Veskar::CalibrationSample{nan, 0.0, 1, 20.0},
          Veskar::CalibrationSample{0.0, nan, 1, 20.0}}) {
        EXPECT_TRUE(sceneOf({{{sample}, 0}}, stated, Placement::Zero()).sightings.radar().empty())
            << sample.u_video << " " << sample.v_video << " " << sample.r_radar;
    }
}

TEST(DeviceSamples, AreReadFromDatagrams) {
    const auto payload =
        parseSamples(R"({"radarTimestamp_ns":1500000000,"data":[)"
                     R"({"u_video":0.25,"v_video":-0.1,"id_radar":7,"r_radar":12.3457},)"
                     R"({"u_video":0,"v_video":0,"id_radar":-1,"r_radar":3}]})");
    EXPECT_EQ(payload.timestamp, 1'500'000'000);
    ASSERT_EQ(payload.data.size(), 2u);
    EXPECT_EQ(payload.data[0].u_video, 0.25);
    EXPECT_EQ(payload.data[0].v_video, -0.1);
    EXPECT_EQ(payload.data[0].id_radar, 7);
    EXPECT_EQ(payload.data[0].r_radar, 12.3457);
    EXPECT_EQ(payload.data[1].id_radar, -1);
    for (const char* const other :
         {"", "{", "[]", R"({"data":[]})", R"({"radarTimestamp_ns":"1","data":[]})",
          R"({"radarTimestamp_ns":1,"data":[{"u_video":0.25}]})"}) {
        EXPECT_THAT([&] { parseSamples(other); },
                    ThrowsMessage<InputError>(HasSubstr("no calibration samples")))
            << other;
    }
}
