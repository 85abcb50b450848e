// SPDX-License-Identifier: Apache-2.0
#include "Installation.h"
#include "export/TruthTracks.h"

#include <cmath>

#include <gtest/gtest.h>

using Workbench::FusedTrack;
using Workbench::TruthFrame;
using Workbench::TruthObject;

namespace {

class TruthTracks : public testing::Test {
protected:
    FusedTrack read(const TruthObject& object) {
        const Workbench::HostAdapter adapter(header, Veskar::Config::defaults());
        return Workbench::readTruth(TruthFrame{3.0, {object}}, adapter).tracks.at(0);
    }

    static TruthObject car() {
        TruthObject object;
        object.id = 7;
        object.className = "car";
        object.position = {30.0, 4.0};
        object.velocity = {0.0, -8.0};
        return object;
    }

    Workbench::RecordingHeader header = VeskarTest::installation();
};

TEST_F(TruthTracks, StandWhereTheObjectsAre) {
    header.site = Workbench::Site{55.7, 13.2, 0.0};
    const FusedTrack track = read(car());
    EXPECT_EQ(track.id, 7);
    EXPECT_TRUE(track.confirmed);
    EXPECT_EQ(track.labels.objectClass.name, "car");
    EXPECT_EQ(track.ground->position, Eigen::Vector2d(30.0, 4.0));
    EXPECT_EQ(track.ground->velocity, Eigen::Vector2d(0.0, -8.0));
    EXPECT_DOUBLE_EQ(*track.speed, 8.0);
    EXPECT_DOUBLE_EQ(*track.direction, 90.0);  // to the right
    EXPECT_GT(track.geo->latitude, 55.7);      // ahead is north, left is west
    EXPECT_LT(track.geo->longitude, 13.2);
}

TEST_F(TruthTracks, AppearInTheImageWhereTheCameraSees) {
    const Workbench::Projection camera(header.camera.build());
    const FusedTrack seen = read(car());
    EXPECT_EQ(seen.image, camera.position({30.0, 4.0, 0.0}));
    const double height = header.camera.mounting.position[2];
    EXPECT_NEAR(seen.range, std::sqrt(30.0 * 30.0 + 4.0 * 4.0 + height * height), 1e-9);
    EXPECT_NEAR(seen.rangeRate, -8.0 * 4.0 / seen.range, 1e-9);
    TruthObject behind = car();
    behind.position[0] = -30.0;
    EXPECT_TRUE(read(behind).image.array().isNaN().all());
}

TEST_F(TruthTracks, HaveTheBoxThatTheCameraDraws) {
    TruthObject object = car();
    object.size = Eigen::Vector3d(4.5, 1.8, 1.5);
    object.centre = Eigen::Vector2d(31.0, 4.0);
    const Workbench::Projection camera(header.camera.build());
    const auto heightOf = [&](double x) {
        return camera.position({x, 4.0, 1.5})[1] - camera.position({x, 4.0, 0.0})[1];
    };
    const auto box = read(object).box;
    EXPECT_GT(box.top - box.bottom, heightOf(32.0));
    const double across = box.right - box.left;  // it moves to the right and shows its long side
    object.velocity = {-8.0, 0.0};
    const auto coming = read(object).box;
    EXPECT_LT(coming.right - coming.left, 0.7 * across);
    object.velocity.setZero();
    const auto standing = read(object).box;
    EXPECT_LT(standing.right - standing.left, across);
    EXPECT_GT(standing.right - standing.left, coming.right - coming.left);
    object.centre = Eigen::Vector2d(-31.0, 4.0);
    EXPECT_TRUE(std::isnan(read(object).box.left));
}

TEST_F(TruthTracks, StateNothingThatATruthDoesNotState) {
    TruthObject object = car();
    object.velocity.setZero();
    const FusedTrack track = read(object);
    EXPECT_FALSE(track.direction);
    EXPECT_FALSE(track.geo);
    EXPECT_TRUE(std::isnan(track.age));
    EXPECT_TRUE(std::isnan(track.box.left));
    EXPECT_TRUE(track.ground->covariance.array().isNaN().all());
    EXPECT_TRUE(track.sensors.empty());
}

}  // namespace
