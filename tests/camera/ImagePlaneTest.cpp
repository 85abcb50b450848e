// SPDX-License-Identifier: Apache-2.0
#include <veskar/Camera.h>
#include <veskar/ImagePlane.h>

#include "support/Constants.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using VeskarTest::nan;

using Veskar::Camera;
using Veskar::intersectionWithImageBorder;
using Veskar::isInsideImage;
using Veskar::isOutsideImage;
using Veskar::transformCameraToScreen;
using Veskar::transformScreenToCamera;

constexpr double infinity = std::numeric_limits<double>::infinity();
const double justAboveOne = std::nextafter(1.0, 2.0);

Camera cameraOf(int width, int height) {
    return {Eigen::Vector2i(width, height), Eigen::Vector2d::Zero(), Eigen::Vector4d::Zero(),
            Eigen::Vector4d::Zero(),        Eigen::Vector2d::Zero(), false};
}

// Boxes

TEST(ImagePlaneBox, BecomesPixelsThatGrowDownward) {
    const Camera camera = cameraOf(1920, 1080);
    Eigen::Vector4d box(-0.5, 0.25, 0.5, 0.75);
    transformCameraToScreen(box, camera);
    EXPECT_EQ(box, Eigen::Vector4d(480.0, 240.0, 270.0, -405.0));
}

TEST(ImagePlaneBox, PutsTheCornersOfTheImageWherePixelsHaveThem) {
    const Camera camera = cameraOf(1920, 1080);
    Eigen::Vector4d upperLeft(-1.0, 2.0, 1.0, 2.0);
    transformCameraToScreen(upperLeft, camera);
    EXPECT_EQ(upperLeft, Eigen::Vector4d(0.0, 1920.0, 0.0, -1080.0));
    Eigen::Vector4d lowerRight(1.0, 0.0, -1.0, 0.0);
    transformCameraToScreen(lowerRight, camera);
    EXPECT_EQ(lowerRight, Eigen::Vector4d(1920.0, 0.0, 1080.0, 0.0));
}

TEST(ImagePlaneBox, BecomesNormalisedAgain) {
    const Camera camera = cameraOf(1920, 1080);
    Eigen::Vector4d box(480.0, 240.0, 270.0, -405.0);
    transformScreenToCamera(box, camera);
    EXPECT_EQ(box, Eigen::Vector4d(-0.5, 0.25, 0.5, 0.75));
}

TEST(ImagePlaneBox, IsUnchangedByThereAndBack) {
    std::mt19937 random(42);
    std::uniform_real_distribution<double> coordinate(-3.0, 3.0);
    std::uniform_int_distribution<int> pixels(1, 5000);
    for (int round = 0; round < 1000; ++round) {
        const Camera camera = cameraOf(pixels(random), pixels(random));
        const Eigen::Vector4d box(coordinate(random), coordinate(random), coordinate(random),
                                  coordinate(random));
        Eigen::Vector4d moved = box;
        transformCameraToScreen(moved, camera);
        transformScreenToCamera(moved, camera);
        ASSERT_LT((moved - box).norm(), 1e-14);
        transformScreenToCamera(moved, camera);
        transformCameraToScreen(moved, camera);
        ASSERT_LT((moved - box).norm(), 1e-11);
    }
}

TEST(ImagePlaneBox, FollowsTheResolutionThatIsSet) {
    Camera camera = cameraOf(1920, 1080);
    camera.setResolution(200, 100);
    Eigen::Vector4d box(0.0, 1.0, 0.0, 1.0);
    transformCameraToScreen(box, camera);
    EXPECT_EQ(box, Eigen::Vector4d(100.0, 100.0, 50.0, -50.0));
}

// Inside and outside

TEST(ImagePlanePoint, IsInsideOnTheBorder) {
    for (const double side : {-1.0, 1.0}) {
        EXPECT_TRUE(isInsideImage(side, 0.0));
        EXPECT_TRUE(isInsideImage(0.0, side));
        EXPECT_TRUE(isInsideImage(side, -side));
    }
    EXPECT_TRUE(isInsideImage(0.0, 0.0));
}

TEST(ImagePlanePoint, IsOutsideJustBeyondTheBorder) {
    EXPECT_FALSE(isInsideImage(1.0000001, 0.0));
    for (const double beyond : {justAboveOne, -justAboveOne, infinity, -infinity}) {
        EXPECT_FALSE(isInsideImage(beyond, 0.0));
        EXPECT_FALSE(isInsideImage(0.0, beyond));
    }
}

