// SPDX-License-Identifier: Apache-2.0
#include "simulate/tracker/PlanarTracker.h"
#include "simulate/tracker/SensorTrackers.h"

#include <cmath>
#include <map>
#include <vector>

#include <gtest/gtest.h>

using Workbench::PlanarDetection;
using Workbench::PlanarTracker;

namespace {

PlanarDetection at(double x, double y) {
    return {{x, y}, 0.01 * Eigen::Matrix2d::Identity(), {}};
}

}  // namespace

TEST(PlanarFilter, FollowsTheTextbookForOneUpdate) {
    const Eigen::Matrix2d R = 4.0 * Eigen::Matrix2d::Identity();
    Workbench::PlanarFilter filter({0.0, 0.0}, R, {1.0, 0.0}, 9.0 * Eigen::Matrix2d::Identity());
    filter.predict(2.0, 0.5);
    // Variance of x: 4 + 2^2 9 + (2^2 / 2)^2 0.5^2 = 41; gain 41 / 45.
    EXPECT_NEAR(filter.squaredDistance({5.0, 0.0}, R), 9.0 / 45.0, 1e-12);
    filter.update({5.0, 0.0}, R);
    EXPECT_NEAR(filter.position()[0], 2.0 + 41.0 / 45.0 * 3.0, 1e-12);
    // Covariance of x and vx: 2 * 9 + 2^3 / 2 * 0.25 = 19.
    EXPECT_NEAR(filter.velocity()[0], 1.0 + 19.0 / 45.0 * 3.0, 1e-12);
    EXPECT_NEAR(filter.velocity()[1], 0.0, 1e-12);
}

TEST(PlanarTracker, FollowsAnObjectUnderOneId) {
    PlanarTracker tracker({});
    for (int i = 0; i < 30; ++i) {
        tracker.update(0.1 * i, {at(0.15 * i, 5.0)});
        ASSERT_EQ(tracker.tracks().size(), 1u);
    }
    const Workbench::PlanarTrack& track = tracker.tracks().front();
    EXPECT_EQ(track.id, 1);
    EXPECT_EQ(track.hits, 30);
    EXPECT_NEAR(track.filter.velocity()[0], 1.5, 0.01);
    EXPECT_EQ(track.born, 0.0);
}

TEST(PlanarTracker, ConfirmsAtTheThirdDetection) {
    PlanarTracker tracker({});
    tracker.update(0.0, {at(0.0, 0.0)});
    tracker.update(0.1, {at(0.0, 0.0)});
    EXPECT_FALSE(tracker.isConfirmed(tracker.tracks().front()));
    tracker.update(0.2, {at(0.0, 0.0)});
    EXPECT_TRUE(tracker.isConfirmed(tracker.tracks().front()));
}

TEST(PlanarTracker, LetsTentativeTracksGoSoonerThanConfirmedOnes) {
    PlanarTracker tracker({});
    for (const double time : {0.0, 0.1, 0.2}) {
        tracker.update(time, {at(0.0, 0.0)});
    }
    tracker.update(0.3, {at(50.0, 0.0)});
    tracker.update(0.5, {});
    EXPECT_EQ(tracker.tracks().size(), 2u);
    tracker.update(0.6, {});
    EXPECT_EQ(tracker.tracks().size(), 1u);
    tracker.update(1.2, {});
    EXPECT_EQ(tracker.tracks().size(), 1u);
    tracker.update(1.21, {});
    EXPECT_TRUE(tracker.tracks().empty());
}

TEST(PlanarTracker, AssignsByTheBestTotalAndNotByTheNearest) {
    Workbench::TrackerParameters parameters;
    parameters.initialVelocityStd = 20.0;
    PlanarTracker tracker(parameters);
    tracker.update(0.0, {at(0.0, 0.0), at(1.0, 0.0)});
    // The second detection is nearest to both tracks; only pairing in order has a small total cost.
    tracker.update(0.1, {at(0.9, 0.0), at(2.0, 0.0)});
    ASSERT_EQ(tracker.tracks().size(), 2u);
    EXPECT_EQ(tracker.tracks()[0].detection, 0u);
    EXPECT_EQ(tracker.tracks()[1].detection, 1u);
}

TEST(PlanarTracker, StartsATrackWithTheMeasuredVelocity) {
    PlanarTracker tracker({});
    PlanarDetection detection = at(10.0, 0.0);
    detection.velocity = {{-2.0, 0.0}, 0.04 * Eigen::Matrix2d::Identity()};
    tracker.update(0.0, {detection});
    EXPECT_EQ(tracker.tracks().front().filter.velocity(), Eigen::Vector2d(-2.0, 0.0));
}

