// SPDX-License-Identifier: Apache-2.0
// Effects of failing services and a failing bus on a frame: which are called, and how often. The
// time bounds only detect faults: they are far above what is promised and far below the sum of all
// calls.
#include <veskar/DetectionPriority.h>
#include <veskar/GeoLocation.h>
#include <veskar/RadarStatus.h>
#include <veskar/SceneConditions.h>

#include "dbus/FreshBudget.h"
#include "dbus/PropertyClients.h"
#include "dbus/SceneServices.h"
#include "support/FakeService.h"
#include "support/PrivateBus.h"
#include "support/SyslogCapture.h"
#include "support/TrackFactory.h"

#include <cerrno>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace VeskarTest;
using testing::ElementsAre;
using Veskar::Source;
using Veskar::Dbus::SceneConditions;

namespace {

const std::string dayNightTimeout = "SceneConditions: getDayNight error: Connection timed out\n";
const std::string snrTimeout = "SNRBlock: getSNRBlock error: Connection timed out\n";

class FrameWithFaults : public testing::Test {
protected:
    FrameWithFaults() {
        for (int id = 1; id <= 20; ++id) {
            tracks.push_back(makeSystemTrack(makeTrack(Source::Radar, id)));
            tracks.back()->isConfirmed = true;
        }
    }

    std::unique_ptr<SceneConditions> makeConditions() {
        return std::make_unique<SceneConditions>([this] { return now; });
    }
    /// Evaluates all tracks, as a host does in every frame.
    void judge(SceneConditions& conditions) {
        for (const auto& track : tracks) {
            conditions.hasGoodVideoConditions(*track);
        }
    }

    static std::chrono::steady_clock::duration timeOf(const std::function<void()>& frame) {
        const auto begin = std::chrono::steady_clock::now();
        frame();
        return std::chrono::steady_clock::now() - begin;
    }

    FreshBudget budget;
    SyslogCapture log;
    PrivateBus bus;
    std::chrono::steady_clock::time_point now{std::chrono::hours(5)};
    std::vector<std::shared_ptr<Veskar::SystemTrack>> tracks;
};

}  // namespace

TEST_F(FrameWithFaults, AsksASilentServiceOnceForTwentyTracks) {
    FakeService optics("com.nolt.Optics2");
    optics.refuse(getDayNight, "com.nolt.Error.Failed", "starting");
    Veskar::DetectionPriority priority{Veskar::Config()};
    optics.hold(getDayNight);
    log.clear();
    const FreshBudget later;
    const auto time = timeOf([&] {
        for (const auto& track : tracks) {
            priority.evaluateTrack(*track);
        }
    });
    EXPECT_EQ(optics.calls(getDayNight), 2) << "when it was made and once more";
    EXPECT_LT(time, std::chrono::seconds(2)) << "twenty waits would take five";
    EXPECT_THAT(log.errors(), ElementsAre(dayNightTimeout));
}

TEST_F(FrameWithFaults, IsHeldBySilentServicesTogetherForNoLongerThanByOne) {
    FakeService optics("com.nolt.Optics2");
    FakeService lumd("com.nolt.Lumd.ch0");
    optics.answer(getDayNight, string("night"));
    const auto conditions = makeConditions();
    optics.hold(getDayNight);
    lumd.hold(getProperty);
    now += std::chrono::seconds(10);
    log.clear();
    const FreshBudget frame;
    const auto time = timeOf([&] {
        judge(*conditions);
        for (int i = 0; i < 20; ++i) {
            conditions->updateSNRBlock();
        }
    });
    EXPECT_EQ(optics.calls(getDayNight), 2);
    EXPECT_LE(lumd.calls(getProperty), 1) << "with what the other has left";
    EXPECT_LT(time, std::chrono::seconds(2));
    EXPECT_LT(Veskar::WaitBudget::ofThisThread().left(std::chrono::steady_clock::now()),
              std::chrono::milliseconds(10));
    // Its time limit was not exhausted, so it is called again; then it is suspended like the other.
    const FreshBudget later;
    log.clear();
    conditions->updateSNRBlock();
    conditions->updateSNRBlock();
    EXPECT_THAT(log.errors(), ElementsAre(snrTimeout));
}

