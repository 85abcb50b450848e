// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>
#include <veskar-host/Projection.h>

#include "Process.h"
#include "import/Kitti.h"

#include <cmath>

#include <gtest/gtest.h>

namespace {

Workbench::KittiOptions sample() {
    Workbench::KittiOptions options;
    options.labels = VeskarTest::dataFile("kitti.labels.txt");
    options.calibration = VeskarTest::dataFile("kitti.calibration.txt");
    return options;
}

const Workbench::SensorFrame& frameAt(const Workbench::ImportedRecording& recording,
                                      Veskar::Source source, std::size_t number) {
    const Workbench::SensorFrame& frame =
        recording.frames.at(2 * number + (source == Veskar::Radar ? 1 : 0));
    EXPECT_EQ(frame.source, source);
    return frame;
}

std::string faultOf(const std::string& labels, const std::string& calibration) {
    const VeskarTest::TemporaryDirectory directory;
    VeskarTest::spill(directory / "l", labels);
    VeskarTest::spill(directory / "c", calibration);
    Workbench::KittiOptions options;
    options.labels = directory / "l";
    options.calibration = directory / "c";
    try {
        importKitti(options);
    } catch (const Veskar::Host::InputError& error) {
        const std::string text = error.what();
        return text.substr(text.rfind('/') + 1);
    }
    return "no fault";
}

const std::string calibrationLine = "P2: 700 0 600 0 0 700 180 0 0 0 1 0\n";
const std::string labelLine = "0 1 Car 0 0 -1.5 600 180 660 225 1.5 1.6 4 0.6 1.65 25 -1.57\n";

}  // namespace

TEST(Kitti, BoxesAndIdsBecomeVideoTracks) {
    const auto recording = importKitti(sample());
    const auto& tracks = frameAt(recording, Veskar::VideoObject, 0).tracks;
    ASSERT_EQ(tracks.size(), 2u);
    const auto& car = std::get<Workbench::VideoReport>(tracks[0]);
    EXPECT_EQ(car.id, 1);
    EXPECT_EQ(car.labels.objectClass.name, "car");
    EXPECT_NEAR(car.box.left, 2.0 * 600.0 / 1242.0 - 1.0, 1e-12);
    EXPECT_NEAR(car.box.right, 2.0 * 660.0 / 1242.0 - 1.0, 1e-12);
    EXPECT_NEAR(car.box.top, 1.0 - 2.0 * 180.0 / 375.0, 1e-12);
    EXPECT_NEAR(car.box.bottom, 1.0 - 2.0 * 225.0 / 375.0, 1e-12);
    EXPECT_EQ(std::get<Workbench::VideoReport>(tracks[1]).labels.objectClass.name, "human");
}

TEST(Kitti, TheCameraIsThePinholeOfTheCalibration) {
    const auto recording = importKitti(sample());
    const Workbench::CameraSetup& camera = recording.header.camera;
    EXPECT_TRUE(camera.bdc);
    EXPECT_NEAR(std::tan(camera.fieldOfView[0]), 621.0 / 721.5377, 1e-12);
    EXPECT_NEAR(camera.sensorOffset[0], 609.5593 / 621.0 - 1.0, 1e-12);
    EXPECT_NEAR(camera.sensorOffset[1], 1.0 - 172.854 / 187.5, 1e-12);
    // A pixel's ray: (u - cx) / f to the right, (v - cy) / f down.
    const Workbench::Projection projection(camera.build());
    const Eigen::Vector3d ray =
        projection.ray(2.0 * 700.0 / 1242.0 - 1.0, 1.0 - 2.0 * 300.0 / 375.0);
    EXPECT_NEAR(-ray[1] / ray[0], (700.0 - 609.5593) / 721.5377, 1e-9);
    EXPECT_NEAR(-ray[2] / ray[0], (300.0 - 172.854) / 721.5377, 1e-9);
}

TEST(Kitti, WhatNobodyCanSeeIsNoVideoTrack) {
    const auto recording = importKitti(sample());
    EXPECT_EQ(frameAt(recording, Veskar::VideoObject, 1).tracks.size(), 2u);
    EXPECT_EQ(frameAt(recording, Veskar::VideoObject, 2).tracks.size(), 1u);
}

TEST(Kitti, FramesWithoutLabelsAreEmptyFrames) {
    const auto recording = importKitti(sample());
    EXPECT_EQ(recording.frames.size(), 10u);
    EXPECT_TRUE(frameAt(recording, Veskar::VideoObject, 3).tracks.empty());
    EXPECT_NEAR(recording.frames.back().time, 0.4, 1e-12);
}

TEST(Kitti, PositionsBecomeTruthBelowTheCamera) {
    const auto recording = importKitti(sample());
    const Workbench::TruthObject& car = recording.truth.at(1).objects.at(0);
    EXPECT_EQ(car.id, 1);
    // 24 m ahead, 0.6 m to the right in the label's frame; the colour camera is 0.06 m left of its
    // origin.
    EXPECT_NEAR((*car.centre)[0], 24.0, 1e-9);
    EXPECT_NEAR((*car.centre)[1], -0.6 - 44.85728 / 721.5377, 1e-9);
    // It is oriented along the line of sight: the near end is half its length nearer.
    EXPECT_NEAR(car.position[0], 22.0, 0.01);
    EXPECT_NEAR(car.velocity[0], -10.0, 1e-6);
}