TEST(PlanarTracker, RenumberingGivesANewIdToALivingTrack) {
    PlanarTracker tracker({});
    tracker.update(0.0, {at(0.0, 0.0)});
    tracker.renumber(0);
    EXPECT_EQ(tracker.tracks().front().id, 2);
    tracker.update(0.1, {at(0.0, 0.0), at(9.0, 9.0)});
    EXPECT_EQ(tracker.tracks()[0].id, 2);
    EXPECT_EQ(tracker.tracks()[1].id, 3);
}

TEST(PlanarTracker, HandlesMoreObjectsThanOneAssignmentHolds) {
    PlanarTracker tracker({});
    std::vector<PlanarDetection> detections;
    detections.reserve(700);
    for (int i = 0; i < 700; ++i) {
        const int column = i % 30;
        const int row = i / 30;
        detections.push_back(at(5.0 * column, 5.0 * row));
    }
    tracker.update(0.0, detections);
    tracker.update(0.1, detections);
    ASSERT_EQ(tracker.tracks().size(), 700u);
    for (std::size_t i = 0; i < 700; ++i) {
        EXPECT_EQ(tracker.tracks()[i].detection, i);
    }
}

TEST(RadarTracker, SpeaksInRangeAzimuthSpeedAndDirection) {
    Workbench::RadarTracker tracker(Workbench::RadarTracker::usualParameters(), 0.3, 1.0);
    std::vector<Workbench::Report> reports;
    for (int i = 0; i < 50; ++i) {
        // From right to left (y increases) 20 m ahead at 2 m/s.
        const double y = -5.0 + 0.2 * i;
        reports =
            tracker.update(0.1 * i, {{std::hypot(20.0, y), -std::atan2(y, 20.0) * 180.0 / M_PI}});
    }
    const auto& report = std::get<Workbench::RadarReport>(reports.at(0));
    EXPECT_NEAR(report.range, std::hypot(20.0, 4.8), 0.05);
    EXPECT_NEAR(report.azimuth, -std::atan2(4.8, 20.0) * 180.0 / M_PI, 0.2);
    EXPECT_NEAR(*report.speed, 2.0, 0.1);
    EXPECT_NEAR(*report.direction, -90.0, 3.0);
    EXPECT_TRUE(report.confirmed);
    reports = tracker.update(5.3, {});
    EXPECT_NEAR(baseOf(reports.at(0)).coasting, 0.4, 1e-9);
}

TEST(VideoTracker, SmoothsTheBoxAndKeepsTheClassAgainstOneFrame) {
    Workbench::VideoTracker tracker(Workbench::VideoTracker::usualParameters(), 0.01);
    Workbench::VideoDetection detection;
    detection.box = {-0.1, -0.3, 0.1, 0.3};
    detection.labels.objectClass = {"human", 0.9};
    std::vector<Workbench::Report> reports;
    for (int i = 0; i < 10; ++i) {
        reports = tracker.update(0.1 * i, {detection});
    }
    detection.labels.objectClass = {"animal", 0.9};
    reports = tracker.update(1.0, {detection});
    const auto& report = std::get<Workbench::VideoReport>(reports.at(0));
    EXPECT_NEAR(report.box.left, -0.1, 1e-6);
    EXPECT_NEAR(report.box.bottom, -0.3, 1e-6);
    EXPECT_NEAR(report.box.top, 0.3, 1e-6);
    EXPECT_NEAR(report.age, 1.0, 1e-12);
    EXPECT_EQ(report.labels.objectClass.name, "human");
    for (int i = 11; i < 20; ++i) {
        reports = tracker.update(0.1 * i, {detection});
    }
    EXPECT_EQ(std::get<Workbench::VideoReport>(reports.at(0)).labels.objectClass.name, "animal");
}

TEST(VideoTracker, KeepsTheBoxOfATrackThatIsRenamedWhileItIsNotSeen) {
    Workbench::VideoTracker tracker(Workbench::VideoTracker::usualParameters(), 0.01);
    Workbench::VideoDetection detection;
    detection.box = {-0.1, -0.3, 0.1, 0.3};
    detection.labels.objectClass = {"human", 0.9};
    for (int i = 0; i < 5; ++i) {
        tracker.update(0.1 * i, {detection});
    }
    tracker.planar().renumber(0);
    const auto reports = tracker.update(0.5, {});
    const auto& report = std::get<Workbench::VideoReport>(reports.at(0));
    EXPECT_EQ(report.id, 2);
    EXPECT_NEAR(report.box.right - report.box.left, 0.2, 1e-9);
    EXPECT_NEAR(report.box.top - report.box.bottom, 0.6, 1e-9);
    EXPECT_EQ(report.labels.objectClass.name, "human");
}
