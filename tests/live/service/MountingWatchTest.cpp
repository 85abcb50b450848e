// SPDX-License-Identifier: Apache-2.0
#include "KeptOutput.h"
#include "live/service/MountingWatch.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Texts = std::vector<std::string>;

/// Says what it is told to.
class StatedWatch : public MountingWatch {
public:
    explicit StatedWatch(std::optional<MountingState>& state) : state_(state) {}

    void see(const Host::SensorFrame& frame) override { seen.push_back(frame.time); }
    std::optional<MountingState> state() override { return state_; }

    std::vector<double> seen;

private:
    std::optional<MountingState>& state_;
};

class MountingAlarmTest : public testing::Test {
protected:
    void judge(bool hasMoved, double yaw) { state_ = {hasMoved, yaw, 0.12, -0.26, 0.08, 31}; }

    std::optional<MountingState> state_;
    Texts told_;
    Texts sent_;
    Faults faults_{[this](const std::string& text) { told_.push_back(text); }};
    std::unique_ptr<StatedWatch> made_ = std::make_unique<StatedWatch>(state_);
    StatedWatch& watch_ = *made_;
    MountingAlarm alarm_{std::move(made_), std::make_unique<KeptOutput>(sent_), faults_};
};

TEST_F(MountingAlarmTest, TellsOnceOfEachChange) {
    alarm_.tell();
    judge(false, 0.1);
    alarm_.tell();
    EXPECT_THAT(told_, IsEmpty());
    EXPECT_THAT(sent_, IsEmpty());
    judge(true, 3.04);
    alarm_.tell();
    judge(true, 3.14);
    alarm_.tell();
    EXPECT_THAT(told_,
                ElementsAre("the installation has moved: the camera looks 3.0 degrees to the left "
                            "of where it is stated to (std 0.1) and 0.3 degrees above (std 0.1)"));
    ASSERT_THAT(sent_, SizeIs(1));
    const std::string numbers =
        R"(","yaw":3.04,"yawStd":0.12,"pitch":-0.26,"pitchStd":0.08,"clusters":31})";
    EXPECT_EQ(sent_[0].substr(0, 25), R"({"event":"moved","time":")");
    EXPECT_EQ(sent_[0].substr(sent_[0].size() - numbers.size()), numbers);
    judge(false, 0.2);
    alarm_.tell();
    alarm_.tell();
    EXPECT_THAT(told_, SizeIs(1)) << "no fault";
    ASSERT_THAT(sent_, SizeIs(2));
    EXPECT_EQ(sent_[1].substr(0, 24), R"({"event":"fits","time":")");
}

TEST_F(MountingAlarmTest, NeedsNoTopic) {
    MountingAlarm alarm(std::make_unique<StatedWatch>(state_), nullptr, faults_);
    judge(true, -2.0);
    alarm.tell();
    ASSERT_THAT(told_, SizeIs(1));
    EXPECT_NE(told_[0].find("2.0 degrees to the right"), std::string::npos);
    EXPECT_TRUE(alarm.isDrained());
}

TEST_F(MountingAlarmTest, HandsFramesOn) {
    Host::SensorFrame frame;
    frame.time = 7.0;
    alarm_.see(frame);
    EXPECT_THAT(watch_.seen, ElementsAre(7.0));
}

TEST_F(MountingAlarmTest, IsPartOfTheStatusOnceItIsKnown) {
    StatusReport before;
    alarm_.addTo(before);
    EXPECT_EQ(before.toJson(), "{}");
    judge(true, 3.04);
    StatusReport after;
    alarm_.addTo(after);
    EXPECT_EQ(after.toJson(),
              R"({"cameraMoved":1,"cameraYawError":3.04,"cameraPitchError":-0.26})");
}

}  // namespace
}  // namespace Veskar::Live
