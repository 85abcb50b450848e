// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/Projection.h>

#include "KnownErrors.h"
#include "calibrate/WindowWatch.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using namespace Workbench;
using Veskar::Live::MountingState;
using VeskarTest::KnownErrors;
using VeskarTest::simulated;

namespace {

MountingShift shifted(double yaw, double pitch, double std = 0.1) {
    return {{radians(yaw), radians(std)}, {radians(pitch), radians(std)}, 20};
}

}  // namespace

TEST(MovementRule, WantsTheShiftTwiceInARow) {
    MovementRule rule(radians(1.0));
    EXPECT_FALSE(rule.judge(shifted(3.0, 0.0)));
    EXPECT_FALSE(rule.judge(shifted(0.0, 0.0)));
    EXPECT_FALSE(rule.judge(shifted(3.0, 0.0)));
    EXPECT_TRUE(rule.judge(shifted(3.0, 0.0)));
}

TEST(MovementRule, LooksAtBothAngles) {
    MovementRule yaw(radians(1.0));
    yaw.judge(shifted(-1.1, 0.0));
    EXPECT_TRUE(yaw.judge(shifted(-1.1, 0.0)));
    MovementRule pitch(radians(1.0));
    pitch.judge(shifted(0.0, -1.1));
    EXPECT_TRUE(pitch.judge(shifted(0.0, -1.1)));
}

TEST(MovementRule, ToleratesWhatIsSmallOrUncertain) {
    MovementRule rule(radians(1.0));
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(rule.judge(shifted(0.9, -0.9, 0.01)));
        EXPECT_FALSE(rule.judge(shifted(3.0, 3.0, 0.8)));
    }
}

TEST(MovementRule, FitsAgainWellWithinTheLimit) {
    MovementRule rule(radians(1.0));
    rule.judge(shifted(3.0, 0.0));
    rule.judge(shifted(3.0, 0.0));
    EXPECT_TRUE(rule.judge(shifted(0.8, 0.0)));
    EXPECT_TRUE(rule.judge(shifted(0.8, 0.0))) << "not to and fro at the limit";
    EXPECT_TRUE(rule.judge(shifted(0.6, 0.0)));
    EXPECT_TRUE(rule.judge(shifted(3.0, 0.0)));
    EXPECT_TRUE(rule.judge(shifted(0.6, 0.0)));
    EXPECT_FALSE(rule.judge(shifted(0.6, 0.0)));
}

namespace {

class MountingWindowTest : public testing::Test {
protected:
    /// @return the judgements of a recording behind what was shown before
    std::vector<MountingState> show(const KnownErrors& recording) {
        std::vector<MountingState> states;
        const double begin = shown_;
        for (SensorFrame frame : recording.frames) {
            frame.time += begin;
            shown_ = std::max(shown_, frame.time);
            if (const auto state = window_.add(frame)) {
                states.push_back(*state);
            }
        }
        return states;
    }

    const KnownErrors clean_ = simulated("perimeter", 60.0, [](Scenario&) {});
    const KnownErrors turned_ = simulated(
        "perimeter", 90.0, [](Scenario& scenario) { scenario.video.mountingError.yaw = 4.0; });
    double shown_ = 100.0;
    MountingWindow window_{clean_.header, {60.0, 1.0, std::nullopt}};
};

}  // namespace

TEST_F(MountingWindowTest, SeesAKnockedCameraAndForgetsIt) {
    const std::vector<MountingState> before = show(clean_);
    ASSERT_FALSE(before.empty());
    for (const MountingState& state : before) {
        EXPECT_FALSE(state.hasMoved);
    }
    EXPECT_LE(before.size(), 5u) << "five judgements per window, once enough was seen";
    const std::vector<MountingState> during = show(turned_);
    ASSERT_FALSE(during.empty());
    EXPECT_TRUE(during.back().hasMoved);
    EXPECT_NEAR(during.back().yaw, 4.0, 0.4) << "what was seen before is forgotten";
    EXPECT_GT(during.back().yawStd, 0.0);
    EXPECT_GE(during.back().clusters, 12u);
    show(clean_);
    EXPECT_FALSE(show(clean_).back().hasMoved);
}

TEST(MountingWindow, RaisesNoAlarmWhereNothingHasMoved) {
    for (const char* const scenario :
         {"perimeter", "crossing", "crowd", "doors", "gate", "night-fog", "road", "standing"}) {
        SCOPED_TRACE(scenario);
        const KnownErrors recording = simulated(scenario, 300.0, [](Scenario&) {});
        MountingWindow window(recording.header, {60.0, 1.0, std::nullopt});
        for (const SensorFrame& frame : recording.frames) {
            if (const auto state = window.add(frame)) {
                EXPECT_FALSE(state->hasMoved)
                    << frame.time << " s, " << state->yaw << " +- " << state->yawStd << ", "
                    << state->pitch << " +- " << state->pitchStd;
            }
        }
    }
}

TEST_F(MountingWindowTest, SaysNothingOfAnEmptyScene) {
    const KnownErrors empty =
        simulated("perimeter", 60.0, [](Scenario& scenario) { scenario.objects.clear(); });
    EXPECT_TRUE(show(empty).empty());
}

TEST(WindowWatch, JudgesOnAThreadOfItsOwn) {
    const KnownErrors recording = simulated("crowd", 30.0, [](Scenario&) {});
    const auto watch = watchMounting(recording.header, {10.0, 1.0, std::nullopt});
    EXPECT_FALSE(watch->state());
    // The watch may leave out frames; time goes on until it has judged.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    for (double begin = 0.0; !watch->state() && std::chrono::steady_clock::now() < deadline;
         begin += 30.0) {
        for (SensorFrame frame : recording.frames) {
            frame.time += begin;
            watch->see(frame);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    ASSERT_TRUE(watch->state());
    EXPECT_FALSE(watch->state()->hasMoved);
    EXPECT_GE(watch->state()->clusters, 12u);
}
