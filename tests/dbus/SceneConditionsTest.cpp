// SPDX-License-Identifier: Apache-2.0
#include <veskar/SceneConditions.h>

#include "dbus/FreshBudget.h"
#include "dbus/SceneServices.h"
#include "support/FakeService.h"
#include "support/PrivateBus.h"
#include "support/SyslogCapture.h"
#include "support/TrackFactory.h"

#include <cerrno>
#include <chrono>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

using namespace VeskarTest;
using testing::ElementsAre;
using testing::IsEmpty;
using Veskar::Dbus::Point;
using Veskar::Dbus::SceneConditions;

namespace {

const std::string optics = "com.nolt.Optics2";

/// A clock set by the test.
struct Clock {
    std::chrono::steady_clock::time_point now{std::chrono::hours(5)};
    SceneConditions::SteadyClock reader() {
        return [this] { return now; };
    }
};

std::shared_ptr<Veskar::SystemTrack> trackOfHalfHeight(double halfHeight) {
    auto track = makeSystemTrack(makeTrack());
    track->boundingBox = Eigen::Vector4d(-0.1, 0.2, -0.3, 2.0 * halfHeight);
    return track;
}

class SceneConditionsService : public testing::Test {
protected:
    FreshBudget budget;
    SyslogCapture log;
    PrivateBus bus;
    Clock clock;
};

}  // namespace

