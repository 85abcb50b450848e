// SPDX-License-Identifier: Apache-2.0
// A camera that is turned is seen at once, without a fit.
#include <veskar-host/Projection.h>

#include "KnownErrors.h"
#include "calibrate/MountingShift.h"

#include <optional>

#include <gtest/gtest.h>

using namespace Workbench;
using VeskarTest::KnownErrors;
using VeskarTest::simulated;

namespace {

std::optional<MountingShift> shiftOf(const KnownErrors& recording) {
    return mountingShift(recording.header, recording.scene());
}

TEST(MountingShift, IsThatOfTheCamera) {
    for (const double yaw : {-6.0, 3.0}) {
        const auto shift = shiftOf(simulated("perimeter", 200.0, [&](Scenario& scenario) {
            scenario.video.mountingError.yaw = yaw;
            scenario.video.mountingError.pitch = 2.0;
        }));
        ASSERT_TRUE(shift);
        EXPECT_NEAR(degrees(shift->yaw.value), yaw, 0.2);
        EXPECT_NEAR(degrees(shift->pitch.value), 2.0, 0.3);
        EXPECT_GT(shift->yaw.std, 0.0);
        EXPECT_LT(degrees(shift->yaw.std), 0.2);
        EXPECT_GE(shift->clusters, 12u);
    }
}

TEST(MountingShift, CountsAChangeOfHeightAsPitch) {
    const auto shift = shiftOf(simulated("perimeter", 200.0, [](Scenario& scenario) {
        scenario.video.mountingError.position[2] = -1.0;
    }));
    ASSERT_TRUE(shift);
    // One metre at 15 to 40 m: objects appear too high.
    EXPECT_GT(degrees(shift->pitch.value), 1.4);
    EXPECT_LT(degrees(shift->pitch.value), 4.0);
    EXPECT_NEAR(degrees(shift->yaw.value), 0.0, 0.2);
}

TEST(MountingShift, IsSmallWhereTheInstallationIsRight) {
    for (const char* const scenario : {"perimeter", "crowd", "gate"}) {
        SCOPED_TRACE(scenario);
        const auto shift = shiftOf(simulated(scenario, 120.0, [](Scenario&) {}));
        ASSERT_TRUE(shift);
        EXPECT_NEAR(degrees(shift->yaw.value), 0.0, 0.3);
        EXPECT_NEAR(degrees(shift->pitch.value), 0.0, 0.5);
    }
}

TEST(MountingShift, IsUnknownWithoutObjects) {
    EXPECT_FALSE(shiftOf(
        simulated("perimeter", 60.0, [](Scenario& scenario) { scenario.objects.clear(); })));
}

}  // namespace
