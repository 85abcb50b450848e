// SPDX-License-Identifier: Apache-2.0
// The neighbourhood of a placement that is far from the stated one.
#include <veskar-host/Projection.h>

#include "KnownErrors.h"
#include "calibrate/CoarseStart.h"

#include <gtest/gtest.h>

using namespace Workbench;

namespace {

TEST(CoarseStart, ReachesEveryCornerOfItsRange) {
    for (const double sign : {-1.0, 1.0}) {
        for (const double lag : {-1.0, 1.0}) {
            const VeskarTest::KnownErrors recording =
                VeskarTest::simulated("perimeter", 90.0, [&](Scenario& scenario) {
                    scenario.video.mountingError.yaw = 10.0 * sign;
                    scenario.video.mountingError.pitch = -5.0 * sign;
                    scenario.radarSensor.timestampError = lag;
                });
            const Placement start = coarseStart(recording.header, {recording.scene()});
            EXPECT_NEAR(degrees(start[indexOf(MountingParameter::CameraYaw)]), 10.0 * sign, 1.5)
                << lag;
            EXPECT_NEAR(start[indexOf(MountingParameter::Lag)], lag, 0.35) << sign;
        }
    }
}

TEST(CoarseStart, StaysWhereThereIsNothingToSee) {
    const VeskarTest::KnownErrors recording = VeskarTest::simulated(
        "perimeter", 2.0, [](Scenario& scenario) { scenario.objects.clear(); });
    const Placement start = coarseStart(recording.header, {recording.scene()});
    EXPECT_EQ(start[indexOf(MountingParameter::Lag)], 0.0);
    EXPECT_EQ(start[indexOf(MountingParameter::CameraHeight)], 0.0);
}

}  // namespace
