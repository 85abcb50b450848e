// SPDX-License-Identifier: Apache-2.0
// The expected box of an object that the radar reports.
#include "KnownErrors.h"
#include "calibrate/ObjectModel.h"
#include "simulate/VideoSensor.h"

#include <cmath>

#include <gtest/gtest.h>

using namespace Workbench;

namespace {

class ObjectModelTest : public testing::Test {
protected:
    /// A look at a point of the ground.
    RadarLook look(const Eigen::Vector2d& place, double heading) const {
        RadarLook look;
        look.sighting.range = std::hypot(place.norm(), stated.radar.mounting.position[2]);
        look.sighting.azimuth = std::atan2(place[1], place[0]);
        look.heading = heading;
        look.hasHeading = true;
        return look;
    }

    Installation stated = VeskarTest::perimeterInstallation();
    ObjectModel model{stated, Placement::Zero()};
};

TEST_F(ObjectModelTest, PutsTheMiddleOfACarBehindItsNearestCorner) {
    for (const double heading : {0.6, -0.7, 2.2, 4.0}) {
        ObjectTraits traits;
        traits.size = {4.4, 1.8, 1.5};
        ObjectState car;
        car.traits = &traits;
        car.centre = {30.0, 4.0};
        car.heading = heading;
        const ImageBox box = VideoSensor::boxOf(model.projection(), car);
        // Reflections come from the nearest corner, a sixth of either half side inside.
        const Eigen::Vector2d corner = car.nearestPoint();
        const Eigen::Vector2d reflection = corner + 0.16 * (car.centre - corner);
        const auto cuboid = cuboidOf(look(reflection, heading), "car");
        ASSERT_TRUE(cuboid);
        const Eigen::Vector2d expected =
            model.middleAndBottom(model.reflection(look(reflection, heading).sighting), *cuboid);
        EXPECT_NEAR(expected[0], 0.5 * (box.left + box.right), 1e-3) << heading;
        EXPECT_NEAR(expected[1], box.bottom, 1e-3) << heading;
    }
}

TEST_F(ObjectModelTest, IsUnsureOfTheMiddleOfASideThatFacesTheRadar) {
    const auto facing = cuboidOf(look({20.0, 0.0}, 0.5 * 3.14159265), "truck");
    const auto corner = cuboidOf(look({20.0, 0.0}, 0.8), "truck");
    ASSERT_TRUE(facing && corner);
    EXPECT_GT(facing->spread[0], 2.0 * corner->spread[0]);
}

TEST_F(ObjectModelTest, GuessesOnlyTheHeadingOfSmallObjects) {
    RadarLook unknown = look({20.0, 0.0}, 0.0);
    unknown.hasHeading = false;
    EXPECT_TRUE(cuboidOf(unknown, "human"));
    EXPECT_FALSE(cuboidOf(unknown, "car"));
}

TEST_F(ObjectModelTest, IsLessSureOfDistantPlaces) {
    const auto near = cuboidOf(look({15.0, 0.0}, 0.3), "human");
    const auto far = cuboidOf(look({45.0, 0.0}, 0.3), "human");
    const RadarSighting nearSighting = look({15.0, 0.0}, 0.3).sighting;
    const RadarSighting farSighting = look({45.0, 0.0}, 0.3).sighting;
    // An error of range moves the foot of a near object more in the image.
    EXPECT_GT(model.covarianceOf(nearSighting, *near)(1, 1),
              4.0 * model.covarianceOf(farSighting, *far)(1, 1));
}

}  // namespace
