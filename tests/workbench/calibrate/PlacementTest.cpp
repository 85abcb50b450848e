// SPDX-License-Identifier: Apache-2.0
// How errors of an installation are applied to it.
#include <veskar-host/Projection.h>

#include "KnownErrors.h"
#include "calibrate/Placement.h"

#include <gtest/gtest.h>

using namespace Workbench;

namespace {

TEST(Placement, AddsErrorsToThePoses) {
    const Installation stated = VeskarTest::perimeterInstallation();
    Placement errors = Placement::Zero();
    errors[indexOf(MountingParameter::CameraYaw)] = radians(2.0);
    errors[indexOf(MountingParameter::CameraPitch)] = radians(-1.0);
    errors[indexOf(MountingParameter::CameraRoll)] = radians(0.5);
    errors[indexOf(MountingParameter::CameraHeight)] = -0.4;
    errors[indexOf(MountingParameter::RadarYaw)] = radians(3.0);
    errors[indexOf(MountingParameter::RadarForward)] = 0.2;
    errors[indexOf(MountingParameter::RadarLeft)] = -0.3;
    const Installation actual = placed(stated, errors);
    EXPECT_NEAR(actual.camera.mounting.yaw, stated.camera.mounting.yaw + 2.0, 1e-12);
    EXPECT_NEAR(actual.camera.mounting.pitch, stated.camera.mounting.pitch - 1.0, 1e-12);
    EXPECT_NEAR(actual.camera.mounting.roll, stated.camera.mounting.roll + 0.5, 1e-12);
    EXPECT_NEAR(actual.camera.mounting.position[2], stated.camera.mounting.position[2] - 0.4,
                1e-12);
    EXPECT_NEAR(actual.radar.mounting.yaw, stated.radar.mounting.yaw + 3.0, 1e-12);
    EXPECT_NEAR(actual.radar.mounting.position[0], 0.2, 1e-12);
    EXPECT_NEAR(actual.radar.mounting.position[1], -0.3, 1e-12);
}

TEST(Placement, ScalesTheImageAboutTheOpticalCentre) {
    const Installation stated = VeskarTest::perimeterInstallation();
    Placement errors = Placement::Zero();
    errors[indexOf(MountingParameter::FocalScale)] = 0.05;
    const Projection before(stated.camera.build());
    const Projection after(placed(stated, errors).camera.build());
    const Eigen::Vector3d point(30.0, 5.0, 0.0);
    EXPECT_LT((after.position(point) - 1.05 * before.position(point)).norm(), 1e-9);
    // Both directions of the lens stay inverse to each other.
    const Eigen::Vector2d uv(0.4, -0.3);
    EXPECT_LT((after.ray(1.05 * uv[0], 1.05 * uv[1]) - before.ray(uv[0], uv[1])).norm(), 1e-9);
}

}  // namespace