TEST(ImagePlanePoint, IsOutsideWithoutACoordinate) {
    EXPECT_FALSE(isInsideImage(nan, 0.0));
    EXPECT_FALSE(isInsideImage(0.0, nan));
}

TEST(ImagePlanePoint, IsOutsideExactlyWhenNotInside) {
    const double coordinates[] = {-infinity, -2.0, -justAboveOne, -1.0, 0.0,
                                  1.0,       2.0,  justAboveOne,  nan};
    for (const double a : coordinates) {
        for (const double b : coordinates) {
            EXPECT_NE(isInsideImage(a, b), isOutsideImage(a, b)) << a << ' ' << b;
        }
    }
}

// Where a segment enters; results are (second coordinate, first coordinate)

MATCHER_P2(IsPoint, second, first, "") {
    return arg[0] == second && arg[1] == first;
}

TEST(ImageBorder, RefusesASegmentThatDoesNotEnter) {
    const auto message = testing::ThrowsMessage<std::runtime_error>(
        "The first point must be outside and the second point must be inside the image.");
    EXPECT_THAT([] { intersectionWithImageBorder(0.0, 0.0, 0.5, 0.5); }, message);
    EXPECT_THAT([] { intersectionWithImageBorder(1.0, -1.0, 0.5, 0.5); }, message);
    EXPECT_THAT([] { intersectionWithImageBorder(-2.0, 0.0, 2.0, 0.0); }, message);
    EXPECT_THAT([] { intersectionWithImageBorder(0.0, 0.0, 2.0, 0.0); }, message);
    EXPECT_THAT([] { intersectionWithImageBorder(-2.0, 0.0, nan, 0.0); }, message);
}

TEST(ImageBorder, AcceptsASecondPointOnTheBorder) {
    EXPECT_THAT(intersectionWithImageBorder(-2.0, 0.0, 1.0, 0.0), IsPoint(0.0, -1.0));
}

TEST(ImageBorder, ReturnsTheSecondCoordinateFirst) {
    EXPECT_THAT(intersectionWithImageBorder(-2.0, 0.0, 0.0, 0.0), IsPoint(0.0, -1.0));
    EXPECT_THAT(intersectionWithImageBorder(-2.0, 1.0, 0.0, 0.0), IsPoint(0.5, -1.0));
}

TEST(ImageBorder, IsMetOnEverySide) {
    EXPECT_THAT(intersectionWithImageBorder(-3.0, 0.5, 0.0, 0.5), IsPoint(0.5, -1.0));
    EXPECT_THAT(intersectionWithImageBorder(3.0, 0.5, 0.0, 0.5), IsPoint(0.5, 1.0));
    EXPECT_THAT(intersectionWithImageBorder(0.5, -2.0, 0.25, 0.0), IsPoint(-1.0, 0.375));
    EXPECT_THAT(intersectionWithImageBorder(0.5, 2.0, 0.25, 0.0), IsPoint(1.0, 0.375));
}

TEST(ImageBorder, IsMetAboveOrBelowFromBeyondACorner) {
    EXPECT_THAT(intersectionWithImageBorder(-1.5, 3.0, 0.0, 0.0), IsPoint(1.0, -0.5));
    EXPECT_THAT(intersectionWithImageBorder(-1.5, -3.0, 0.0, 0.0), IsPoint(-1.0, -0.5));
    EXPECT_THAT(intersectionWithImageBorder(1.5, 3.0, 0.0, 0.0), IsPoint(1.0, 0.5));
    EXPECT_THAT(intersectionWithImageBorder(1.5, -3.0, 0.0, 0.0), IsPoint(-1.0, 0.5));
}

TEST(ImageBorder, IsMetOnTheSideFromBeyondACorner) {
    EXPECT_THAT(intersectionWithImageBorder(-2.0, 1.5, 0.0, 0.0), IsPoint(0.75, -1.0));
    EXPECT_THAT(intersectionWithImageBorder(2.0, -1.5, 0.0, 0.0), IsPoint(-0.75, 1.0));
}

TEST(ImageBorder, IsMetInACorner) {
    EXPECT_THAT(intersectionWithImageBorder(-2.0, 2.0, 0.0, 0.0), IsPoint(1.0, -1.0));
    EXPECT_THAT(intersectionWithImageBorder(2.0, -2.0, 0.0, 0.0), IsPoint(-1.0, 1.0));
}

