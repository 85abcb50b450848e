// SPDX-License-Identifier: Apache-2.0
#include "simulate/Motion.h"

#include <gtest/gtest.h>

using Workbench::Motion;
using Workbench::ObjectTraits;
using Workbench::PathMode;
using Workbench::Scenario;

namespace {

Scenario sceneWith(const ObjectTraits& object) {
    Scenario scenario;
    scenario.duration = 100.0;
    scenario.objects = {object};
    return scenario;
}

ObjectTraits walker(PathMode mode) {
    ObjectTraits object;
    object.mode = mode;
    object.path = {{10.0, 0.0}, {14.0, 0.0}, {14.0, 3.0}};
    object.minimumSpeed = object.maximumSpeed = 1.0;
    object.start = 2.0;
    return object;
}

Eigen::Vector2d placeAt(Motion& motion, double time) {
    return motion.at(time).at(0).centre;
}

}  // namespace

TEST(Motion, OnceAppearsAndDisappears) {
    const Scenario scenario = sceneWith(walker(PathMode::Once));
    Motion motion(scenario, 1);
    EXPECT_TRUE(motion.at(1.99).empty());
    EXPECT_EQ(placeAt(motion, 2.0), Eigen::Vector2d(10.0, 0.0));
    EXPECT_LT((placeAt(motion, 7.0) - Eigen::Vector2d(14.0, 1.0)).norm(), 1e-12);
    EXPECT_LT((motion.at(7.0).at(0).velocity - Eigen::Vector2d(0.0, 1.0)).norm(), 1e-12);
    EXPECT_TRUE(motion.at(9.01).empty());
}

TEST(Motion, LoopGoesOnFromTheLastPointToTheFirst) {
    const Scenario scenario = sceneWith(walker(PathMode::Loop));
    Motion motion(scenario, 1);
    // The way back is 5 m long.
    EXPECT_LT((placeAt(motion, 14.0) - Eigen::Vector2d(10.0, 0.0)).norm(), 1e-12);
    EXPECT_LT((placeAt(motion, 26.0) - Eigen::Vector2d(10.0, 0.0)).norm(), 1e-12);
}

TEST(Motion, BackAndForthTurnsRoundAtBothEnds) {
    const Scenario scenario = sceneWith(walker(PathMode::BackAndForth));
    Motion motion(scenario, 1);
    EXPECT_LT((placeAt(motion, 10.0) - Eigen::Vector2d(14.0, 2.0)).norm(), 1e-12);
    EXPECT_LT((placeAt(motion, 16.0) - Eigen::Vector2d(10.0, 0.0)).norm(), 1e-12);
    EXPECT_LT((placeAt(motion, 17.0) - Eigen::Vector2d(11.0, 0.0)).norm(), 1e-12);
}

TEST(Motion, PausesAtWayPoints) {
    ObjectTraits object = walker(PathMode::Once);
    object.pause = 3.0;
    const Scenario scenario = sceneWith(object);
    Motion motion(scenario, 1);
    EXPECT_EQ(motion.at(8.0).at(0).velocity, Eigen::Vector2d(0.0, 0.0));
    EXPECT_LT((placeAt(motion, 10.0) - Eigen::Vector2d(14.0, 1.0)).norm(), 1e-12);
}

TEST(Motion, StandsStillWhenAllWayPointsAreOne) {
    ObjectTraits object = walker(PathMode::Once);
    object.path = {{5.0, 1.0}, {5.0, 1.0}};
    const Scenario scenario = sceneWith(object);
    Motion motion(scenario, 1);
    EXPECT_EQ(placeAt(motion, 99.0), Eigen::Vector2d(5.0, 1.0));
}

TEST(Motion, CrowdStaysInItsAreaAndDependsOnTheSeed) {
    ObjectTraits object;
    object.mode = PathMode::Wander;
    object.areaMinimum = {10.0, -5.0};
    object.areaMaximum = {20.0, 5.0};
    object.count = 20;
    const Scenario scenario = sceneWith(object);
    Motion motion(scenario, 1);
    for (const double time : {0.0, 33.0, 100.0}) {
        const auto states = motion.at(time);
        ASSERT_EQ(states.size(), 20u);
        for (const auto& state : states) {
            EXPECT_TRUE(state.centre[0] >= 10.0 && state.centre[0] <= 20.0);
            EXPECT_TRUE(state.centre[1] >= -5.0 && state.centre[1] <= 5.0);
        }
    }
    Motion other(scenario, 2);
    Motion same(scenario, 1);
    Motion again(scenario, 1);
    EXPECT_NE(placeAt(other, 0.0), placeAt(same, 0.0));
    EXPECT_EQ(placeAt(again, 50.0), placeAt(same, 50.0));
}

TEST(ObjectState, NearestPointLiesOnTheFootprintTowardsTheDevice) {
    ObjectTraits car;
    car.size = {4.0, 2.0, 1.5};
    Workbench::ObjectState state;
    state.traits = &car;
    state.centre = {20.0, 0.0};
    EXPECT_LT((state.nearestPoint() - Eigen::Vector2d(18.0, 0.0)).norm(), 1e-12);
    state.heading = M_PI / 2.0;
    EXPECT_LT((state.nearestPoint() - Eigen::Vector2d(19.0, 0.0)).norm(), 1e-12);
    state.centre = {20.0, 10.0};
    EXPECT_LT((state.nearestPoint() - Eigen::Vector2d(19.0, 8.0)).norm(), 1e-12);
}

TEST(Motion, AWayOfAnyNumberOfLegsIsWalkedLegByLeg) {
    ObjectTraits object;
    object.mode = PathMode::BackAndForth;
    object.path = {{10.0, 0.0}, {10.002, 0.0}};
    object.minimumSpeed = object.maximumSpeed = 200.0;
    Scenario scenario = sceneWith(object);
    // 1e11 legs.
    scenario.duration = 1e6;
    Motion motion(scenario, 1);
    for (const double time : {0.0, 0.1, 0.2}) {
        EXPECT_NEAR(placeAt(motion, time)[0], 10.001, 0.001001);
    }
}