TEST(Kitti, TheMadeRadarSeesThePositionsWithinItsNoise) {
    Workbench::KittiOptions options = sample();
    options.detectionProbability = 1.0;
    const auto recording = importKitti(options);
    const auto& tracks = frameAt(recording, Veskar::Radar, 0).tracks;
    ASSERT_EQ(tracks.size(), 2u);
    const auto& car = std::get<Workbench::RadarReport>(tracks[0]);
    EXPECT_NEAR(car.range, std::hypot(23.0, 1.65), 1.5);
    EXPECT_NEAR(car.azimuth, 1.6, 5.0);
    options.detectionProbability = 0.0;
    EXPECT_TRUE(frameAt(importKitti(options), Veskar::Radar, 1).tracks.empty());
}

TEST(Kitti, TheSeedDrawsTheNoise) {
    Workbench::KittiOptions options = sample();
    options.detectionProbability = 1.0;
    const auto range = [&] {
        return std::get<Workbench::RadarReport>(
                   frameAt(importKitti(options), Veskar::Radar, 0).tracks.at(0))
            .range;
    };
    const double first = range();
    EXPECT_EQ(range(), first);
    options.seed = 2;
    EXPECT_NE(range(), first);
}

TEST(Kitti, SaysThatTheFilesHaveChangedPlaces) {
    EXPECT_EQ(faultOf("P0: 1 2 3\n" + calibrationLine, labelLine),
              "c: these are labels, not a calibration: the two files have changed places, the "
              "labels come first");
    EXPECT_EQ(faultOf("P0: 1 2 3\n" + calibrationLine, calibrationLine),
              "l: this is a calibration, not labels");
}

TEST(Kitti, ATypeWithoutClassIsNamedOnce) {
    const VeskarTest::TemporaryDirectory directory;
    VeskarTest::spill(directory / "l",
                      "0 1 Misc 0 0 -1.5 600 180 660 225 1.5 1.6 4 0.6 1.65 25 -1.57\n"
                      "1 1 Misc 0 0 -1.5 600 180 660 225 1.5 1.6 4 0.6 1.65 25 -1.57\n"
                      "1 2 Van 0 0 -1.5 400 180 460 225 1.5 1.6 4 -5 1.65 25 -1.57\n");
    VeskarTest::spill(directory / "c", calibrationLine);
    Workbench::KittiOptions options;
    options.labels = directory / "l";
    options.calibration = directory / "c";
    const auto recording = importKitti(options);
    ASSERT_EQ(recording.warnings.size(), 1U);
    EXPECT_EQ(recording.warnings[0].substr(0, 12), "class \"Misc\"");
    EXPECT_EQ(recording.truth.at(1).objects.at(0).className, "unknown");
    EXPECT_EQ(recording.truth.at(1).objects.at(1).className, "vehicle_other");
}

TEST(Kitti, TruthIsCompleteUnlessSaidOtherwise) {
    Workbench::KittiOptions options = sample();
    EXPECT_EQ(importKitti(options).header.truth, Workbench::TruthKind::Complete);
    options.isTruthComplete = false;
    EXPECT_EQ(importKitti(options).header.truth, Workbench::TruthKind::Incomplete);
}

TEST(Kitti, SaysWhatIsWrong) {
    EXPECT_EQ(faultOf(labelLine, "P0: 1 2 3\n"), "c: no line P2");
    EXPECT_EQ(faultOf(labelLine, "\nP2: 700 0 x\n"), "c:2: expected 12 numbers after P2");
    EXPECT_EQ(faultOf("", calibrationLine), "l: no labels");
    EXPECT_EQ(faultOf(labelLine + "1 1 Car 0 0\n", calibrationLine),
              "l:2: expected a frame, an id, a type and 14 numbers");
    EXPECT_EQ(faultOf(labelLine + labelLine, calibrationLine), "l:2: id 1 occurs twice in frame 0");
}

TEST(Kitti, RefusesNumbersThatNoCameraSees) {
    const auto label = [](const std::string& frame, const std::string& box, const std::string& size,
                          const std::string& location) {
        return frame + " 1 Car 0 0 -1.5 " + box + " " + size + " " + location + " -1.57\n";
    };
    const std::string box = "600 180 660 225";
    const std::string size = "1.5 1.6 4";
    const std::string location = "0.6 1.65 25";
    EXPECT_EQ(faultOf(label("0", box, size, location), calibrationLine), "no fault");
    for (const std::string& bad :
         {label("2147483647", box, size, location), label("100000", box, size, location),
          label("0", "600 180 1e300 225", size, location), label("0", box, "1.5 -1.6 4", location),
          label("0", box, "1.5 1.6 -4", location), label("0", box, "-1 1.6 4", location),
          label("0", box, "1.5 1.6 1e9", location), label("0", box, size, "1e200 1.65 25")}) {
        EXPECT_EQ(faultOf(bad, calibrationLine), "l:1: a number is out of range") << bad;
    }
    // DontCare objects have neither size nor position.
    EXPECT_EQ(faultOf(labelLine + "0 -1 DontCare -1 -1 -10 500 170 520 190 -1 -1 -1 -1000 -1000 "
                                  "-1000 -10\n",
                      calibrationLine),
              "no fault");
    EXPECT_EQ(faultOf(labelLine, "P2: 700 0 1e9 0 0 700 180 0 0 0 1 0\n"),
              "c:1: a number is out of range");
    EXPECT_EQ(faultOf(labelLine, "P2: 1e-300 0 600 1 0 700 180 0 0 0 1 0\n"),
              "c:1: a number is out of range");
}