TEST(ImageBorder, KeepsTheFirstCoordinateOfAVerticalSegment) {
    EXPECT_THAT(intersectionWithImageBorder(0.25, 2.0, 0.25, 0.0), IsPoint(1.0, 0.25));
    EXPECT_THAT(intersectionWithImageBorder(0.25, -2.0, 0.25, 0.0), IsPoint(-1.0, 0.25));
    EXPECT_THAT(intersectionWithImageBorder(0.0, 2.0, 9e-7, 0.0), IsPoint(1.0, 0.0));
    EXPECT_THAT(intersectionWithImageBorder(9e-7, -2.0, 0.0, 0.0), IsPoint(-1.0, 9e-7));
}

TEST(ImageBorder, FollowsASegmentThatIsVerticalJustNotEnough) {
    // At a difference of exactly 1e-6, half of it remains at half the height.
    EXPECT_THAT(intersectionWithImageBorder(0.0, 2.0, 1e-6, 0.0), IsPoint(1.0, 5e-7));
}

TEST(ImageBorder, PutsAVerticalSegmentBesideTheImageInTheMiddle) {
    const double beside = 1.0 + 5e-7;
    EXPECT_THAT(intersectionWithImageBorder(beside, 0.5, 1.0, 0.5), IsPoint(0.0, beside));
    EXPECT_THAT(intersectionWithImageBorder(-beside, 1.0, -1.0, -1.0), IsPoint(0.0, -beside));
}

TEST(ImageBorder, KeepsACrossingThatRoundingPutsBeyondACorner) {
    constexpr double beyond = 1.0000000000000002;
    EXPECT_THAT(intersectionWithImageBorder(-22876.993364823993, 0.8905413911078446, -1.0, 1.0),
                IsPoint(beyond, -1.0));
    EXPECT_THAT(intersectionWithImageBorder(22876.993364823993, 0.8905413911078446, 1.0, 1.0),
                IsPoint(beyond, 1.0));
}

TEST(ImageBorder, KeepsTheSideOfASegmentFromInfinitelyFar) {
    const Eigen::Vector2d left = intersectionWithImageBorder(-infinity, 0.5, 0.0, 0.0);
    EXPECT_TRUE(std::isnan(left[0]));
    EXPECT_EQ(left[1], -1.0);
    const Eigen::Vector2d right = intersectionWithImageBorder(infinity, 0.5, 0.0, 0.0);
    EXPECT_TRUE(std::isnan(right[0]));
    EXPECT_EQ(right[1], 1.0);
}

TEST(ImageBorder, AnswersTheMiddleForAPointWithoutFirstCoordinate) {
    EXPECT_THAT(intersectionWithImageBorder(nan, 0.5, 0.0, 0.0), IsPoint(0.0, 0.0));
}

/// The fraction of the segment at which it enters -1..1 in both coordinates (Liang and Barsky
/// 1984).
long double entryOf(double a1, double b1, double a2, double b2) {
    long double entry = 0.0L;
    const auto clip = [&entry](long double from, long double to) {
        if (from < -1.0L) {
            entry = std::max(entry, (-1.0L - from) / (to - from));
        } else if (from > 1.0L) {
            entry = std::max(entry, (1.0L - from) / (to - from));
        }
    };
    clip(a1, a2);
    clip(b1, b2);
    return entry;
}

TEST(ImageBorder, AgreesWithClippingTheSegment) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> anywhere(-4.0, 4.0);
    std::uniform_real_distribution<double> inside(-1.0, 1.0);
    int compared = 0;
    while (compared < 5000) {
        const double a1 = anywhere(random);
        const double b1 = anywhere(random);
        const double a2 = inside(random);
        const double b2 = inside(random);
        if (isInsideImage(a1, b1) || std::abs(a2 - a1) < 1e-3) {
            continue;
        }
        const long double entry = entryOf(a1, b1, a2, b2);
        const Eigen::Vector2d crossing = intersectionWithImageBorder(a1, b1, a2, b2);
        ASSERT_NEAR(crossing[0], static_cast<double>(b1 + entry * (b2 - b1)), 1e-9);
        ASSERT_NEAR(crossing[1], static_cast<double>(a1 + entry * (a2 - a1)), 1e-9);
        ++compared;
    }
}

}  // namespace
