// SPDX-License-Identifier: Apache-2.0
// Known errors of an installation are found, and nothing else.
#include <veskar-host/Projection.h>

#include "KnownErrors.h"
#include "calibrate/Calibration.h"

#include <cmath>

#include <gtest/gtest.h>

using namespace Workbench;
using VeskarTest::errorOf;
using VeskarTest::KnownErrors;
using VeskarTest::simulated;
using VeskarTest::usualParameters;

namespace {

CalibrationResult calibrated(const KnownErrors& recording,
                             const FreeParameters& asked = usualParameters()) {
    return calibrate(recording.header, {recording.scene()}, asked);
}

TEST(Calibration, FindsItsWayFromFar) {
    const CalibrationResult result =
        calibrated(simulated("perimeter", 200.0, [](Scenario& scenario) {
            scenario.video.mountingError.yaw = -10.0;
            scenario.video.mountingError.pitch = 5.0;
            scenario.video.mountingError.roll = -1.5;
            scenario.video.mountingError.position[2] = -1.0;
            scenario.radarSensor.timestampError = -1.0;
        }));
    EXPECT_LT(errorOf(result, MountingParameter::CameraYaw, radians(-10.0)), radians(0.15));
    EXPECT_LT(errorOf(result, MountingParameter::CameraPitch, radians(5.0)), radians(0.2));
    EXPECT_LT(errorOf(result, MountingParameter::CameraRoll, radians(-1.5)), radians(0.5));
    EXPECT_LT(errorOf(result, MountingParameter::CameraHeight, -1.0), 0.12);
    EXPECT_LT(errorOf(result, MountingParameter::Lag, -1.0), 0.025);
    for (const MountingParameter parameter : allParameters()) {
        if (traitsOf(parameter).isAskedFor) {
            EXPECT_EQ(result.of(parameter).verdict, Verdict::Corrected) << traitsOf(parameter).name;
        }
    }
    // Half of the time tells what holds in the other half.
    EXPECT_LT(result.heldOutAfter.whitened, 0.2 * result.heldOutBefore.whitened);
    EXPECT_LT(result.after.bearing, radians(1.0));
    EXPECT_GT(result.before.bearing, radians(8.0));
    // Height and pitch have similar effects.
    EXPECT_GT(std::abs(result.correlation(indexOf(MountingParameter::CameraHeight),
                                          indexOf(MountingParameter::CameraPitch))),
              0.3);
}

TEST(Calibration, LeavesACorrectInstallationAlone) {
    const CalibrationResult result = calibrated(simulated("perimeter", 200.0, [](Scenario&) {}));
    EXPECT_FALSE(result.corrects());
    EXPECT_TRUE(result.isTold());
    for (const MountingParameter parameter : allParameters()) {
        if (traitsOf(parameter).isAskedFor) {
            EXPECT_EQ(result.of(parameter).verdict, Verdict::AsStated) << traitsOf(parameter).name;
        }
    }
}

TEST(Calibration, ModelsTheOutlinesOfCars) {
    const CalibrationResult result = calibrated(simulated("gate", 200.0, [](Scenario& scenario) {
        scenario.video.mountingError.yaw = 1.0;
        scenario.video.mountingError.position[2] = 0.4;
    }));
    EXPECT_LT(errorOf(result, MountingParameter::CameraYaw, radians(1.0)), radians(0.15));
    EXPECT_LT(errorOf(result, MountingParameter::CameraPitch, 0.0), radians(0.2));
    EXPECT_LT(errorOf(result, MountingParameter::CameraHeight, 0.4), 0.12);
    EXPECT_LT(errorOf(result, MountingParameter::Lag, 0.0), 0.03);
}

TEST(Calibration, CombinesRecordings) {
    const auto turned = [](Scenario& scenario) { scenario.video.mountingError.yaw = 1.0; };
    const KnownErrors one = simulated("perimeter", 60.0, turned);
    const KnownErrors other = simulated("gate", 60.0, turned);
    const CalibrationResult alone = calibrate(one.header, {one.scene()}, usualParameters());
    const CalibrationResult both =
        calibrate(one.header, {one.scene(), other.scene()}, usualParameters());
    EXPECT_LT(both.of(MountingParameter::CameraYaw).std,
              alone.of(MountingParameter::CameraYaw).std);
    EXPECT_GT(both.clusters, alone.clusters);
    EXPECT_LT(errorOf(both, MountingParameter::CameraYaw, radians(1.0)), radians(0.25));
}

TEST(Calibration, TurnsTheRadarWhenTheCameraIsHeld) {
    FreeParameters asked = usualParameters();
    asked[static_cast<std::size_t>(MountingParameter::CameraYaw)] = false;
    asked[static_cast<std::size_t>(MountingParameter::RadarYaw)] = true;
    const CalibrationResult result = calibrated(
        simulated("perimeter", 200.0,
                  [](Scenario& scenario) { scenario.radarSensor.mountingError.yaw = 4.0; }),
        asked);
    EXPECT_LT(errorOf(result, MountingParameter::RadarYaw, radians(4.0)), radians(0.2));
    EXPECT_EQ(result.of(MountingParameter::RadarYaw).verdict, Verdict::Corrected);
    EXPECT_EQ(result.of(MountingParameter::CameraYaw).verdict, Verdict::NotAsked);
}

TEST(Calibration, CannotTellAnythingOfAnEmptyScene) {
    const CalibrationResult result = calibrated(
        simulated("perimeter", 200.0, [](Scenario& scenario) { scenario.objects.clear(); }));
    EXPECT_FALSE(result.isTold());
    EXPECT_FALSE(result.corrects());
}

TEST(Calibration, GivesNoWrongNumbersInFog) {
    const CalibrationResult result = calibrated(simulated(
        "night-fog", 60.0, [](Scenario& scenario) { scenario.video.mountingError.yaw = 3.0; }));
    for (const MountingParameter parameter : allParameters()) {
        const double truth = parameter == MountingParameter::CameraYaw ? radians(3.0) : 0.0;
        const CalibrationValue& value = result.of(parameter);
        if (value.verdict == Verdict::AsStated || value.verdict == Verdict::Corrected) {
            EXPECT_LT(errorOf(result, parameter, truth), 1.5 * value.interval)
                << traitsOf(parameter).name;
        }
    }
}

TEST(Calibration, CannotTellALagOfWhatStands) {
    const CalibrationResult result =
        calibrated(simulated("perimeter", 200.0, [](Scenario& scenario) {
            for (ObjectTraits& object : scenario.objects) {
                object.path = {object.path.front(),
                               object.path.front() + Eigen::Vector2d(1.0, 0.0)};
                object.mode = PathMode::Once;
                object.minimumSpeed = object.maximumSpeed = 1e-4;
            }
        }));
    EXPECT_EQ(result.of(MountingParameter::Lag).verdict, Verdict::CannotTell);
    EXPECT_FALSE(result.correction[indexOf(MountingParameter::Lag)] != 0.0);
}

TEST(Calibration, RefusesWhatDoesNotHoldInHeldOutTime) {
    KnownErrors recording = simulated("perimeter", 200.0, [](Scenario&) {});
    // The camera seems to turn to and fro every twenty seconds.
    for (SensorFrame& frame : recording.frames) {
        const bool isEven = static_cast<int>(frame.time / 20.0) % 2 == 0;
        for (Report& report : frame.tracks) {
            if (auto* seen = std::get_if<VideoReport>(&report)) {
                seen->box.left += isEven ? 0.032 : -0.008;
                seen->box.right += isEven ? 0.032 : -0.008;
            }
        }
    }
    const CalibrationResult result = calibrated(recording);
    EXPECT_FALSE(result.refusal.empty());
    EXPECT_FALSE(result.corrects());
    EXPECT_EQ(result.of(MountingParameter::CameraYaw).verdict, Verdict::CannotTell);
}

}  // namespace