TEST_F(FrameWithFaults, HearsAHealthyServiceBesideASilentOne) {
    FakeService optics("com.nolt.Optics2");
    FakeService lumd("com.nolt.Lumd.ch0");
    optics.answer(getDayNight, string("night"));
    lumd.hold(getProperty);
    const auto conditions = makeConditions();
    now += std::chrono::seconds(10);
    const FreshBudget frame;
    conditions->updateSNRBlock();
    EXPECT_FALSE(conditions->isDay());
    EXPECT_EQ(optics.calls(getDayNight), 2);
    EXPECT_THAT(log.errors(), ElementsAre(snrTimeout));
}

TEST_F(FrameWithFaults, AsksAServiceThatFailsAtOnceForEveryTrack) {
    FakeService optics("com.nolt.Optics2");
    optics.refuse(getDayNight, "com.nolt.Error.Failed", "lens cap");
    const auto conditions = makeConditions();
    judge(*conditions);
    EXPECT_EQ(optics.calls(getDayNight), 21);
    EXPECT_EQ(log.errors().size(), 21U);
}

TEST_F(FrameWithFaults, OutlivesTheDeathOfTheBus) {
    FakeService optics("com.nolt.Optics2");
    optics.answer(getDayNight, string("night"));
    const auto conditions = makeConditions();
    bus.kill();
    now += std::chrono::seconds(10);
    const auto time = timeOf([&] { judge(*conditions); });
    EXPECT_LT(time, std::chrono::seconds(2));
    EXPECT_TRUE(conditions->isDay());
}

TEST_F(FrameWithFaults, IsHeldOnceByABusThatHangs) {
    FakeService optics("com.nolt.Optics2");
    optics.answer(getDayNight, string("night"));
    const auto conditions = makeConditions();
    bus.stop();
    now += std::chrono::seconds(10);
    const FreshBudget frame;
    const auto time = timeOf([&] {
        judge(*conditions);
        conditions->updateSNRBlock();
    });
    EXPECT_LT(time, std::chrono::seconds(2));
    EXPECT_THAT(log.errors(), testing::Contains(dayNightTimeout).Times(1));
    EXPECT_TRUE(conditions->isDay());
    bus.kill();  // so that the service can leave it
}

TEST_F(FrameWithFaults, MakesClientsOnABusThatHangs) {
    bus.stop();
    const auto time = timeOf([&] {
        const Impl::GeoLocation geoLocation;
        const Impl::RadarStatus radarStatus;
        const auto conditions = makeConditions();
        EXPECT_TRUE(conditions->isDay());
    });
    EXPECT_LT(time, std::chrono::seconds(10)) << "a call without limit waits for 25 s";
    const std::string code = std::to_string(-ETIMEDOUT) + "\n";
    const std::string failed = "Failed to open sd bus. Error code: " + code;
    EXPECT_THAT(log.errors(), ElementsAre("GeoLocation: " + failed, "GeoLocation: " + failed,
                                          "SceneConditions: " + failed));
}

TEST_F(FrameWithFaults, WaitsForNothingInItsLocations) {
    FakeService service("com.nolt.GeoLocation1");
    const FakeService::Member getAll{"/com/nolt/GeoLocation1", "org.freedesktop.DBus.Properties",
                                     "GetAll"};
    service.hold(getAll);
    Impl::GeoLocation client;
    for (int i = 0; i < 20; ++i) {
        EXPECT_FALSE(client.getPosition(10.0, 90.0).valid);
    }
    EXPECT_EQ(service.calls(getAll), 1);
}