TEST_F(SceneConditionsService, AsksForTheModeWhenItIsMade) {
    FakeService service(optics);
    service.answer(getDayNight, string("night"));
    std::string arguments = "unasked";
    service.inspect(getDayNight, [&](sd_bus_message* call) {
        arguments = sd_bus_message_get_signature(call, 1);
    });
    SceneConditions conditions(clock.reader());
    EXPECT_EQ(service.calls(getDayNight), 1);
    EXPECT_EQ(arguments, "");
    EXPECT_FALSE(conditions.isDay());
    EXPECT_EQ(service.calls(getDayNight), 1) << "the answer is fresh";
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(SceneConditionsService, RunsOnTheSteadyClockByDefault) {
    FakeService service(optics);
    service.answer(getDayNight, string("night"));
    SceneConditions conditions;
    EXPECT_FALSE(conditions.isDay());
    EXPECT_EQ(service.calls(getDayNight), 1);
}

TEST_F(SceneConditionsService, KeepsTheModeForTenSeconds) {
    FakeService service(optics);
    service.answer(getDayNight, string("night"));
    SceneConditions conditions(clock.reader());
    service.answer(getDayNight, string("day"));
    clock.now += std::chrono::seconds(10) - std::chrono::nanoseconds(1);
    EXPECT_TRUE(conditions.updateDayNight());
    EXPECT_FALSE(conditions.isDay());
    EXPECT_EQ(service.calls(getDayNight), 1);
    clock.now += std::chrono::nanoseconds(1);
    EXPECT_TRUE(conditions.isDay());
    EXPECT_EQ(service.calls(getDayNight), 2);
    clock.now += std::chrono::seconds(10) - std::chrono::nanoseconds(1);
    EXPECT_TRUE(conditions.isDay());
    EXPECT_EQ(service.calls(getDayNight), 2) << "the ten seconds count from the last answer";
}

TEST_F(SceneConditionsService, TakesOnlyTheExactWordForDay) {
    FakeService service(optics);
    for (const auto& [mode, isDay] : std::vector<std::pair<std::string, bool>>{
             {"day", true}, {"Day", false}, {"day ", false}, {"", false}, {"auto", false}}) {
        service.answer(getDayNight, string(mode));
        SceneConditions conditions(clock.reader());
        EXPECT_EQ(conditions.isDay(), isDay) << '"' << mode << '"';
    }
}

TEST_F(SceneConditionsService, TakesAMissingServiceForDay) {
    SceneConditions conditions(clock.reader());
    ASSERT_EQ(log.errors().size(), 1U);
    EXPECT_THAT(log.errors().front(),
                testing::MatchesRegex("SceneConditions: getDayNight error: .*Optics2.*\n"));
    EXPECT_FALSE(conditions.updateDayNight());
    EXPECT_TRUE(conditions.isDay());
    EXPECT_EQ(log.errors().size(), 3U) << "every question is asked again while none is answered";
}

TEST_F(SceneConditionsService, FindsAServiceThatComesLate) {
    SceneConditions conditions(clock.reader());
    EXPECT_TRUE(conditions.isDay());
    FakeService service(optics);
    service.answer(getDayNight, string("night"));
    EXPECT_FALSE(conditions.isDay());
}

TEST_F(SceneConditionsService, ForgetsTheNightWhenTheServiceRefuses) {
    FakeService service(optics);
    service.answer(getDayNight, string("night"));
    SceneConditions conditions(clock.reader());
    service.refuse(getDayNight, "com.nolt.Error.Failed", "lens cap");
    EXPECT_FALSE(conditions.isDay());
    clock.now += std::chrono::seconds(10);
    EXPECT_TRUE(conditions.isDay());
    EXPECT_THAT(log.errors(), ElementsAre("SceneConditions: getDayNight error: lens cap\n"));
}

TEST_F(SceneConditionsService, LogsAnAnswerThatIsNoText) {
    FakeService service(optics);
    service.answer(getDayNight,
                   [](sd_bus_message* m) { must(sd_bus_message_append(m, "i", 1), "append"); });
    SceneConditions conditions(clock.reader());
    EXPECT_THAT(log.errors(), ElementsAre("SceneConditions: Failed to read message. Error code = " +
                                          std::to_string(-ENXIO) + "\n"));
    EXPECT_TRUE(conditions.isDay());
    service.answer(getDayNight, nothing());
    EXPECT_TRUE(conditions.isDay());
}

TEST_F(SceneConditionsService, DoesNotWaitForASlowServiceAndIgnoresItsLateAnswer) {
    FakeService service(optics);
    service.hold(getDayNight);
    SceneConditions conditions(clock.reader());
    EXPECT_TRUE(conditions.isDay());
    EXPECT_THAT(log.errors(),
                ElementsAre("SceneConditions: getDayNight error: Connection timed out\n"));
    service.release(string("night"));
    service.answer(getDayNight, string("dusk"));
    clock.now += std::chrono::seconds(10);
    EXPECT_FALSE(conditions.isDay());
    service.answer(getDayNight, string("day"));
    clock.now += std::chrono::seconds(10);
    EXPECT_TRUE(conditions.isDay());
}

TEST_F(SceneConditionsService, LeavesASilentServiceAloneForTenSeconds) {
    FakeService service(optics);
    service.answer(getDayNight, string("night"));
    SceneConditions conditions(clock.reader());
    service.hold(getDayNight);
    clock.now += std::chrono::seconds(10);
    const FreshBudget frame;
    for (int i = 0; i < 20; ++i) {
        EXPECT_TRUE(conditions.isDay()) << "as after any failure";
        EXPECT_FALSE(conditions.updateDayNight());
        clock.now += std::chrono::milliseconds(499);
    }
    EXPECT_EQ(service.calls(getDayNight), 2);
    EXPECT_THAT(log.errors(),
                ElementsAre("SceneConditions: getDayNight error: Connection timed out\n"));
    clock.now += std::chrono::milliseconds(20);
    service.answer(getDayNight, string("night"));
    EXPECT_FALSE(conditions.isDay());
    EXPECT_EQ(service.calls(getDayNight), 3);
}

TEST_F(SceneConditionsService, AsksAgainAtOnceWhenAServiceLeavesWithoutAnAnswer) {
    auto service = std::make_unique<FakeService>(optics);
    service->answer(getDayNight, string("night"));
    SceneConditions conditions(clock.reader());
    clock.now += std::chrono::seconds(10);
    service->leaveAt(getDayNight);
    EXPECT_TRUE(conditions.isDay());
    ASSERT_EQ(log.errors().size(), 1U);
    EXPECT_THAT(log.errors().front(), testing::HasSubstr("without replying"));
    service.reset();
    service = std::make_unique<FakeService>(optics);
    service->answer(getDayNight, string("night"));
    EXPECT_FALSE(conditions.isDay());
}

TEST_F(SceneConditionsService, SurvivesARestartOfTheServiceAndTheDeathOfTheBus) {
    auto service = std::make_unique<FakeService>(optics);
    service->answer(getDayNight, string("night"));
    SceneConditions conditions(clock.reader());
    service.reset();
    clock.now += std::chrono::seconds(10);
    EXPECT_TRUE(conditions.isDay());
    service = std::make_unique<FakeService>(optics);
    service->answer(getDayNight, string("night"));
    EXPECT_FALSE(conditions.isDay());
    bus.kill();
    EXPECT_FALSE(conditions.isDay()) << "the answer is still fresh";
    clock.now += std::chrono::seconds(10);
    EXPECT_TRUE(conditions.isDay());
    EXPECT_FALSE(conditions.updateDayNight());
    conditions.updateSNRBlock();
}

TEST_F(SceneConditionsService, LogsABusThatCannotBeOpenedAndAssumesDay) {
    leaveSystemBus();
    SceneConditions conditions(clock.reader());
    const std::string opening =
        "SceneConditions: Failed to open sd bus. Error code: " + std::to_string(-ENOENT) + "\n";
    EXPECT_THAT(log.errors(), ElementsAre(opening));
    EXPECT_FALSE(conditions.updateDayNight());
    EXPECT_TRUE(conditions.isDay());
    conditions.updateSNRBlock();
    EXPECT_THAT(log.errors(), ElementsAre(opening)) << "without a bus there is nothing to log";
}

TEST_F(SceneConditionsService, LendsItsBusToTheBlocks) {
    FakeService service("com.nolt.Lumd.ch0");
    service.answer(getProperty, doubles({2.0}));
    SceneConditions conditions(clock.reader());
    log.clear();
    const auto track = trackOfHalfHeight(0.3);
    EXPECT_EQ(conditions.bboxSNR(*track), 100.0);
    conditions.setupCamera(std::make_shared<Veskar::Camera>(
        Eigen::Vector2i(160, 160), Eigen::Vector2d::Zero(), Eigen::Vector4d::Zero(),
        Eigen::Vector4d::Zero(), Eigen::Vector2d(0.5, 0.5), true));
    EXPECT_EQ(conditions.bboxSNR(*track), 100.0);
    conditions.updateSNRBlock();
    EXPECT_EQ(conditions.bboxSNR(*track), 2.0);
    EXPECT_THAT(log.errors(), IsEmpty());
}

namespace {

/// The SNR that a box needs, as read off the drawn curves; infinite where no SNR suffices.
double neededSNR(double x, bool isDay) {
    const double never = std::numeric_limits<double>::infinity();
    const std::vector<double> xs = {0.072, 0.1, 0.183, 0.255, 1.0};
    const std::vector<double> ys = isDay ? std::vector<double>{15.5, 6.28, 3.2, 1.15, 1.15}
                                         : std::vector<double>{25.0, 20.0, 6.0, 4.0, 4.0};
    for (std::size_t i = 0; i + 1 < xs.size(); ++i) {
        if (x > xs[i] && x < xs[i + 1]) {
            return ys[i] + (ys[i + 1] - ys[i]) * (x - xs[i]) / (xs[i + 1] - xs[i]);
        }
    }
    return never;
}

/// Scene conditions with one block of a known SNR under every box.
class VideoConditions : public SceneConditionsService {
protected:
    void SetUp() override {
        service = std::make_unique<FakeService>("com.nolt.Lumd.ch0");
        opticsService = std::make_unique<FakeService>(optics);
    }

    std::unique_ptr<SceneConditions> make(const std::string& mode) {
        opticsService->answer(getDayNight, string(mode));
        auto conditions = std::make_unique<SceneConditions>(clock.reader());
        conditions->setupCamera(std::make_shared<Veskar::Camera>(
            Eigen::Vector2i(160, 160), Eigen::Vector2d::Zero(), Eigen::Vector4d::Zero(),
            Eigen::Vector4d::Zero(), Eigen::Vector2d(0.5, 0.5), true));
        return conditions;
    }

    void setSNR(SceneConditions& conditions, double snr) {
        service->answer(getProperty, doubles({snr}));
        conditions.updateSNRBlock();
    }

    std::unique_ptr<FakeService> service;
    std::unique_ptr<FakeService> opticsService;
};

}  // namespace

TEST_F(VideoConditions, AreGoodStrictlyAboveTheCurveOfTheTimeOfDay) {
    for (const bool isDay : {true, false}) {
        const auto conditions = make(isDay ? "day" : "night");
        for (const double x : {0.0725, 0.08, 0.0999, 0.1001, 0.15, 0.1829, 0.1831, 0.2, 0.2549,
                               0.2551, 0.5, 0.9999}) {
            const double needed = neededSNR(x, isDay);
            const auto track = trackOfHalfHeight(x);
            setSNR(*conditions, needed * (1.0 + 1e-9));
            EXPECT_TRUE(conditions->hasGoodVideoConditions(*track)) << x << " day " << isDay;
            setSNR(*conditions, needed * (1.0 - 1e-9));
            EXPECT_FALSE(conditions->hasGoodVideoConditions(*track)) << x << " day " << isDay;
        }
    }
}

TEST_F(VideoConditions, AreNotGoodExactlyOnTheFlatPart) {
    const auto conditions = make("day");
    const auto track = trackOfHalfHeight(0.5);
    setSNR(*conditions, 1.15);
    EXPECT_FALSE(conditions->hasGoodVideoConditions(*track));
    setSNR(*conditions, std::nextafter(1.15, 2.0));
    EXPECT_TRUE(conditions->hasGoodVideoConditions(*track));
}

TEST_F(VideoConditions, AreNeverGoodOutsideTheCurveOrOnItsPoints) {
    for (const bool isDay : {true, false}) {
        const auto conditions = make(isDay ? "day" : "night");
        setSNR(*conditions, 1e9);
        for (const double x : {0.072, 0.1, 0.183, 0.255, 1.0, 0.0719, 0.0, -0.5, 1.0001, 5.0,
                               std::numeric_limits<double>::quiet_NaN()}) {
            EXPECT_FALSE(conditions->hasGoodVideoConditions(*trackOfHalfHeight(x)))
                << x << " day " << isDay;
        }
    }
}

TEST_F(VideoConditions, AreGoodForEveryUsefulHeightBeforeAnySNRIsRead) {
    const auto conditions = make("night");
    for (int thousandths = 73; thousandths < 1000; ++thousandths) {
        const double x = thousandths / 1000.0;
        const bool onPoint = thousandths == 100 || thousandths == 183 || thousandths == 255;
        EXPECT_EQ(conditions->hasGoodVideoConditions(*trackOfHalfHeight(x)), !onPoint) << x;
    }
}

TEST_F(VideoConditions, FollowTheDay) {
    const auto conditions = make("night");
    const auto track = trackOfHalfHeight(0.5);
    setSNR(*conditions, 2.0);
    EXPECT_FALSE(conditions->hasGoodVideoConditions(*track));
    opticsService->answer(getDayNight, string("day"));
    clock.now += std::chrono::seconds(10);
    EXPECT_TRUE(conditions->hasGoodVideoConditions(*track));
}

TEST_F(VideoConditions, TellAPointAboveALine) {
    const auto conditions = make("day");
    const Point a{1.0, 2.0};
    const Point b{3.0, 6.0};
    EXPECT_FALSE(conditions->isAboveLineSegment({2.0, 4.0}, a, b)) << "on the line";
    EXPECT_TRUE(conditions->isAboveLineSegment({2.0, 4.001}, a, b));
    EXPECT_FALSE(conditions->isAboveLineSegment({2.0, 3.999}, a, b));
    EXPECT_TRUE(conditions->isAboveLineSegment({2.0, 4.001}, b, a)) << "in either direction";
    EXPECT_TRUE(conditions->isAboveLineSegment({10.0, 20.001}, a, b)) << "beyond the segment";
    EXPECT_FALSE(conditions->isAboveLineSegment({10.0, 19.999}, a, b));
}
